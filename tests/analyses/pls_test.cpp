#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <tuple>
#include <vector>

#include "analyses/pls/cross_validation.h"
#include "numeric/validation.h"
#include "tests/analyses/example.h"
#include "tests/analyses/pls_call.h"
#include "tests/definition/pls.h"

namespace studystats {
namespace {

using Numbers = std::vector<double>;
using Integers = std::vector<std::int32_t>;
constexpr double kUntouched = PlsCall::kUntouched;

PlsCall exampleCall(const char* name, std::int32_t n, std::int32_t p, std::int32_t q, std::int32_t nComponents) {
  PlsCall call(n, p, q, nComponents);
  call.data = exampleNumbers(name, n, p + q);
  return call;
}

// Values of a matrix of components by responses, one response's after the other's.
void expectNear(const Numbers& values, const Numbers& expected, double relative, const char* what) {
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_NEAR(values[i], expected[i], relative * std::fabs(expected[i])) << what << ' ' << i;
}

// The figures below are those of R 4.2.2, by another road: weights from svd(crossprod(X, Y)), coefficients W (P'W)^-1
// Q', folds predicted from the centring of the whole table, jackknife errors from the folds' coefficients.

TEST(PlsAnl, GivesIndependentFiguresForTheOctaneNumberOfGasoline) {
  PlsCall call = exampleCall("gasoline.csv", 60, 401, 1, 8);
  call.centre(false);
  call.run();
  ASSERT_EQ(call.status(), 0);
  EXPECT_EQ(call.kept(), 3);
  expectNear(call.press,
             {102.1823445448, 8.407784869091, 3.844680408576, 3.361129975925, 3.333748648362, 3.007693930339,
              2.727855817049, 2.941506299754},
             1e-9, "press");
  expectNear(call.rss,
             {94.05914491582, 7.372730368725, 3.168330448985, 2.749589005585, 1.823192419567, 1.474512571468,
              1.294415354282, 1.235024176404},
             1e-9, "rss");
  expectNear(call.pressRatios, {0.8600990053, 0.2989787228, 0.7221309295}, 1e-9, "ratio");
  EXPECT_NEAR(call.tss[0], 138.127125, 1e-11);
  EXPECT_NEAR(call.q2[2], 1 - 3.844680408576 / 138.127125, 1e-10);
  EXPECT_NEAR(call.r2[2], 1 - 3.168330448985 / 138.127125, 1e-10);
  expectNear(call.intercepts, {80.22357846436, 90.70166523689, 102.35988586891}, 1e-11, "intercept");
  const std::ptrdiff_t wavelengths[] = {0, 100, 200, 400};
  const Numbers coefs = {0.35387201979015, 0.18416683777273, 0.03551316049887, -0.33681126769169},
                errors = {0.1651046960475, 0.1251749812363, 0.1098781669760, 0.6532845233948};
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_NEAR(call.coef(wavelengths[i], 2), coefs[i], 1e-10) << i;
    EXPECT_NEAR(call.coefErrors[static_cast<std::size_t>(2 * 401 + wavelengths[i])], errors[i], 1e-9) << i;
  }

  // The last ten spectra left out, means from the other rows.
  call = exampleCall("gasoline.csv", 60, 401, 1, 8);
  std::fill(call.rowUse.begin() + 50, call.rowUse.end(), 0);
  call.centre(false);
  call.keepAll = 1;
  call.run();
  expectNear(call.pressRatios,
             {0.877362641, 0.2279696794, 0.9177277722, 1.099516093, 1.165988107, 1.393374303, 1.486729307, 1.535076662},
             1e-8, "ratio without rows 51 to 60");
}

TEST(PlsAnl, GivesIndependentFiguresForSystematicFoldsOfAutoscaledSpectra) {
  PlsCall call = exampleCall("gasoline.csv", 60, 401, 1, 4);
  call.centre(true);
  call.groups = 7;
  call.run();
  ASSERT_EQ(call.status(), 0);
  expectNear(call.press, {43.19676392354, 14.86206602446, 1.590822488849, 1.16648076135}, 1e-9, "press");
  expectNear(call.intercepts, {88.81026748221, 98.58348129545, 95.45173935681, 89.43433712690}, 1e-10, "intercept");
  EXPECT_NEAR(call.coef(0, 2), 0.9797024321129, 1e-10);
  EXPECT_NEAR(call.coefErrors[2 * 401 + 200], 0.3271637608645, 1e-9);
}

// Several responses agree as far as the iteration goes on: until no response score changes by more than 1e-6.
TEST(PlsAnl, GivesIndependentFiguresForSeveralResponses) {
  PlsCall call = exampleCall("linnerud.csv", 20, 3, 3, 3);
  call.centre(true);
  call.keepAll = 1;
  call.run();
  ASSERT_EQ(call.status(), 0);
  expectNear(call.rss,
             {14.89664039250, 14.159841887194, 13.909537678493, 11.98402322504, 8.817339347831, 8.590970384514,
              18.32711084677, 17.754629029569, 17.577450947969},
             1e-6, "rss");
  expectNear(call.press,
             {17.33078586008, 21.17031635418, 21.58394397545, 14.54614964191, 16.17322503239, 15.77248762821,
              19.82333724072, 21.96107118388, 24.11221419448},
             1e-6, "press");
  expectNear({call.coef(0, 1, 0), call.coef(1, 1, 1), call.coef(2, 1, 2), call.coef(0, 2, 1), call.intercepts[2]},
             {-1.17222214710663, -0.03296455026748, -0.02771197153873, -0.13687022987330, 208.23351880696}, 1e-5,
             "coefficient");

  call = exampleCall("oliveoil.csv", 16, 5, 6, 4);
  call.centre(true);
  call.keepAll = 1;
  call.run();
  ASSERT_EQ(call.status(), 0);
  expectNear(call.press,
             {9.948654577585, 9.599951388221, 12.000141589860, 13.477424950547, 11.179343764698, 10.477311184015,
              13.466783408801, 14.766024497682, 11.848527501389, 8.838074683869, 6.537627792928, 7.132792032101},
             1e-5, "press");
  expectNear({call.rss[20], call.rss[23], call.coef(4, 1, 5), call.coef(3, 3, 0), call.intercepts[23]},
             {7.929397324533, 5.756073769127, 69.4286227913977, -353.129981892283, 34.67206730747}, 1e-5,
             "last response");
}

// One response: the coefficients of a components minimise the residuals over the space of X'y, (X'X)X'y, ... (Helland
// 1988, Communications in Statistics - Simulation and Computation 17, 581-607), here by Gaussian elimination.
TEST(PlsAnl, OfOneResponseIsLeastSquaresInTheKrylovSpace) {
  constexpr std::int32_t kRows = 12, kColumns = 4;
  PlsCall call(kRows, kColumns, 1, kColumns);
  std::mt19937_64 random(7);
  for (double& value : call.data) value = static_cast<double>(random() % 9);
  call.centre(false);
  call.run();
  ASSERT_EQ(call.status(), 0);
  const auto dot = [&](const Numbers& u, const Numbers& v) {
    double sum = 0;
    for (std::size_t i = 0; i < u.size(); ++i) sum += u[i] * v[i];
    return sum;
  };
  const auto timesX = [&](const Numbers& b) {
    Numbers fitted(kRows);
    for (std::ptrdiff_t j = 0; j < kColumns; ++j)
      for (std::ptrdiff_t i = 0; i < kRows; ++i)
        fitted[static_cast<std::size_t>(i)] += call.cell(i, j) * b[static_cast<std::size_t>(j)];
    return fitted;
  };
  const auto transposedTimes = [&](const Numbers& v) {
    Numbers sums;
    for (std::ptrdiff_t j = 0; j < kColumns; ++j) sums.push_back(dot({&call.cell(0, j), &call.cell(0, j) + kRows}, v));
    return sums;
  };

  std::vector<Numbers> space;  // each vector orthogonal to those before in the metric X'X
  const Numbers y(&call.cell(0, kColumns), &call.cell(0, kColumns) + kRows);
  Numbers next = transposedTimes(y), b(kColumns);
  for (std::ptrdiff_t a = 0; a < kColumns; ++a) {
    for (int twice = 0; twice < 2; ++twice)
      for (const Numbers& before : space) {
        const double share = dot(timesX(before), timesX(next)) / dot(timesX(before), timesX(before));
        for (std::size_t j = 0; j < kColumns; ++j) next[j] -= share * before[j];
      }
    const double step = dot(timesX(next), y) / dot(timesX(next), timesX(next));
    for (std::size_t j = 0; j < kColumns; ++j) b[j] += step * next[j];
    for (std::size_t j = 0; j < kColumns; ++j)
      EXPECT_NEAR(call.coef(static_cast<std::ptrdiff_t>(j), a), b[j], 1e-12) << a << ' ' << j;
    space.push_back(next);
    next = transposedTimes(timesX(next));
  }
}

// Worked by hand: y = -2, 1, 1 at x = -1, 0, 1. Left out one by one, the slopes through the origin are 1, 3/2, 2 and
// the rows are missed by 1, 1, 1. The slope of all rows is 3/2; the squares of its residuals are 1/4, 1, 1/4.
TEST(PlsAnl, GivesTheJackknifeErrorsWorkedByHand) {
  PlsCall call(3, 1, 1, 1);
  call.data = {-1, 0, 1, -2, 1, 1};
  call.scales = {2, 4};
  call.means = {3, 10};
  call.run();
  ASSERT_EQ(call.status(), 0);
  EXPECT_NEAR(call.coefs[0], 1.5 * 4 / 2, 1e-15);
  EXPECT_NEAR(call.coefErrors[0], std::sqrt(0.5 * 2 / 3) * 4 / 2, 1e-15);
  EXPECT_NEAR(call.press[0], 3, 1e-15);
  EXPECT_NEAR(call.rss[0], 1.5, 1e-15);
  EXPECT_EQ(call.tss[0], 6);
  EXPECT_NEAR(call.pressRatios[0], std::sqrt(0.5), 1e-15);
  EXPECT_NEAR(call.intercepts[0], 10 - 3 * 3, 1e-14);
  expectNear(call.fitted, {4, 10, 16}, 1e-15, "fitted");
  EXPECT_EQ(Integers(call.rowOrder.begin(), call.rowOrder.begin() + 3), (Integers{1, 2, 3}));

  // Not scaled: the scales come back as 1. One group: no spread.
  call.scaled = 0;
  call.groups = 1;
  call.run();
  EXPECT_EQ(call.scales, (Numbers{1, 1}));
  EXPECT_EQ(call.coefErrors[0], 0);
  EXPECT_EQ(call.press[0], 6) << "predicted by a model of no rows";
}

// Every response is 1 or -1, and there is nothing to predict it from: each error is 1, whichever rows are drawn. Ten
// rows in random thirds: three folds hold out four rows each.
TEST(PlsAnl, WeighsRandomFoldsToOnePredictionARow) {
  PlsCall call(10, 0, 1, 2);
  for (std::size_t i = 0; i < 10; ++i) call.data[i] = i % 2 == 0 ? 1 : -1;
  call.method = 2;
  call.groups = 3;
  StoppingHost host(0);
  call.monitor = &host.monitor;
  call.run();
  ASSERT_EQ(call.status(), 0);
  EXPECT_EQ(host.percentages, (Integers{40, 70, 100}));
  EXPECT_NEAR(call.press[0], 3 * 4 * (10.0 / 12), 1e-14);
  EXPECT_EQ(call.press[1], call.press[0]);
}

// The descriptor is orthogonal to one response in every fold, so its ratio is 1 exactly, and repeats another, which is
// predicted exactly: 0.
TEST(PlsAnl, KeepsComponentsAtTheLimitAndBelow) {
  const Numbers x = {1, -1, 0, 0}, orthogonal = {0, 0, 1, -1};
  const auto kept = [&x](const std::vector<Numbers>& responses, float limit, std::int32_t keepAll = 0) {
    PlsCall call(4, 1, static_cast<std::int32_t>(responses.size()), 3);
    call.data = x;
    for (const Numbers& y : responses) call.data.insert(call.data.end(), y.begin(), y.end());
    call.ratioLimit = limit;
    call.keepAll = keepAll;
    call.run();
    EXPECT_EQ(call.status(), 0);
    return call.kept();
  };
  const float below = std::nextafter(1.0F, 0.0F), notANumber = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(kept({orthogonal}, 1), 3) << "at the limit all pass";
  EXPECT_EQ(kept({orthogonal}, below), 1) << "the first is kept whatever it is";
  EXPECT_EQ(kept({orthogonal}, notANumber), 1);
  EXPECT_EQ(kept({orthogonal}, below, 1), 3);
  EXPECT_EQ(kept({x, orthogonal}, 0), 3) << "one response that passes is enough";
  EXPECT_EQ(kept({x, orthogonal}, -1), 1);
  EXPECT_EQ(kept({{0, 0, 0, 0}}, 0), 3) << "a response without spread has ratios of 0";

  PlsCall call = exampleCall("gasoline.csv", 60, 401, 1, 8);
  call.centre(false);
  for (const auto& [limit, nKept] : {std::pair{0.8F, 1}, {0.87F, 3}, {1.05F, 4}}) {
    call.ratioLimit = limit;
    call.run();
    EXPECT_EQ(call.kept(), nKept) << limit;
    EXPECT_EQ(call.q2[static_cast<std::size_t>(nKept)], kUntouched);
    EXPECT_EQ(call.r2[static_cast<std::size_t>(nKept)], kUntouched);
  }
}

// As many components as descriptors, of which the last is zero but for one row: the model has full rank, and so has
// every fold but the one that leaves that row out. There an inner coefficient of 1e16 meets what rounding left of a
// unit vector, and only the definition's own rounding gives the definition's coefficients.
TEST(PlsAnl, TakesTheDefinitionInTheOneFoldBeyondItsRank) {
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    PlsCall fast(12, 4, 1, 4);
    std::mt19937_64 random(seed);
    std::normal_distribution<double> normal;
    for (double& value : fast.data) value = normal(random);
    for (std::ptrdiff_t i = 0; i < 12; ++i) fast.cell(i, 3) = i == 5 ? 2 : 0;
    PlsCall plain = fast;
    fast.run();
    plain.run(&definition::plsAnl);
    ASSERT_EQ(fast.status(), 0);
    EXPECT_EQ(differences(fast, plain), "") << seed;
    EXPECT_LE(relativeDifference(fast.coefs, plain.coefs), 1e-13) << seed;
    EXPECT_LE(relativeDifference(fast.coefErrors, plain.coefErrors), 1e-12) << seed;
  }
}

// Integers that sum to 0, so that a row of zeros more changes no total either.
TEST(PlsAnl, RowsLeftOutAreOnlyPredicted) {
  const Numbers x1 = {3, -1, 2, -4, 0, 5, -3, -2}, x2 = {1, 1, -2, 4, -3, 0, -2, 1}, y = {2, -1, 1, -3, -2, 6, -2, -1};
  for (const std::int32_t method : {1, 2})
    for (const std::int32_t groups : {0, 3}) {
      PlsCall model(8, 2, 1, 2), more(11, 2, 1, 2);
      for (auto* call : {&model, &more}) {
        call->method = method;
        call->groups = groups;
        call->means = {1, 2, 3};
        call->scales = {2, 4, 8};
      }
      std::ptrdiff_t row = 0;
      Integers numbers;
      for (std::ptrdiff_t i = 0; i < 11; ++i) {
        const bool left = i == 0 || i == 4 || i == 10;
        more.rowUse[static_cast<std::size_t>(i)] = left ? static_cast<std::int32_t>(i) - 4 : 1;
        if (!left) numbers.push_back(static_cast<std::int32_t>(i) + 1);
        const auto at = static_cast<std::size_t>(row);
        const Numbers cells = left ? Numbers{100, static_cast<double>(i), -1e6} : Numbers{x1[at], x2[at], y[at]};
        for (std::ptrdiff_t j = 0; j < 3; ++j) {
          more.cell(i, j) = cells[static_cast<std::size_t>(j)];
          if (!left) model.cell(row, j) = cells[static_cast<std::size_t>(j)];
        }
        row += left ? 0 : 1;
      }
      Nmrand(-4);
      model.run();
      Nmrand(-4);
      more.run();
      ASSERT_EQ(more.status(), 0);
      Numbers fitted;
      for (std::size_t i = 0; i < 8; ++i) {
        fitted.push_back(more.fitted[static_cast<std::size_t>(numbers[i] - 1)]);
        EXPECT_EQ(more.rowOrder[i], numbers[static_cast<std::size_t>(model.rowOrder[i] - 1)]);
      }
      EXPECT_TRUE(sameBits(fitted, Numbers(model.fitted.begin(), model.fitted.begin() + 8)));
      more.fitted = model.fitted;
      more.rowOrder = model.rowOrder;
      EXPECT_EQ(differences(more, model), "") << method << ' ' << groups;
      EXPECT_TRUE(sameBits(more.coefs, model.coefs) && sameBits(more.coefErrors, model.coefErrors));
      const auto nKept = static_cast<std::size_t>(model.kept());
      PlsCall again = more;
      again.run();
      const double predicted = again.intercepts[nKept - 1] + again.coef(0, again.kept() - 1) * (100 * 2 + 1) +
                               again.coef(1, again.kept() - 1) * (10 * 4 + 2);
      EXPECT_NEAR(again.fitted[10], predicted, 1e-9) << "row 11, from the equation";
    }
}

// The first report stops before anything of a fold is known; each later one leaves the sums of the folds before it.
TEST(PlsAnl, StopsAtEveryFold) {
  PlsCall call = exampleCall("linnerud.csv", 20, 3, 2, 3);
  call.centre(true);
  PlsCall whole = call;
  whole.run();
  ASSERT_EQ(whole.status(), 0);
  Numbers before(6);
  for (std::int32_t fold = 1; fold <= 20; ++fold) {
    PlsCall stopped = call;
    StoppingHost host(fold);
    stopped.monitor = &host.monitor;
    stopped.run();
    EXPECT_EQ(stopped.status(), 999);
    EXPECT_EQ(stopped.goesOn(), 0);
    EXPECT_EQ(host.percentages.size(), static_cast<std::size_t>(fold));
    for (std::size_t e = 0; e < 6; ++e) EXPECT_TRUE(fold == 1 ? stopped.press[e] == 0 : stopped.press[e] > before[e]);
    before = stopped.press;
    EXPECT_TRUE(sameBits(stopped.rss, whole.rss) && sameBits(stopped.tss, whole.tss));
    EXPECT_EQ(stopped.rowOrder, whole.rowOrder);
    EXPECT_NE(stopped.coefs[0], kUntouched);
    for (const auto* v : {&stopped.coefErrors, &stopped.intercepts, &stopped.fitted, &stopped.pressRatios, &stopped.q2})
      EXPECT_EQ(*v, Numbers(v->size(), kUntouched));
  }
  call.run();
  EXPECT_EQ(differences(call, whole), "") << "the next analysis is not affected";
}

TEST(PlsAnl, RefusesNumbersThatMakeNoAnalysis) {
  const auto run = [](std::int32_t n, std::int32_t m, std::int32_t q, std::int32_t p, std::int32_t nComponents) {
    PlsCall call(3, 2, 1, 2);
    call.scaled = 0;
    call.scales = {5, 5, 5};
    call.clearOutputs();
    call.n = n, call.m = m, call.q = q, call.p = p, call.nComponents = nComponents;
    call.call(PlsAnl);
    const bool untouched = call.rowOrder == Integers(4, -7) && call.scales == Numbers(3, 5) &&
                           call.tss == Numbers(2, kUntouched) && call.coefs == Numbers(5, kUntouched);
    return untouched && call.goesOn() == 1 ? call.status() : -1;
  };
  constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
  EXPECT_EQ(run(-1, 3, 1, 2, 2), 1);
  EXPECT_EQ(run(3, 3, 1, -1, 2), 1);
  EXPECT_EQ(run(3, 3, 2, 2, 2), 1) << "a column too few";
  EXPECT_EQ(run(3, -3, 1, 2, 2), 1);
  EXPECT_EQ(run(3, 3, most, most, 2), 1);
  EXPECT_EQ(run(most, most, 1, most - 1, most), 5) << "memory beyond measure";
}

// A model without components still has its rows put in order and its folds run and reported; then there is nothing to
// choose from. The key of the order is the column behind the descriptors, a response or not.
TEST(PlsAnl, WithoutComponentsDoesEveryStepAndGivesStatus1) {
  for (const std::int32_t nComponents : {0, -5, std::numeric_limits<std::int32_t>::min()})
    for (const std::int32_t stopAt : {0, 2}) {
      PlsCall call(4, 1, 1, nComponents);
      call.data = {9, 9, 9, 9, 4, 1, 3, 2};
      call.rowUse[2] = 0;
      call.scales = {5, 5};
      call.scaled = 0;
      call.q = nComponents == 0 ? 1 : 0;
      StoppingHost host(stopAt);
      call.monitor = &host.monitor;
      call.run();
      EXPECT_EQ(call.status(), stopAt == 0 ? 1 : 999);
      EXPECT_EQ(call.goesOn(), stopAt == 0 ? 1 : 0);
      EXPECT_EQ(std::ssize(host.percentages), stopAt == 0 ? 3 : 2);
      EXPECT_EQ(Integers(call.rowOrder.begin(), call.rowOrder.begin() + 3), (Integers{2, 4, 1}));
      EXPECT_EQ(call.scales, Numbers(2, 1));
      for (const auto* v : {&call.tss, &call.fitted}) EXPECT_EQ(*v, Numbers(v->size(), kUntouched));
    }
}

// Nothing to fit: no rows, no row in the model, no descriptors, no responses.
TEST(PlsAnl, EmptyTablesAreModelsOfZeros) {
  for (const auto& [n, p, q] : {std::tuple{0, 2, 1}, {4, 0, 1}, {4, 2, 0}, {4, 2, -3}, {0, 0, 0}}) {
    PlsCall call(n, p, std::max(q, 0), 2);
    call.q = q;
    for (std::size_t i = 0; i < call.data.size(); ++i) call.data[i] = static_cast<double>(i) - 3;
    call.means.assign(call.means.size(), 7);
    call.run();
    EXPECT_EQ(call.status(), 0) << n << ' ' << p << ' ' << q;
    const bool predicts = n > 0 && q > 0;
    EXPECT_EQ(call.fitted, predicts ? Numbers({7, 7, 7, 7, kUntouched}) : Numbers{kUntouched});
    for (std::size_t e = 0; e + 1 < call.coefs.size(); ++e) EXPECT_EQ(call.coefs[e], 0);
    for (std::size_t e = 0; e + 1 < call.coefs.size(); ++e) EXPECT_EQ(call.coefErrors[e], 0);
  }
  PlsCall call(3, 1, 1, 1);
  call.data = {1, 2, 3, 1, 2, 3};
  call.rowUse = {0, 2, -1};
  call.run();
  EXPECT_EQ(call.status(), 0);
  EXPECT_EQ(call.rowOrder, Integers(4, -7));
  EXPECT_EQ(call.press[0], 0);
  EXPECT_EQ(call.coefErrors[0], 0);
}

// A call of PlsCvl with every array that it may write.
struct CvlCall {
  explicit CvlCall(const PlsCall& of) : call(of) {
    for (std::size_t i = 0; i < call.rowTags.size(); ++i) call.rowTags[i] = 100 + static_cast<std::int32_t>(i);
  }

  void run(std::int32_t stopAt) {
    StoppingHost host(stopAt);
    ProgressMonitor* monitor = &host.monitor;
    core::PlsCvl(call.data.data(), call.rowTags.data(), work.data(), tags.data(), order.data(), call.rowUse.data(),
                 &call.n, &call.m, &call.q, &call.p, &call.nComponents, &call.nComponents, call.scales.data(),
                 call.means.data(), &call.scaled, press.data(), errors.data(), sample.data(), coefs.data(), w.data(),
                 l.data(), c.data(), b.data(), s1.data(), s2.data(), &status, &monitor, &goesOn);
  }

  // The rows of the model that a fold holds out or trains on, in increasing order.
  Integers rowsOfFold(std::size_t g, std::size_t nFolds, bool heldOut) const {
    Integers rows;
    for (std::size_t i = 0; i < 19; ++i)
      if ((i % nFolds == g) == heldOut) rows.push_back(order[i]);
    std::sort(rows.begin(), rows.end());
    return rows;
  }

  // Those rows of the data packed from the first row down.
  Numbers packed(const Integers& rows) {
    Numbers cells(work.size());
    for (std::size_t i = 0; i < rows.size(); ++i)
      for (std::size_t j = 0; j < 6; ++j) cells[i + 20 * j] = call.cell(rows[i] - 1, static_cast<std::ptrdiff_t>(j));
    return cells;
  }

  PlsCall call;
  Numbers work = Numbers(20 * 6, kUntouched), press = Numbers(7, kUntouched), errors = Numbers(19, kUntouched),
          sample = Numbers(9, kUntouched), coefs = Numbers(18), w = Numbers(9), l = w, c = Numbers(6), b = Numbers(3),
          s1 = Numbers(18, kUntouched), s2 = s1;
  Integers tags = Integers(40, -7), order = Integers(21, -7);
  std::int32_t status = -1, goesOn = -1;
};

// The door by addresses, over the analysis's folds: one row left out, a column that is only carried along, and a stop
// before the first fold, after it, and never. Sums, working copies and the last fold's model are rebuilt with the plain
// transcription of a fit and a prediction.
TEST(PlsCvl, GivesTheAnalysisItsErrorsAndLeavesItsSumsAndWorkingCopies) {
  PlsCall call = exampleCall("linnerud.csv", 20, 3, 2, 3);
  call.centre(false);
  call.data.insert(call.data.end(), call.data.begin(), call.data.begin() + 20);
  call.scales.push_back(1);
  call.means.push_back(0);
  call.m = 6;
  call.rowUse[7] = 0;
  call.groups = 4;
  call.run();
  ASSERT_EQ(call.status(), 0);
  core::cvMethod = 1, core::cvGroups = 4;
  for (const std::int32_t stopAt : {1, 2, 0}) {
    CvlCall cvl(call);
    cvl.run(stopAt);
    EXPECT_EQ(cvl.status, stopAt == 0 ? 0 : 999);
    EXPECT_EQ(cvl.goesOn, stopAt == 0 ? 1 : 0);
    EXPECT_TRUE(std::equal(cvl.order.begin(), cvl.order.begin() + 19, call.rowOrder.begin()));
    EXPECT_EQ(cvl.order[19], -7);

    Numbers s1(18), s2(18), coefs(18), w(9), l(9), c(6), b(3);
    const std::size_t nDone = stopAt == 0 ? 4 : static_cast<std::size_t>(stopAt) - 1;
    for (std::size_t g = 0; g < nDone; ++g) {
      Numbers training = cvl.packed(cvl.rowsOfFold(g, 4, false));
      std::int32_t status = -1;
      definition::plsFit(training.data(), &call.n, &call.m, &call.p, &call.q, &call.nComponents, w.data(), l.data(),
                         c.data(), b.data(), coefs.data(), &status);
      for (std::size_t e = 0; e < 18; ++e) s1[e] += coefs[e], s2[e] += coefs[e] * coefs[e];
    }
    EXPECT_LE(relativeDifference(cvl.s1, s1), 1e-12);
    EXPECT_LE(relativeDifference(cvl.s2, s2), 1e-12);
    if (nDone == 0) {
      // Nothing but the model's rows, of which the first response alone is sorted.
      Numbers rows = cvl.packed({1, 2, 3, 4, 5, 6, 7, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20});
      std::sort(rows.begin() + 60, rows.begin() + 79);
      EXPECT_EQ(cvl.work, rows);
      EXPECT_EQ(cvl.tags, Integers(40, -7));
      continue;
    }
    const Integers heldOut = cvl.rowsOfFold(nDone - 1, 4, true);
    EXPECT_EQ(cvl.work, cvl.packed(heldOut));
    Integers tags(40);
    for (std::size_t i = 0; i < heldOut.size(); ++i) tags[i] = 99 + heldOut[i];
    EXPECT_EQ(cvl.tags, tags);
    EXPECT_TRUE(sameBits(cvl.w, w) && sameBits(cvl.l, l) && sameBits(cvl.c, c) && sameBits(cvl.b, b));
    Numbers sample(9), contrib(3), cumulative(3);
    for (std::ptrdiff_t j = 0; j < 3; ++j) sample[static_cast<std::size_t>(j)] = call.cell(heldOut.back() - 1, j);
    definition::plsPrd(sample.data(), &call.nComponents, &call.p, &call.nComponents, c.data() + 3, b.data(), w.data(),
                       l.data(), contrib.data(), cumulative.data());
    EXPECT_TRUE(sameBits(cvl.sample, sample));
    if (stopAt == 0) {
      EXPECT_TRUE(sameBits(cvl.press, call.press));
      EXPECT_TRUE(sameBits(cvl.errors, call.coefErrors));
    } else {
      EXPECT_EQ(cvl.errors, Numbers(19, kUntouched));
    }
  }
}

// More descriptors than a strip of them holds, and blocks of samples to predict.
TEST(PlsAnl, EqualsThePlainTranscriptionOnAWideTable) {
  PlsCall fast(67, 301, 2, 3);
  std::mt19937_64 random(5);
  std::normal_distribution<double> normal;
  for (double& value : fast.data) value = normal(random);
  fast.centre(true);
  fast.groups = 2;
  PlsCall plain = fast;
  fast.run();
  plain.run(&definition::plsAnl);
  ASSERT_EQ(fast.status(), 0);
  EXPECT_EQ(differences(fast, plain), "");
  EXPECT_LE(relativeDifference(fast.coefs, plain.coefs), 1e-13);
  EXPECT_LE(relativeDifference(fast.coefErrors, plain.coefErrors), 1e-12);
}

// Constant, repeated, tiny and huge columns, tables of low rank, a column that is zero but for one row, not-a-numbers
// and infinities, fewer rows than columns, rows left out, every kind of folds.
NastyCase<PlsCall> nastyCase(std::uint64_t seed) {
  std::mt19937_64 random(seed);
  std::normal_distribution<double> normal;
  const Pick pick(random);
  PlsCall call(pick(0, 1, 2, 3, 5, 9, 16, 17, 17, 35), pick(0, 1, 1, 2, 3, 5, 8, 9, 17, 33),
               pick(0, 1, 1, 1, 1, 2, 3, 4), pick(0, 1, 2, 3, 5, 9));
  call.m += pick(0, 0, 2);
  call.resizeInputs();
  if (random() % 2 == 0)
    for (auto& use : call.rowUse) use = pick(1, 1, 1, 1, 1, 0, 7);
  const bool integers = random() % 3 == 0, holes = random() % 20 == 0;
  const std::ptrdiff_t rank = pick(1, 2, 3, 99, 99, 99);
  for (std::ptrdiff_t j = 0; j < call.m; ++j) {
    const auto kind = random() % 16;
    const double first = normal(random), second = normal(random);
    for (std::ptrdiff_t i = 0; i < call.n; ++i) {
      call.cell(i, j) = j >= rank && j < call.p ? first * call.cell(i, j % rank) + second * call.cell(i, (j + 1) % rank)
                        : kind == 0 && j > 0    ? call.cell(i, j - 1)
                        : kind == 1             ? 3
                        : kind == 2             ? pick(1e-9, 1e-80, 1e-250) * normal(random)
                        : kind == 3             ? 1e8 * normal(random)
                        : kind == 4             ? (i == 1 ? 1 : 0)
                        : j >= call.p && call.p > 0 && kind < 10
                            ? call.cell(i, 0) + 0.3 * normal(random) + (call.p > 2 ? call.cell(i, 2) : 0)
                        : integers ? pick(-2, -1, 0, 1, 2)
                                   : normal(random);
      if (holes && random() % 30 == 0)
        call.cell(i, j) = pick(std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity());
    }
  }
  if (random() % 4 != 0) call.centre(random() % 2 == 0);
  call.keepAll = pick(0, 0, 1);
  call.ratioLimit = pick(0.0F, 0.5F, 0.9F, 1.0F, 1.2F);
  call.method = pick(1, 1, 2);
  call.groups = pick(-1, 0, 0, 1, 2, 3, 7, 100);
  call.fraction = pick(0.5F, 1.0F, 2.5F);
  return {call, static_cast<std::int32_t>(seed % 1000) + 1, pick(0, 0, 0, 1, 2, 4)};
}

double largest(const Numbers& values) {
  double most = 0;
  for (std::size_t i = 0; i + 1 < values.size(); ++i)
    if (std::isfinite(values[i])) most = std::max(most, std::fabs(values[i]));
  return most;
}

TEST(PlsAnl, EqualsThePlainTranscriptionOnNastyTables) {
  int nDone = 0, nStopped = 0, nNotConverged = 0, nFailedInFold = 0, nBeyondRank = 0;
  for (std::uint64_t seed = 0; seed < 2000; ++seed) {
    NastyCase<PlsCall> fast = nastyCase(seed), plain = fast;
    StoppingHost fastHost(fast.stopAt), plainHost(plain.stopAt);
    fast.call.monitor = &fastHost.monitor;
    plain.call.monitor = &plainHost.monitor;
    Nmrand(-fast.seed);
    definition::plsGenerator.draw(-fast.seed);
    fast.call.run();
    plain.call.run(&definition::plsAnl);
    const PlsCall &call = fast.call, &expected = plain.call;
    ASSERT_EQ(differences(call, expected), "") << "seed " << seed << ", status " << expected.status();
    ASSERT_EQ(fastHost.percentages, plainHost.percentages) << "seed " << seed;
    nStopped += call.status() == 999;
    nNotConverged += call.status() == 2;
    nFailedInFold += call.status() == 2 && !fastHost.percentages.empty();
    if (call.status() != 0) continue;
    ++nDone;
    nBeyondRank += call.nComponents > std::min(call.n, call.p);

    // Digits that the difference from a mean cannot have are no difference: errors are compared at the coefficients'
    // size, intercepts at that of their terms.
    ASSERT_LE(relativeDifference(call.coefs, expected.coefs), 1e-12) << "seed " << seed;
    const double errors = relativeDifference(call.coefErrors, expected.coefErrors) * largest(expected.coefErrors);
    ASSERT_FALSE(errors > 1e-11 * std::max(largest(expected.coefs), largest(expected.coefErrors))) << "seed " << seed;
    const double terms = (largest(call.means) + std::fabs(call.means.empty() ? 0 : call.means.back())) *
                         (largest(expected.coefs) * call.p + 1);
    ASSERT_FALSE(relativeDifference(call.intercepts, expected.intercepts) * largest(expected.intercepts) >
                 1e-12 * terms)
        << "seed " << seed;
  }
  EXPECT_GT(nDone, 700);
  EXPECT_GT(nStopped, 200);
  EXPECT_GT(nNotConverged, 10);
  EXPECT_GT(nFailedInFold, 3);
  EXPECT_GT(nBeyondRank, 200);
}

}  // namespace
}  // namespace studystats
