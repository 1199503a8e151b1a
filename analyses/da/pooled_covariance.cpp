// Products of deviations are summed over a few samples at a time, all variables side by side. Every sum still runs from
// the first sample to the last, and of each symmetric pair one is computed: a product does not depend on the order of
// its factors.
#include "analyses/da/pooled_covariance.h"

#include <algorithm>

#include "numeric/multiversion.h"

namespace studystats::core {
namespace {

constexpr int kSamples = 8;   // samples taken together
constexpr int kTogether = 8;  // variables summed side by side

// c(j, k) += d(i, k) * d(i, j) / divisor for j >= k, sample after sample; a few entries above the diagonal are computed
// along, so that the inner loop starts at a whole vector.
STUDYSTATS_MULTIVERSION
void addQuotients(const double* __restrict d, std::int32_t m, double divisor, double* __restrict c, std::ptrdiff_t ld) {
  for (std::ptrdiff_t k = 0; k < m; ++k) {
    double* __restrict ck = c + k * ld;
    for (std::ptrdiff_t j = k / kSamples * kSamples; j < m; ++j) {
      double sum = ck[j];
      for (int i = 0; i < kSamples; ++i) sum += d[i * m + k] * d[i * m + j] / divisor;
      ck[j] = sum;
    }
  }
}

// centre(i, a): what sample i's value of the a-th variable is taken from. Rows past the last sample are zero: adding
// 0 * 0 / divisor to a sum that began at +0 changes no bit of it.
template <class Centre>
void sumProducts(ConstMatrix x, std::int32_t n, const std::int32_t* variables, std::int32_t m, double divisor,
                 Centre centre, Matrix c, double* d) {
  for (std::int32_t k = 0; k < m; ++k) std::fill_n(c.column(k), m, 0.0);
  for (std::ptrdiff_t row = 0; row < n; row += kSamples) {
    const auto rows = static_cast<int>(std::min<std::ptrdiff_t>(kSamples, n - row));
    for (std::int32_t a = 0; a < m; ++a) {
      const double* column = x.column(variables == nullptr ? a : variables[a]) + row;
      for (int i = 0; i < rows; ++i) d[std::ptrdiff_t{i} * m + a] = column[i] - centre(row + i, a);
      for (int i = rows; i < kSamples; ++i) d[std::ptrdiff_t{i} * m + a] = 0.0;
    }
    addQuotients(d, m, divisor, c.data, c.ld);
  }
  for (std::int32_t j = 0; j < m; ++j)
    for (std::int32_t k = 0; k < j; ++k) c(k, j) = c(j, k);
}

// A class without samples keeps a mean of 0.
void classMeans(const DaSamples& s, Matrix means) {
  for (std::int32_t c = 0; c < s.g; ++c) std::fill_n(means.column(c), s.p, 0.0);
  for (std::int32_t j = 0; j < s.p; j += kTogether) {
    const int together = std::min(kTogether, s.p - j);
    for (std::int32_t i = 0; i < s.n; ++i) {
      double* sums = means.column(s.classOf[i] - 1) + j;
      for (int q = 0; q < together; ++q) sums[q] += s.x(i, j + q);
    }
  }
  for (std::int32_t c = 0; c < s.g; ++c)
    for (std::int32_t j = 0; j < s.p && s.classSize[c] > 0; ++j) means(j, c) /= s.classSize[c];
}

}  // namespace

std::ptrdiff_t productScratch(std::int32_t p) { return area(kSamples, p); }

bool canBePooled(const DaSamples& s) {
  if (s.g < 1 || s.n <= s.g) return false;
  return std::all_of(s.classOf, s.classOf + s.n, [&s](std::int32_t c) { return c >= 1 && c <= s.g; });
}

void poolCovariance(const DaSamples& s, Matrix means, Matrix within, double* scratch) {
  classMeans(s, means);
  const auto centre = [&s, means](std::ptrdiff_t i, std::int32_t a) { return means(a, s.classOf[i] - 1); };
  sumProducts(s.x, s.n, nullptr, s.p, s.n - s.g, centre, within, scratch);
}

void totalScatter(ConstMatrix x, std::int32_t n, const std::int32_t* variables, std::int32_t m, double* means, Matrix c,
                  double* scratch) {
  for (std::int32_t a = 0; a < m; ++a) {
    const double* column = x.column(variables[a]);
    double sum = 0.0;
    for (std::int32_t i = 0; i < n; ++i) sum += column[i];
    means[a] = sum / n;
  }
  const auto centre = [means](std::ptrdiff_t, std::int32_t a) { return means[a]; };
  sumProducts(x, n, variables, m, 1.0, centre, c, scratch);
}

}  // namespace studystats::core
