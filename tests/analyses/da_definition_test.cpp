#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "analyses/da/classification.h"
#include "analyses/da/selection.h"
#include "numeric/validation.h"
#include "tests/analyses/da_call.h"
#include "tests/analyses/da_nasty.h"
#include "tests/definition/da.h"

namespace studystats {
namespace {

TEST(DisAnl, EqualsThePlainTranscriptionBitForBitOnNastyTables) {
  int nDone = 0, nSingular = 0, nEmpty = 0, nStopped = 0, nRestarted = 0, nFailedInFold = 0;
  for (std::uint64_t seed = 0; seed < 1500; ++seed) {
    NastyCase<DaCall> fast = nastyCase(seed), plain = fast;
    StoppingHost fastHost(fast.stopAt), plainHost(plain.stopAt);
    fast.call.monitor = &fastHost.monitor;
    plain.call.monitor = &plainHost.monitor;
    Nmrand(-fast.seed);
    definition::daGenerator.draw(-fast.seed);
    fast.call.run();
    plain.call.run(&definition::disAnl);
    ASSERT_EQ(differences(fast.call, plain.call), "") << "seed " << seed << ", status " << plain.call.status();
    ASSERT_EQ(fastHost.percentages, plainHost.percentages) << "seed " << seed;
    ASSERT_EQ(core::cvGroups, definition::daGroups) << "seed " << seed;
    const DaCall& call = fast.call;
    nDone += call.status() == 0;
    nSingular += call.status() == 1 && call.nSteps() != -7;
    nEmpty += call.status() == 2;
    nStopped += call.status() == 999;
    nRestarted += call.status() == 0 && core::cvGroups != call.groups;
    nFailedInFold += (call.status() == 1 || call.status() == 2) && !fastHost.percentages.empty();
  }
  EXPECT_GT(nDone, 300);
  EXPECT_GT(nSingular, 100);
  EXPECT_GT(nEmpty, 50);
  EXPECT_GT(nStopped, 200);
  EXPECT_GT(nRestarted, 20);
  EXPECT_GT(nFailedInFold, 30);
}

// Classes whose means differ a little in every variable.
DaCall randomCall(std::int32_t n, std::int32_t p, std::int32_t g, std::uint64_t seed) {
  DaCall call(n, p, g);
  std::mt19937_64 random(seed);
  std::normal_distribution<double> normal;
  for (std::size_t i = 0; i < call.inModel.size(); ++i)
    call.classOf[i] = static_cast<std::int32_t>(random() % static_cast<std::uint64_t>(g)) + 1;
  for (std::ptrdiff_t j = 0; j < p; ++j)
    for (std::ptrdiff_t i = 0; i < n; ++i)
      call.cell(i, j) = normal(random) + 0.3 * static_cast<double>((call.classOf[static_cast<std::size_t>(i)] + j) % g);
  return call;
}

// Several strips of samples, more pairs of classes than a strip holds, and every number of variables about a vector's.
TEST(DisAnl, EqualsThePlainTranscriptionBitForBitOnLargeTables) {
  for (const std::int32_t g : {2, 3, 13})
    for (std::int32_t p = 6; p <= 18; ++p) {
      DaCall fast = randomCall(110 + 9 * p, p, g, 20240614);
      fast.selectMode = p % 2 == 0 ? 2 : 1;
      fast.nSelect = p % 2 == 0 ? 0 : 5;
      fast.groups = 5;
      DaCall plain = fast;
      fast.run();
      plain.run(&definition::disAnl);
      ASSERT_EQ(fast.status(), 0);
      EXPECT_EQ(differences(fast, plain), "") << g << " classes, " << p << " variables";
    }
}

// The whole matrix and single columns, around every block size; some variables so large or small that products overflow
// or their quotients are not normal numbers.
TEST(PooledCovariance, EqualsThePlainSumsBitForBit) {
  constexpr std::int32_t g = 3;
  for (const std::int32_t n : {4, 8, 9, 41})
    for (const std::int32_t p : {1, 8, 127, 128, 129})
      for (const int extreme : {0, 1, 2, 3}) {
        DaCall call = randomCall(n, p, g, 20240616);
        for (std::ptrdiff_t j = 0; j < p; ++j)
          for (std::ptrdiff_t i = 0; i < n; ++i)
            call.cell(i, j) *= extreme == 1 && j % 5 < 2 ? 1e-158 : extreme == 2 && j % 5 < 2 ? 1e158 : 1;
        if (extreme == 3) call.cell(n / 2, p / 2) = std::numeric_limits<double>::quiet_NaN();
        std::vector<std::int32_t> sizes(g);
        for (std::ptrdiff_t i = 0; i < n; ++i) ++sizes[static_cast<std::size_t>(call.classOf[std::size_t(i)] - 1)];
        const core::DaSamples samples{{call.data.data(), n}, call.classOf.data(), sizes.data(), n, p, g};

        const auto area = static_cast<std::size_t>(p) * static_cast<std::size_t>(p);
        std::vector<double> means(static_cast<std::size_t>(p * g)), plain(area), whole(area), columns(area);
        std::vector<double> products(static_cast<std::size_t>(core::productScratch(p)));
        core::Pace unasked;
        core::poolCovariance(samples, {means.data(), p}, {whole.data(), p}, products.data(), unasked);
        const auto deviation = [&](std::ptrdiff_t i, std::ptrdiff_t j) {
          const std::ptrdiff_t c = call.classOf[static_cast<std::size_t>(i)] - 1;
          return call.cell(i, j) - means[static_cast<std::size_t>(j + c * p)];
        };
        core::Obtained<core::CovarianceScratch> scratch(p, p);
        core::PooledCovariance within(samples, {means.data(), p}, *scratch, unasked);
        for (std::int32_t j = p - 1; j >= 0; --j) {
          within.require(j, unasked);
          for (std::int32_t k = 0; k < p; ++k) {
            const auto at = static_cast<std::size_t>(k) + static_cast<std::size_t>(j) * static_cast<std::size_t>(p);
            for (std::int32_t i = 0; i < n; ++i) plain[at] += deviation(i, k) * deviation(i, j) / (n - g);
            columns[at] = within(k, j);
          }
        }
        ASSERT_TRUE(sameBits(whole, plain)) << n << " x " << p << ", " << extreme;
        ASSERT_TRUE(sameBits(columns, plain)) << n << " x " << p << ", " << extreme;
      }
}

// The routines by address, on samples that stand in a larger array, give together what DisAnl gives.
TEST(DisAnl, GivesWhatItsRoutinesGive) {
  constexpr std::int32_t n = 90, p = 7, g = 3, ld = 94, yes = 1;
  DaCall call = randomCall(n, p, g, 20240615), own(ld, p, g);
  call.run();
  ASSERT_EQ(call.status(), 0);
  ASSERT_GT(call.nSteps(), 1);

  own.clearOutputs();
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    for (std::ptrdiff_t j = 0; j < p; ++j) own.cell(i, j) = call.cell(i, j);
    own.classOf[static_cast<std::size_t>(i)] = call.classOf[static_cast<std::size_t>(i)];
  }
  core::nClasses = g;
  const double *x = own.data.data(), kUntouched = DaCall::kUntouched;
  std::int32_t *tags = own.classOf.data(), *chosen = own.selected.data(), &status = own.counts[2], sizes[g] = {};
  for (std::size_t i = 0; i < n; ++i) ++sizes[tags[i] - 1];
  std::vector<double> means(p * g), within(p * p), winv(p * p, kUntouched), work(p * p), withinSS(work), between(work);

  core::DaStep(x, tags, &ld, &p, &n, &p, &p, &own.selectMode, &own.nSelect, chosen, within.data(), means.data(),
               winv.data(), &own.counts[0], own.selectOrder.data(), own.stepFraction.data(),
               own.stepClassFraction.data(), work.data(), sizes, &status);
  ASSERT_EQ(status, 0);
  core::DaConf(x, tags, &ld, &p, &n, &p, chosen, means.data(), winv.data(), own.confusion.data());
  core::DaScat(x, &ld, &n, &p, chosen, within.data(), withinSS.data(), between.data(), &status);
  std::vector<double> work2(p * p);
  core::DaCanon(x, tags, &ld, &p, &n, &p, &yes, chosen, &own.counts[1], own.canonValues.data(), own.canonVectors.data(),
                means.data(), winv.data(), withinSS.data(), between.data(), own.distances.data(), work.data(),
                work2.data(), &status);
  ASSERT_EQ(status, 0);
  std::vector<float> distances, row(ld * g);
  for (std::ptrdiff_t c = 0; c < g; ++c)
    distances.insert(distances.end(), own.distances.begin() + c * ld, own.distances.begin() + c * ld + n);
  EXPECT_EQ(Differences()
                .compare("selected", own.selected, call.selected)
                .compare("selectOrder", own.selectOrder, call.selectOrder)
                .compare("stepFraction", own.stepFraction, call.stepFraction)
                .compare("stepClassFraction", own.stepClassFraction, call.stepClassFraction)
                .compare("confusion", own.confusion, call.confusion)
                .compare("canonValues", own.canonValues, call.canonValues)
                .compare("canonVectors", own.canonVectors, call.canonVectors)
                .compare("distances", distances, call.distances)
                .names(),
            "");

  // The parts of DaStep.
  std::vector<double> means2(p * g), within2(p * p), winv2(p * p, kUntouched), winv3(winv2);
  float fraction = 0, classFraction[g] = {}, distSum = 0;
  core::DaPool(x, tags, &ld, &p, &n, &p, means2.data(), within2.data(), sizes, &status);
  core::DaEval(x, tags, &ld, &p, &n, &p, chosen, means2.data(), within2.data(), winv2.data(), work.data(), &fraction,
               classFraction, &distSum, sizes, &status);
  core::DaInv(&p, &p, chosen, within.data(), winv3.data(), work.data(), &status);
  EXPECT_TRUE(means2 == means && within2 == within && winv2 == winv && winv3 == winv);
  EXPECT_EQ(fraction, call.stepFraction[static_cast<std::size_t>(call.nSteps() - 1)]);
  const std::int32_t picked[] = {7, 2}, two = 2, wide = 3;
  std::vector<double> block(6, kUntouched);
  core::SubMat(picked, within.data(), &p, &wide, &two, block.data());
  EXPECT_EQ(block, (std::vector<double>{within[6 + 6 * p], within[1 + 6 * p], kUntouched, within[6 + 1 * p],
                                        within[1 + 1 * p], kUntouched}));
  for (std::int32_t i = 1; i <= n; ++i) {
    std::int32_t nearest = -1;
    core::DaNear(x, &ld, &p, &p, chosen, means.data(), winv.data(), &i, &nearest, row.data(), &yes);
    EXPECT_EQ(nearest, tags[ld + i - 1]) << i;
    for (auto k = static_cast<std::size_t>(i - 1); k < row.size(); k += ld) EXPECT_EQ(row[k], own.distances[k]) << i;
  }
}

// More pairs than a strip holds; the total is rounded to 32 bits after each.
TEST(DisAnl, AddsUpTheDistancesBetweenAllClassMeansIn32Bits) {
  constexpr std::int32_t n = 400, p = 5, g = 13;
  DaCall call = randomCall(n, p, g, 20240616);
  const std::vector<std::int32_t> all(p, 1);
  std::vector<std::int32_t> sizes(g);
  for (std::size_t i = 0; i < n; ++i) ++sizes[static_cast<std::size_t>(call.classOf[i] - 1)];
  std::vector<double> means(p * g), within(p * p), winv(p * p), work(p * p);
  std::vector<float> classFraction(g);
  float fraction = 0, distSum = 0, total = 0;
  std::int32_t status = -1;
  core::nClasses = g;
  core::DaPool(call.data.data(), call.classOf.data(), &n, &p, &n, &p, means.data(), within.data(), sizes.data(),
               &status);
  core::DaEval(call.data.data(), call.classOf.data(), &n, &p, &n, &p, all.data(), means.data(), within.data(),
               winv.data(), work.data(), &fraction, classFraction.data(), &distSum, sizes.data(), &status);
  ASSERT_EQ(status, 0);
  for (std::size_t c = 0; c < g; ++c)
    for (std::size_t other = c + 1; other < g; ++other) {
      double squared = 0;
      for (std::size_t j = 0; j < p; ++j) {
        double sum = 0;
        for (std::size_t k = 0; k < p; ++k) sum += winv[j + k * p] * (means[k + c * p] - means[k + other * p]);
        squared += (means[j + c * p] - means[j + other * p]) * sum;
      }
      total = static_cast<float>(total + std::sqrt(squared));
    }
  EXPECT_EQ(distSum, total);
}

}  // namespace
}  // namespace studystats
