#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "analyses/mlr/selection.h"
#include "tests/analyses/example.h"
#include "tests/analyses/mlr_call.h"
#include "tests/definition/mlr.h"

namespace studystats {
namespace {

using Numbers = std::vector<double>;
using Integers = std::vector<std::int32_t>;
constexpr double kUntouched = MlrCall::kUntouched;

// The numeric columns of an example table; the response is its last column.
MlrCall exampleCall(const char* name, std::int32_t n, std::int32_t p) {
  MlrCall call(n, p);
  call.data = exampleNumbers(name, n, p);
  return call;
}

void expectNear(const Numbers& values, const Numbers& expected, double relative, const char* what) {
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_NEAR(values[i], expected[i], relative * std::fabs(expected[i])) << what << ' ' << i;
}

// Certified values: NIST Statistical Reference Datasets, Longley. The example is in R's units, these are in the
// original ones.
TEST(MulReg, GivesTheCertifiedValuesOfLongley) {
  MlrCall call = exampleCall("longley.csv", 16, 7);
  const double units[] = {1, 1000, 10, 10, 1000, 1, 1000};
  for (std::ptrdiff_t j = 0; j < 7; ++j)
    for (std::ptrdiff_t i = 0; i < 16; ++i) call.cell(i, j) = std::round(call.cell(i, j) * units[j] * 10) / 10;
  call.maxSteps = 0;
  call.run();
  ASSERT_EQ(call.status(), 0);
  EXPECT_EQ(call.nIn(), 6);
  expectNear(call.coef,
             {15.0618722713733, -0.0358191792925910, -2.02022980381683, -1.03322686717359, -0.0511041056535807,
              1829.15146461355},
             1e-10, "coefficient");
  expectNear(
      call.coefSe,
      {84.9149257747669, 0.0334910077722432, 0.488399681651699, 0.214274163161675, 0.226073200069370, 455.478499142212},
      1e-10, "standard error");
  expectNear({call.rawIntercept(), call.sValue(), call.fValue(), call.multR() * call.multR()},
             {-3482258.63459582, 304.854073561965, 330.285339234588, 0.995479004577296}, 1e-10, "statistic");
  expectNear(call.sumSq, {184172401.944494, 836424.055505915}, 1e-10, "sum of squares");
}

// Hald's cement data: Draper & Smith, Applied Regression Analysis, 3rd ed. (1998), chapter 15, enter x4, x1, x2, and
// then remove x4. More digits, and the cross-validation: R 4.2.2, the same rules written with lm().
TEST(MulReg, TakesTheTextbookPathThroughTheCementData) {
  MlrCall call = exampleCall("cement.csv", 13, 5);
  call.run();
  ASSERT_EQ(call.status(), 0);
  EXPECT_EQ(call.nSteps(), 4);
  EXPECT_EQ(Integers(call.stepVar.begin(), call.stepVar.begin() + 4), (Integers{4, 1, 2, 4}));
  EXPECT_EQ(Integers(call.stepAction.begin(), call.stepAction.begin() + 4), (Integers{1, 1, 1, 0}));
  expectNear({call.stepPartialF.begin(), call.stepPartialF.begin() + 5},
             {22.7985202013823, 108.223909330744, 5.0258646489518, 1.8632624221881, 1.8632624221881}, 1e-7,
             "partial F");
  EXPECT_EQ(call.inList, (Integers{1, 2, 0, 0, 0}));
  expectNear(call.coef, {1.468305742215555, 0.662250491274645}, 1e-12, "coefficient");
  expectNear(call.coefSe, {0.1213009236062667, 0.0458547214685228}, 1e-12, "standard error");
  expectNear(call.tProb, {2.69221217968559e-07, 5.02896031563875e-08}, 1e-6, "p of t");
  expectNear({call.intercept(), call.fValue(), call.sValue(), call.press()},
             {52.577348882089510, 229.503697119894, 2.40633503852048, 149.098779482112}, 1e-12, "statistic");
  EXPECT_NEAR(call.fProb(), 4.4065789074639e-09, 1e-6 * 4.4e-9);
  EXPECT_EQ(Integers(call.selCount.begin(), call.selCount.begin() + 4), (Integers{13, 9, 1, 4}));
  expectNear(call.cvCoefSd, {0.1367432061788999, 0.0431513913686635}, 1e-10, "spread");
  EXPECT_NEAR(call.interceptSd(), 2.2171691374382743, 1e-10);
  EXPECT_EQ(call.rowIds, (Integers{8, 2, 1, 11, 4, 9, 5, 7, 3, 6, 13, 12, 10}));
}

// Leverages from an orthonormal basis of the constant and the variables. Without selection, the leave-one-out residual
// of a row is its residual over 1 - leverage.
TEST(MulReg, LeaveOneOutAgreesWithTheLeverages) {
  MlrCall call = exampleCall("cement.csv", 13, 5);
  call.maxSteps = 0;
  call.run();
  ASSERT_EQ(call.status(), 0);
  std::vector<Numbers> basis(1, Numbers(13, 1 / std::sqrt(13.0)));
  for (std::ptrdiff_t j = 0; j < 4; ++j) {
    Numbers v(13);
    for (std::size_t i = 0; i < 13; ++i) v[i] = call.cell(static_cast<std::ptrdiff_t>(i), j);
    for (int twice = 0; twice < 2; ++twice)
      for (const Numbers& q : basis) {
        double dot = 0;
        for (std::size_t i = 0; i < 13; ++i) dot += q[i] * v[i];
        for (std::size_t i = 0; i < 13; ++i) v[i] -= dot * q[i];
      }
    double length = 0;
    for (double value : v) length += value * value;
    for (double& value : v) value /= std::sqrt(length);
    basis.push_back(v);
  }
  double press = 0;
  for (std::size_t i = 0; i < 13; ++i) {
    double leverage = 0;
    for (const Numbers& q : basis) leverage += q[i] * q[i];
    press += std::pow(call.resid[i] / (1 - leverage), 2);
  }
  EXPECT_NEAR(call.press(), press, 1e-9 * press);
  EXPECT_NEAR(call.q2(), 1 - press / call.sumSq[2], 1e-9);
}

// Worked by hand: y = 0, 1, 4 at x' = 0, 1, 2 with x = 2 x' + 3. The folds' slopes are 3, 2, 1, their intercepts in x'
// -2, 0, 0 and in x -13/2, -3, -3/2; they miss by 2, 1, 2.
TEST(MulReg, GivesTheJackknifeSpreadsWorkedByHand) {
  MlrCall call(3, 2);
  call.data = {0, 1, 2, 0, 1, 4};
  call.scale[0] = 2;
  call.shift[0] = 3;
  call.fEnter = 0;
  call.run();
  ASSERT_EQ(call.status(), 0);
  EXPECT_NEAR(call.cvCoefSd[0], std::sqrt(4.0 / 3) / 2, 1e-15);
  EXPECT_NEAR(call.interceptSd(), std::sqrt(79.0) / 3, 1e-14);
  EXPECT_NEAR(call.press(), 9, 1e-13);
  EXPECT_NEAR(call.q2(), -1.0 / 26, 1e-14);
  EXPECT_NEAR(call.rawCoef[0], 1, 1e-15);
  EXPECT_NEAR(call.rawIntercept(), -10.0 / 3, 1e-14);
  EXPECT_EQ(call.flags, (Integers{1, 1})) << "all in, the response's own entry included";
}

// Ties, repeated and constant columns, not-a-numbers, fewer rows than columns, every method, rules that contradict.
NastyCase<MlrCall> nastyCase(std::uint64_t seed) {
  std::mt19937_64 random(seed);
  std::normal_distribution<double> normal;
  const Pick pick(random);
  MlrCall call(pick(0, 1, 2, 3, 5, 8, 12, 20, 33), pick(1, 2, 3, 5, 7, 12));
  const bool holes = random() % 12 == 0;
  for (std::ptrdiff_t j = 0; j < call.p; ++j) {
    const auto kind = random() % 12;
    for (std::ptrdiff_t i = 0; i < call.n; ++i)
      call.cell(i, j) = kind == 0 && j > 0  ? call.cell(i, j / 2) * pick(1.0, 1.0, 2.0)
                        : kind == 1         ? 3
                        : kind == 2         ? 0.1
                        : kind < 6          ? pick(-1, 0, 1, 2)
                        : kind < 8 && j > 0 ? call.cell(i, j - 1) + 0.1 * normal(random)
                                            : normal(random);
    if (holes && call.n > 0 && random() % 4 == 0)
      call.cell(static_cast<std::ptrdiff_t>(random() % static_cast<std::uint64_t>(call.n)), j) =
          std::numeric_limits<double>::quiet_NaN();
    call.scale[static_cast<std::size_t>(j)] = pick(1.0, 0.3, 7.0);
    call.shift[static_cast<std::size_t>(j)] = pick(0.0, 1.7);
    call.flags[static_cast<std::size_t>(j)] = pick(0, 0, 0, 1, 7);
  }
  for (auto& mark : call.usable) mark = pick(1, 1, 1, 1, 1, 1, 0);
  call.fEnter = pick(0.0F, 0.1F, 1.0F, 4.0F, 1e9F);
  call.fRemove = pick(0.0F, 0.1F, 1.0F, 4.0F, 9.0F);
  call.corrLimit = pick(0.4F, 0.9F, 0.99F, 1.0F);
  call.maxSteps = pick(-3, 0, 1, 2, 3, 6, 40);
  call.method = pick(1, 1, 2);
  call.groups = pick(-1, 0, 1, 2, 3, 5, 100);
  call.fraction = pick(0.5F, 1.0F, 2.5F);
  call.maxFolds = pick(0, 60);
  return {call, static_cast<std::int32_t>(seed % 1000) + 1, pick(0, 0, 0, 1, 2, 4)};
}

TEST(MulReg, EqualsThePlainTranscriptionBitForBitOnNastyTables) {
  int nDone = 0, nSingular = 0, nStopped = 0, nAbandoned = 0, nDropped = 0;
  for (std::uint64_t seed = 0; seed < 1500; ++seed) {
    NastyCase<MlrCall> fast = nastyCase(seed), plain = fast;
    StoppingHost fastHost(fast.stopAt), plainHost(plain.stopAt);
    fast.call.monitor = &fastHost.monitor;
    plain.call.monitor = &plainHost.monitor;
    Nmrand(-fast.seed);
    definition::mlrGenerator.draw(-fast.seed);
    fast.call.run();
    plain.call.run(&definition::mulReg);
    ASSERT_EQ(differences(fast.call, plain.call), "") << "seed " << seed << ", status " << plain.call.status();
    const MlrCall& call = fast.call;
    nDone += call.status() == 0;
    nSingular += call.status() == 1;
    nStopped += call.status() == 999;
    nAbandoned += call.status() == 0 && call.interceptSd() == kUntouched;
    nDropped += call.status() == 0 && call.nSteps() == 0 && call.maxSteps > 1 && call.stepVar[0] > 0;
  }
  EXPECT_GT(nDone, 500);
  EXPECT_GT(nSingular, 20);
  EXPECT_GT(nStopped, 100);
  EXPECT_GT(nAbandoned, 20);
  EXPECT_GT(nDropped, 20);
}

// As many candidates as make several blocks, and more columns than rows.
TEST(MulReg, EqualsThePlainTranscriptionBitForBitOnWideTables) {
  for (const std::int32_t method : {1, 2}) {
    MlrCall fast(30, 150);
    std::mt19937_64 random(20240614);
    std::normal_distribution<double> normal;
    for (double& value : fast.data) value = normal(random);
    fast.fEnter = fast.fRemove = 2;
    fast.corrLimit = 0.3F;
    fast.method = method;
    fast.groups = 4;
    MlrCall plain = fast;
    Nmrand(-3);
    definition::mlrGenerator.draw(-3);
    fast.run();
    plain.run(&definition::mulReg);
    EXPECT_EQ(differences(fast, plain), "");
    EXPECT_GT(fast.nIn(), 3);
  }
}

// A row that may not be trained on never bends a fold's model, whatever the folds: without it all folds see a line.
TEST(MulReg, NeverTrainsOnRowsThatAreNotUsable) {
  for (const std::int32_t method : {1, 2}) {
    MlrCall call(9, 2);
    for (std::ptrdiff_t i = 0; i < 9; ++i) {
      call.cell(i, 0) = static_cast<double>(i);
      call.cell(i, 1) = i == 4 ? 1000 : static_cast<double>(-2 * i);
    }
    call.usable[4] = 0;
    call.maxSteps = 0;
    call.method = method;
    call.groups = 3;
    call.run();
    ASSERT_EQ(call.status(), 0);
    EXPECT_NEAR(call.cvCoefSd[0], 0, 1e-12) << method;
    const double weight = method == 1 ? 1.0 : 9.0 / (3 * 3);
    EXPECT_NEAR(call.press(), weight * 3 * 1008.0 * 1008.0, 1e-6) << "predicted in all three folds";
  }
}

// A stated fact. One systematic fold has no training rows, and what it refits is no number.
TEST(MulReg, GivesNoSpreadOverOneFold) {
  MlrCall call = exampleCall("cement.csv", 13, 5);
  call.maxSteps = 0;
  call.groups = 1;
  call.run();
  ASSERT_EQ(call.status(), 0);
  EXPECT_EQ(call.nIn(), 4);
  EXPECT_EQ(Numbers(call.cvCoefSd.begin(), call.cvCoefSd.begin() + 4), Numbers(4, 0));
  EXPECT_EQ(call.interceptSd(), 0);
}

TEST(MulReg, EmptyModelsConstantResponsesAndImpossibleSizes) {
  MlrCall call(6, 3);
  call.data = {1, 2, 3, 4, 5, 6, 2, 1, 2, 1, 2, 1, 3, 1, 4, 1, 5, 9};
  call.fEnter = 1e9F;
  call.run();
  EXPECT_EQ(call.nSteps(), 0);
  EXPECT_EQ(call.nIn(), 0);
  EXPECT_NEAR(call.intercept(), 23.0 / 6, 1e-15);
  EXPECT_EQ(call.rawIntercept(), call.intercept());
  EXPECT_EQ((Numbers{call.fValue(), call.fProb(), call.multR(), call.tValue[0], call.tProb[1]}),
            (Numbers{0, 1, 0, kUntouched, kUntouched}));
  EXPECT_GT(call.stepPartialF[0], 0) << "the entry that failed";

  for (std::ptrdiff_t i = 0; i < 6; ++i) call.cell(i, 2) = 5;
  call.run();
  EXPECT_EQ((Numbers{call.multR(), call.q2(), call.sumSq[2]}), (Numbers{0, 0, 0}));

  for (const auto& [n, p] : {std::pair{-1, 3}, {3, 0}, {3, -2}}) {
    MlrCall none(3, 3);
    none.n = n;
    none.p = p;
    none.run();
    EXPECT_EQ(none.status(), 1) << n << ' ' << p;
    EXPECT_EQ(none.nIn(), -7) << "nothing else is written";
  }
}

TEST(CorrelationFilter, KeepsTheEarlierAndAsksOnlyThoseStillThere) {
  // 1 and 2, 2 and 3 are correlated; 2 leaves and takes nobody along.
  const Numbers r = {1, 0.9, 0.1, 0.9, 1, -0.9, 0.1, -0.9, 1};
  const std::int32_t p = 3;
  for (const auto& [limit, left] :
       {std::pair{0.5F, Integers{1, 0, 1}}, {0.05F, Integers{1, 0, 0}}, {0.9F, Integers{1, 1, 1}}, {1.0F, {1, 1, 1}}}) {
    Integers flags = {1, 1, 1};
    core::CorFilt(&limit, r.data(), &p, &p, flags.data());
    EXPECT_EQ(flags, left) << limit;
  }
  const float limit = 0.05F;
  for (const auto& [before, after] : {std::pair{Integers{0, 7, 1}, Integers{0, 7, 1}}, {{1, 7, 0}, {1, 0, 0}}}) {
    Integers flags = before;
    core::CorFilt(&limit, r.data(), &p, &p, flags.data());
    EXPECT_EQ(flags, after) << "only what is in the model removes";
  }
}

}  // namespace
}  // namespace studystats
