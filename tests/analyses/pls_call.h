// One call of PlsAnl: a table, the settings, and every output filled beforehand with values that nothing computes. Each
// output has an entry more than it needs, which nobody may write.
#pragma once

#include <studystats/analyses.h>
#include <studystats/frame.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/analyses/calls.h"

namespace studystats {

struct PlsCall {
  using Routine = decltype(&PlsAnl);
  static constexpr double kUntouched = -7.25;

  PlsCall(std::int32_t rows, std::int32_t descriptors, std::int32_t responses, std::int32_t components)
      : n(rows), p(descriptors), q(responses), m(p + q), nComponents(components) {
    resizeInputs();
  }

  // After a change of the sizes.
  void resizeInputs() {
    data.resize(size(n) * size(m));
    rowTags.assign(2 * size(n), 3);
    rowUse.assign(size(n), 1);
    scales.assign(size(m), 1.0);
    means.assign(size(m), 0.0);
  }

  double& cell(std::ptrdiff_t i, std::ptrdiff_t j) { return data[static_cast<std::size_t>(i + j * n)]; }

  // Centres the columns by the rows of the model, and divides them by their standard deviations when autoscaled.
  void centre(bool autoscale) {
    const auto nModel = static_cast<double>(std::count(rowUse.begin(), rowUse.end(), 1));
    scaled = autoscale ? 1 : 0;
    for (std::ptrdiff_t j = 0; j < m; ++j) {
      double &mean = means[static_cast<std::size_t>(j)], &scale = scales[static_cast<std::size_t>(j)], squares = 0;
      mean = 0;
      for (std::ptrdiff_t i = 0; i < n; ++i) mean += isModel(i) ? cell(i, j) / nModel : 0;
      for (std::ptrdiff_t i = 0; i < n; ++i) squares += isModel(i) ? std::pow(cell(i, j) - mean, 2) : 0;
      scale = autoscale && squares > 0 ? std::sqrt(squares / (nModel - 1)) : 1;
      for (std::ptrdiff_t i = 0; i < n; ++i) cell(i, j) = (cell(i, j) - mean) / scale;
    }
  }

  void run(Routine routine = PlsAnl) {
    clearOutputs();
    call(routine);
  }

  void clearOutputs() {
    const std::size_t each = size(nComponents) * size(q);
    rowOrder.assign(size(n) + 1, -7);
    for (auto* v : {&coefs, &coefErrors}) v->assign(size(p) * each + 1, kUntouched);
    for (auto* v : {&pressRatios, &q2, &r2, &rss, &intercepts, &press}) v->assign(each + 1, kUntouched);
    tss.assign(size(q) + 1, kUntouched);
    fitted.assign(size(n) * size(q) + 1, kUntouched);
    counts.assign(2, -7);
  }

  void call(Routine routine) {
    routine(data.data(), rowTags.data(), rowOrder.data(), rowUse.data(), n, m, 0, scales.data(), means.data(), nullptr,
            q, p, keepAll, ratioLimit, nComponents, scaled, method, groups, fraction, coefs.data(), coefErrors.data(),
            pressRatios.data(), q2.data(), r2.data(), rss.data(), tss.data(), intercepts.data(), fitted.data(),
            press.data(), &counts[0], monitor, &counts[1]);
  }

  std::int32_t status() const { return counts[0]; }
  std::int32_t goesOn() const { return counts[1]; }
  // Components kept: those that have a ratio. Only with responses.
  std::ptrdiff_t kept() const {
    return std::find(pressRatios.begin(), pressRatios.begin() + nComponents, kUntouched) - pressRatios.begin();
  }
  double coef(std::ptrdiff_t j, std::ptrdiff_t a, std::ptrdiff_t k = 0) const {
    return coefs[static_cast<std::size_t>((k * nComponents + a) * p + j)];
  }

  std::int32_t n, p, q, m, nComponents;
  std::vector<double> data, scales, means;
  std::vector<std::int32_t> rowTags, rowUse;
  std::int32_t keepAll = 0, scaled = 1, method = 1, groups = 0;
  float ratioLimit = 1, fraction = 1;
  ProgressMonitor* monitor = nullptr;

  std::vector<double> coefs, coefErrors, pressRatios, q2, r2, rss, tss, intercepts, fitted, press;
  std::vector<std::int32_t> rowOrder, counts;

 private:
  static std::size_t size(std::int32_t count) { return static_cast<std::size_t>(std::max(count, 0)); }
  bool isModel(std::ptrdiff_t i) const { return rowUse[static_cast<std::size_t>(i)] == 1; }
};

// The outputs in which two calls differ, by name: all that the definition gives operation by operation. Coefficients,
// intercepts and standard errors have a faster formula.
inline std::string differences(const PlsCall& a, const PlsCall& b) {
  Differences found;
  found.compare("rowOrder", a.rowOrder, b.rowOrder);
  found.compare("scales", a.scales, b.scales);
  found.compare("pressRatios", a.pressRatios, b.pressRatios);
  found.compare("q2", a.q2, b.q2);
  found.compare("r2", a.r2, b.r2);
  found.compare("rss", a.rss, b.rss);
  found.compare("tss", a.tss, b.tss);
  found.compare("fitted", a.fitted, b.fitted);
  found.compare("press", a.press, b.press);
  found.compare("counts", a.counts, b.counts);
  return found.names();
}

// The largest difference between numbers that are computed, beside the largest of b; infinite where one of the two
// alone is not a number.
inline double relativeDifference(const std::vector<double>& a, const std::vector<double>& b) {
  double difference = a.size() == b.size() ? 0 : INFINITY, largest = 0;
  for (std::size_t i = 0; i < b.size() && i < a.size(); ++i) {
    if (a[i] == b[i] && b[i] == PlsCall::kUntouched) continue;
    if (std::isnan(a[i]) != std::isnan(b[i])) return INFINITY;
    if (std::isnan(b[i])) continue;
    if (a[i] != b[i]) difference = std::max(difference, std::fabs(a[i] - b[i]));
    largest = std::max(largest, std::fabs(b[i]));
  }
  return largest > 0 ? difference / largest : difference;
}

}  // namespace studystats
