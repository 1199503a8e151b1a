// Runs everything that promises the same bits in every build, on one set of inputs, and prints a line "name hash" for
// each case. The program is linked with the library compiled in several ways; the outputs must be equal.

#include <studystats/analyses.h>
#include <studystats/engine.h>
#include <studystats/utilities.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "numeric/cross_products.h"
#include "numeric/eigen.h"
#include "numeric/validation.h"

using namespace studystats::core;

namespace {

// FNV-1a over the words. Signs and payloads of not-a-numbers are the one thing that is not promised.
class Hash {
 public:
  void add(std::uint64_t word) {
    for (int shift = 0; shift < 64; shift += 8) value_ = (value_ ^ (word >> shift & 0xff)) * 0x100000001b3U;
  }
  void add(double x) { add(std::isnan(x) ? ~std::uint64_t{0} : std::bit_cast<std::uint64_t>(x)); }
  void add(float x) { add(static_cast<double>(x)); }
  void add(std::int32_t x) { add(static_cast<std::uint64_t>(x)); }
  template <class T>
  void add(const std::vector<T>& xs) {
    for (const T x : xs) add(x);
  }
  std::uint64_t value() const { return value_; }

 private:
  std::uint64_t value_ = 0xcbf29ce484222325U;
};

// Numbers of mixed size around 0, by operations that are exact everywhere (splitmix64).
class Inputs {
 public:
  explicit Inputs(std::uint64_t seed) : state_(seed) {}
  double next() {
    std::uint64_t z = state_ += 0x9e3779b97f4a7c15U;
    z = (z ^ z >> 30) * 0xbf58476d1ce4e5b9U;
    z = (z ^ z >> 27) * 0x94d049bb133111ebU;
    z ^= z >> 31;
    return std::ldexp(static_cast<double>(z >> 11) - 0x1p52, -50 + static_cast<int>(z % 7));
  }
  std::vector<double> table(std::int32_t n, std::int32_t p) {
    std::vector<double> cells(static_cast<std::size_t>(n) * static_cast<std::size_t>(p));
    for (double& cell : cells) cell = next();
    return cells;
  }

 private:
  std::uint64_t state_;
};

std::vector<double> numbers(std::int32_t rows, std::int32_t columns = 1) {
  return std::vector<double>(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns));
}

void generator(Hash& hash) {
  for (const std::int32_t seed : {-1, -12345, -161803399, -2147483647 - 1})
    for (int i = 0; i < 1000; ++i) hash.add(Nmrand(i == 0 ? seed : 0));
}

void plans(Hash& hash) {
  for (const std::int32_t method : {1, 2})
    for (std::int32_t n = 0; n < 70; ++n)
      for (std::int32_t groups = -1; groups < 12; ++groups)
        for (const float fraction : {0.0F, 0.3F, 0.7F, 1.0F, 2.1F}) {
          const ValidationPlan plan = planValidation({method, groups, fraction}, n);
          hash.add(plan.folds);
          hash.add(plan.leaveOut);
          hash.add(plan.pressWeight);
        }
}

void subsets(Hash& hash) {
  const std::int32_t n = 37, m = 5;
  const std::vector<double> source = Inputs(2).table(n, m);
  std::vector<double> subset = source;
  std::vector<std::int32_t> tags(n), order(n), heldOut(n), usable(n), subsetTags(2 * n);
  for (std::int32_t i = 0; i < n; ++i) {
    const auto at = static_cast<std::size_t>(i);
    tags[at] = 100 + i, order[at] = i * 10 % n + 1, usable[at] = i % 9 != 4;
  }
  Nmrand(-7);
  for (const std::int32_t method : {1, 2}) {
    cvMethod = method, cvGroups = 4, cvFraction = 1.5F;
    VldPln(&n);
    for (std::int32_t group = 1; group <= cvFolds; ++group)
      for (const std::int32_t code : {5, 6}) {
        std::int32_t count = 0, columns = 0;
        VldGrp(source.data(), tags.data(), subset.data(), subsetTags.data(), order.data(), heldOut.data(),
               usable.data(), &n, &m, &count, &columns, &group, &code);
        hash.add(subset);
        hash.add(subsetTags);
        hash.add(heldOut);
        hash.add(count);
      }
  }
}

void crossProducts(Hash& hash) {
  Inputs inputs(3);
  for (const std::int32_t n : {0, 1, 7, 8, 9, 100})
    for (const std::int32_t p : {1, 7, 8, 9, 31, 255, 257}) {
      std::vector<double> x = inputs.table(n, p), c = numbers(p, p), means = numbers(p);
      if (n == 9) x[x.size() / 2] = INFINITY;
      CrsPrd(x.data(), &n, &p, &n, &p, c.data(), means.data());
      hash.add(c);
      hash.add(means);
    }
}

void eigenvectors(Hash& hash) {
  Inputs inputs(4);
  for (const std::int32_t n : {1, 2, 3, 8, 17, 64, 130})
    for (const std::int32_t wantVectors : {0, 1}) {
      std::vector<double> a = inputs.table(n, n), w = numbers(n), z = numbers(n, n), work1 = w, work2 = w;
      std::int32_t status = -1;
      EigSym(&n, &n, a.data(), w.data(), &wantVectors, z.data(), work1.data(), work2.data(), &status);
      hash.add(a);
      hash.add(w);
      hash.add(z);
      hash.add(status);
    }
}

void principalComponents(Hash& hash) {
  Inputs inputs(5);
  struct Shape {
    std::int32_t n, p;
  };
  for (const auto [n, p] : {Shape{1, 3}, {30, 1}, {10, 40}, {300, 7}, {257, 24}, {600, 65}}) {
    const std::vector<double> data = inputs.table(n, p);
    std::vector<double> values = numbers(p), vectors = numbers(p, p), covariance = vectors, explained = vectors;
    std::vector<double> scores = numbers(n, p), means = values, deviations = values;
    std::int32_t count = -1, status = -1;
    PCAnal(data.data(), n, p, &count, values.data(), vectors.data(), covariance.data(), explained.data(), scores.data(),
           means.data(), deviations.data(), &status);
    for (const auto* output : {&values, &vectors, &covariance, &explained, &scores, &means, &deviations})
      hash.add(*output);
    hash.add(count);
    hash.add(status);
  }
}

// Class means, pooled covariances and the selection on them: few classes and many, one strip of samples and more.
void discrimination(Hash& hash) {
  Inputs inputs(6);
  struct Shape {
    std::int32_t n, p, g, selectMode;
  };
  for (const auto [n, p, g, selectMode] :
       {Shape{20, 3, 2, 2}, {65, 9, 2, 0}, {130, 17, 3, 1}, {90, 6, 13, 3}, {70, 33, 4, 2}}) {
    std::vector<double> data = inputs.table(n, p), vectors = numbers(p, p), values = numbers(p);
    std::vector<std::int32_t> classOf(2 * static_cast<std::size_t>(n)), counts(1000);
    const std::vector<std::int32_t> inModel(static_cast<std::size_t>(n), 1);
    for (std::int32_t i = 0; i < n; ++i) {
      const auto at = static_cast<std::size_t>(i);
      classOf[at] = i * 7 % g + 1;
      data[at] += classOf[at];
    }
    std::vector<float> floats(4000);
    std::int32_t* c = counts.data();
    float* f = floats.data();
    DisAnl(data.data(), classOf.data(), c, inModel.data(), n, p, g, selectMode, 0, 1, 4, 1, vectors.data(),
           values.data(), f, f + 100, f + 600, f + 700, f + 1000, c + 150, c + 200, c + 250, c + 300, c + 500, c + 700,
           c + 701, c + 702, nullptr, c + 703);
    for (const auto* output : {&vectors, &values}) hash.add(*output);
    hash.add(counts);
    hash.add(floats);
  }
}

// Matrices of distances, and of neighbours' numbers: fewer points than a block and more, whole vectors and rests.
void distances(Hash& hash) {
  Inputs inputs(7);
  struct Shape {
    std::int32_t n, p;
  };
  for (const auto [n, p] : {Shape{1, 1}, {63, 4}, {65, 7}, {130, 33}, {321, 5}})
    for (const auto type : {StatsDistanceUtils::STATS_DIST_EUCLIDEAN, StatsDistanceUtils::STATS_DIST_TANIMOTO}) {
      DataMatrix points, dist;
      for (std::int32_t c = 0; c < p; ++c) points.push_back(inputs.table(n, 1));
      if (n == 65) points[1][17] = INFINITY;
      StatsDistanceUtils::GenerateDistanceMatrix(points, dist, type);
      for (const auto& column : dist) hash.add(column);
      IndexMatrix lists;
      StatsClusterUtils::CreateNeighborLists(points, n, type, 5, n % 2 == 0, lists);
      for (const auto& list : lists) hash.add(list);
    }
}

// One response and several, a row left out, strips of samples that end anywhere, components beyond the rank.
void partialLeastSquares(Hash& hash) {
  Inputs inputs(8);
  struct Shape {
    std::int32_t n, p, q, a, method;
  };
  for (const auto [n, p, q, a, method] :
       {Shape{20, 3, 1, 3, 1}, {9, 40, 2, 4, 2}, {65, 17, 3, 2, 1}, {300, 9, 1, 5, 2}, {7, 300, 1, 9, 1}}) {
    const std::vector<double> data = inputs.table(n, p + q), means = inputs.table(1, p + q);
    const std::vector<std::int32_t> tags(2 * static_cast<std::size_t>(n));
    std::vector<std::int32_t> rowUse(static_cast<std::size_t>(n), 1), counts(static_cast<std::size_t>(n) + 2);
    rowUse[2] = 0;
    std::vector<double> scales = inputs.table(1, p + q), coefs = numbers(p * a, q), errors = coefs, tss = numbers(q);
    std::vector<double> ratios = numbers(a, q), q2 = ratios, r2 = ratios, rss = ratios, press = ratios;
    std::vector<double> intercepts = ratios, fitted = numbers(n, q);
    Nmrand(-9);
    PlsAnl(data.data(), tags.data(), counts.data(), rowUse.data(), n, p + q, 0, scales.data(), means.data(), nullptr, q,
           p, 1, 1, a, 1, method, 4, 1, coefs.data(), errors.data(), ratios.data(), q2.data(), r2.data(), rss.data(),
           tss.data(), intercepts.data(), fitted.data(), press.data(), &counts[static_cast<std::size_t>(n)], nullptr,
           &counts[static_cast<std::size_t>(n) + 1]);
    for (const auto* output : {&coefs, &errors, &ratios, &q2, &r2, &rss, &tss, &intercepts, &fitted, &press})
      hash.add(*output);
    hash.add(counts);
  }
}

// What the entry points do not do: folds that fill, centre and scale their own training rows.
void preparedFolds(Hash& hash) {
  namespace engine = studystats::engine;
  Inputs inputs(10);
  const std::int32_t n = 70, p = 19, folds = 6;
  std::vector<double> data = inputs.table(n, p + 1);
  for (std::size_t e = 3; e < static_cast<std::size_t>(n) * static_cast<std::size_t>(p); e += 41) data[e] = NAN;
  const engine::Table table{data.data(), n, p + 1, n};
  engine::Generator generator(4);
  const engine::Folds drawn = engine::Folds::drawn(n, folds, 11, generator);
  for (const engine::Scaling scaling : {engine::Scaling::Autoscale, engine::Scaling::Pareto, engine::Scaling::Range}) {
    const engine::Preparation preparation{{true, scaling}, {true, scaling}, engine::Filling::Median, 0};
    engine::PartialLeastSquares pls(
        {.table = table, .components = 4, .preparation = preparation, .coefficientErrors = true});
    engine::Regression regression({.table = table, .preparation = preparation}, folds);
    hash.add(static_cast<std::int32_t>(pls.fit()));
    hash.add(static_cast<std::int32_t>(regression.fit()));
    pls.validate(drawn.source());
    regression.validate(drawn.source());
    for (const auto& numbers : {pls.model().rotations, pls.validation().press, pls.validation().coefficientErrors,
                                regression.model().equation.coefficients, regression.validation().spreads})
      for (const double x : numbers) hash.add(x);
    hash.add(regression.validation().press);
  }
}

struct Case {
  const char* name;
  void (*run)(Hash&);
};

const Case kCases[] = {
    {"generator", generator},
    {"plans", plans},
    {"subsets", subsets},
    {"cross_products", crossProducts},
    {"eigenvectors", eigenvectors},
    {"principal_components", principalComponents},
    {"discrimination", discrimination},
    {"partial_least_squares", partialLeastSquares},
    {"prepared_folds", preparedFolds},
    {"distances", distances},
};

}  // namespace

int main() {
  for (const Case& c : kCases) {
    Hash hash;
    c.run(hash);
    std::printf("%s %016llx\n", c.name, static_cast<unsigned long long>(hash.value()));
  }
}
