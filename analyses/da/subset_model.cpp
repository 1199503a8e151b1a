// The squared distance d' W d of a sample is sum over j of d(j) * (sum over k of W(j, k) * d(k)), variables in
// increasing order. A strip of samples is worked on at a time, side by side in the innermost loops; each sample has its
// own accumulators and sees the variables in their order, so the strips change the speed and not one bit.
//
// Mahalanobis (1936), Proceedings of the National Institute of Sciences of India 2, 49-55.
#include "analyses/da/subset_model.h"

#include <algorithm>
#include <cmath>

#include "numeric/multiversion.h"
#include "numeric/status.h"

namespace studystats::core {
namespace {

constexpr int kStrip = 64;     // samples taken together
constexpr int kVariables = 4;  // variables added to a sum in one pass over the strip
constexpr int kLanes = 8;      // strips are padded to whole vectors

std::ptrdiff_t padded(std::ptrdiff_t n, int to) { return (n + to - 1) / to * to; }

STUDYSTATS_MULTIVERSION
void subtractCentre(const double* __restrict values, double centre, int n, double* __restrict d) {
  for (int q = 0; q < n; ++q) d[q] = values[q] - centre;
}

STUDYSTATS_MULTIVERSION
void squares(const double* __restrict d, int lanes, double* __restrict squared) {
  for (int q = 0; q < lanes; ++q) squared[q] = d[q] * d[q];
}

// squared(q) += d(., q)' W d(., q), the terms of rows first ... last - 1 of W. Rows of W and of d are padded with zeros
// to whole kVariables: adding 0 * 0 to a sum that began at +0 changes no bit of it.
STUDYSTATS_MULTIVERSION
void addQuadraticForms(const double* __restrict weights, std::ptrdiff_t first, std::ptrdiff_t last,
                       std::ptrdiff_t nPadded, const double* __restrict d, int lanes, double* __restrict squared) {
  alignas(64) double inner[kStrip];
  for (std::ptrdiff_t j = first; j < last; ++j) {
    const double* w = weights + j * nPadded;
    for (int q = 0; q < lanes; ++q) {
      double sum = 0.0;
      for (int v = 0; v < kVariables; ++v) sum += w[v] * d[v * kStrip + q];
      inner[q] = sum;
    }
    for (std::ptrdiff_t k = kVariables; k < nPadded; k += kVariables) {
      const double* dk = d + k * kStrip;
      for (int q = 0; q < lanes; ++q) {
        double sum = inner[q];
        for (int v = 0; v < kVariables; ++v) sum += w[k + v] * dk[v * kStrip + q];
        inner[q] = sum;
      }
    }
    const double* dj = d + j * kStrip;
    for (int q = 0; q < lanes; ++q) squared[q] += dj[q] * inner[q];
  }
}

// A later class replaces the nearest so far only when it is strictly nearer.
STUDYSTATS_MULTIVERSION
void keepNearer(const double* __restrict squared, double c, int lanes, double* __restrict least,
                double* __restrict nearest) {
  for (int q = 0; q < lanes; ++q) {
    const bool nearer = squared[q] < least[q];
    least[q] = nearer ? squared[q] : least[q];
    nearest[q] = nearer ? c : nearest[q];
  }
}

// Squared lengths of the first `lanes` columns of model.deviations.
void squaredLengths(SubsetModel& model, OneVariable one, int lanes, double* squared, Pace& pace) {
  const std::ptrdiff_t nPadded = padded(model.m, kVariables);
  double* d = model.deviations.data();
  if (model.m == 1 && one == OneVariable::kPlain) return squares(d, lanes, squared);
  for (std::ptrdiff_t k = model.m; k < nPadded; ++k) std::fill_n(d + k * kStrip, lanes, 0.0);
  std::fill_n(squared, lanes, 0.0);
  pace.inParts(model.m, 2 * lanes * nPadded, 1, [&](std::int32_t first, std::int32_t last) {
    addQuadraticForms(model.weights.data(), first, last, nPadded, d, lanes, squared);
  });
}

template <class Weight>
void setWeights(SubsetModel& model, Weight weight, Pace& pace) {
  const std::ptrdiff_t nPadded = padded(model.m, kVariables);
  for (std::int32_t a = 0; a < model.m && pace.goOn(8 * nPadded); ++a) {  // cache lines are read
    double* row = model.weights.data() + a * nPadded;
    for (std::int32_t b = 0; b < model.m; ++b) row[b] = weight(a, b);
    std::fill(row + model.m, row + nPadded, 0.0);
  }
}

// Row a of the deviations from the means of class c: values of the a-th variable in up to kStrip samples.
void takeDeviations(const RowsOf& rows, std::ptrdiff_t row, int n, const double* means, SubsetModel& model, int lanes) {
  alignas(64) double listed[kStrip];
  for (std::int32_t a = 0; a < model.m; ++a) {
    double* d = model.deviations.data() + std::ptrdiff_t{a} * kStrip;
    const double* values = rows.x.column(model.variables[a]);
    if (rows.list == nullptr) {
      values += row;
    } else {
      for (int q = 0; q < n; ++q) listed[q] = values[rows.list[row + q]];
      values = listed;
    }
    subtractCentre(values, means[model.variables[a]], n, d);
    std::fill(d + n, d + lanes, 0.0);
  }
}

// Distances between class means, pair after pair, kStrip pairs at a time.
class PairTotal {
 public:
  PairTotal(SubsetModel& model, Pace& pace) : model_(model), pace_(pace) {}

  void add(const double* first, const double* second) {
    for (std::int32_t a = 0; a < model_.m; ++a) {
      const std::int32_t j = model_.variables[a];
      model_.deviations[std::ptrdiff_t{a} * kStrip + n_] = first[j] - second[j];
    }
    if (++n_ == kStrip) flush();
  }

  float total() {
    if (n_ > 0) flush();
    return total_;
  }

 private:
  void flush() {
    const int lanes = static_cast<int>(padded(n_, kLanes));
    for (std::int32_t a = 0; a < model_.m; ++a) {
      double* d = model_.deviations.data() + std::ptrdiff_t{a} * kStrip;
      std::fill(d + n_, d + lanes, 0.0);
    }
    alignas(64) double squared[kStrip];
    squaredLengths(model_, OneVariable::kPlain, lanes, squared, pace_);
    for (int q = 0; q < n_; ++q) total_ = static_cast<float>(total_ + std::sqrt(squared[q]));
    n_ = 0;
  }

  SubsetModel& model_;
  Pace& pace_;
  int n_ = 0;
  float total_ = 0.0F;
};

float separationByOne(ConstMatrix means, const PooledCovariance& within, std::int32_t g, std::int32_t j) {
  auto scale = static_cast<float>(std::sqrt(within(j, j)));
  if (!(scale > 0.0F)) scale = 1.0F;
  float total = 0.0F;
  for (std::int32_t c = 0; c < g; ++c)
    for (std::int32_t other = c + 1; other < g; ++other)
      total = static_cast<float>(total + std::fabs(means(j, c) - means(j, other)) / scale);
  return total;
}

}  // namespace

SubsetModel::SubsetModel(Arena& arena, std::int32_t n, std::int32_t most)
    : variables(arena, most),
      weights(arena, area(most, padded(most, kVariables))),
      block(arena, area(most, most)),
      deviations(arena, area(padded(most, kVariables), kStrip)),
      nearest(arena, n),
      inverse(arena, most) {}

void chooseVariables(const std::int32_t* selected, std::int32_t p, SubsetModel& model) {
  model.m = 0;
  for (std::int32_t j = 0; j < p; ++j)
    if (selected[j] == 1) model.variables[model.m++] = j;
}

void insertVariable(std::int32_t j, SubsetModel& model) {
  std::int32_t a = model.m++;
  for (; a > 0 && model.variables[a - 1] > j; --a) model.variables[a] = model.variables[a - 1];
  model.variables[a] = j;
}

void removeVariable(std::int32_t j, SubsetModel& model) {
  std::int32_t* end = model.variables.data() + model.m--;
  std::int32_t* place = std::find(model.variables.data(), end, j);
  std::copy(place + 1, end, place);
}

std::int32_t invertCovariance(const PooledCovariance& within, SubsetModel& model, Pace& pace) {
  const std::int32_t m = model.m;
  const std::int32_t* variables = model.variables.data();
  const Matrix block{model.block.data(), m};
  for (std::int32_t b = 0; b < m && pace.goOn(2 * std::int64_t{m}); ++b) {
    for (std::int32_t a = 0; a < m; ++a) block(a, b) = within(variables[a], variables[b]);
    if (block(b, b) == 0.0) block(b, b) = 1.0;
  }
  if (pace.stopped()) return kStopped;
  if (const std::int32_t status = invert(m, block, model.inverse, pace); status != kDone) return status;

  setWeights(
      model, [block](std::int32_t a, std::int32_t b) { return block(a, b); }, pace);
  return pace.stopped() ? kStopped : kDone;
}

void invertVariance(const PooledCovariance& within, SubsetModel& model) {
  const std::int32_t j = model.variables[0];
  model.weights[0] = 1.0 / within(j, j);
  std::fill_n(model.weights.data() + 1, kVariables - 1, 0.0);
}

void takeWeights(ConstMatrix winv, SubsetModel& model) {
  const std::int32_t* variables = model.variables.data();
  Pace unasked;
  setWeights(
      model, [=](std::int32_t a, std::int32_t b) { return winv(variables[a], variables[b]); }, unasked);
}

template <class Real>
void nearestClasses(const RowsOf& rows, ConstMatrix means, std::int32_t g, SubsetModel& model,
                    MatrixView<Real> distances, Pace& pace, OneVariable one) {
  alignas(64) double squared[kStrip], least[kStrip], nearest[kStrip];
  for (std::ptrdiff_t row = 0; row < rows.n; row += kStrip) {
    const auto n = static_cast<int>(std::min<std::ptrdiff_t>(kStrip, rows.n - row));
    const auto lanes = static_cast<int>(padded(n, kLanes));
    std::fill_n(nearest, lanes, g < 1 ? 0.0 : 1.0);
    for (std::int32_t c = 0; c < g; ++c) {
      takeDeviations(rows, row, n, means.column(c), model, lanes);
      squaredLengths(model, one, lanes, squared, pace);
      if (!pace.goOn(4 * lanes * std::int64_t{model.m})) return;
      if (c == 0)
        std::copy_n(squared, lanes, least);
      else
        keepNearer(squared, c + 1, lanes, least, nearest);
      for (int q = 0; distances.data != nullptr && q < n; ++q)
        distances(row + q, c) = static_cast<Real>(std::sqrt(squared[q]));
    }
    for (int q = 0; q < n; ++q) model.nearest[row + q] = static_cast<std::int32_t>(nearest[q]);
  }
}

template void nearestClasses(const RowsOf&, ConstMatrix, std::int32_t, SubsetModel&, MatrixView<float>, Pace&,
                             OneVariable);
template void nearestClasses(const RowsOf&, ConstMatrix, std::int32_t, SubsetModel&, MatrixView<double>, Pace&,
                             OneVariable);

float classSeparation(ConstMatrix means, const PooledCovariance& within, std::int32_t g, SubsetModel& model,
                      Pace& pace) {
  if (model.m == 1) return separationByOne(means, within, g, model.variables[0]);
  PairTotal pairs(model, pace);
  for (std::int32_t c = 0; c < g; ++c)
    for (std::int32_t other = c + 1; other < g && pace.goOn(2 * std::int64_t{model.m}); ++other)
      pairs.add(means.column(c), means.column(other));
  return pairs.total();
}

}  // namespace studystats::core
