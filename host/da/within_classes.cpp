#include "host/da/within_classes.h"

#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace studystats {
namespace {

constexpr double kIdentical = 1 - 1e-12;
constexpr double kSameProjection = 1e-5;  // unit vectors with |r| above 1 - 1e-12 are not farther apart than 1.5e-6

// Centred within classes, and of length 1; empty when nothing is left.
std::vector<double> classCentred(std::span<const double> column, const PreparedDiscriminant& prepared,
                                 const std::vector<std::size_t>& rows) {
  std::vector<double> mean(prepared.classes(), 0.0), size(prepared.classes(), 0.0), centred;
  for (const std::size_t i : rows) {
    const auto c = static_cast<std::size_t>(prepared.classOf[i] - 1);
    mean[c] += column[i];
    ++size[c];
  }
  double sum = 0;
  for (const std::size_t i : rows) {
    const auto c = static_cast<std::size_t>(prepared.classOf[i] - 1);
    centred.push_back(column[i] - mean[c] / size[c]);
    sum += centred.back() * centred.back();
  }
  if (!(sum > 0)) return {};
  for (double& value : centred) value /= std::sqrt(sum);
  return centred;
}

}  // namespace

bool constantWithinClasses(std::span<const double> column, const PreparedDiscriminant& prepared,
                           const std::vector<std::size_t>& rows) {
  std::vector<double> first(prepared.classes(), std::numeric_limits<double>::quiet_NaN());
  for (const std::size_t i : rows) {
    double& value = first[static_cast<std::size_t>(prepared.classOf[i] - 1)];
    if (value != value) value = column[i];
    if (value != column[i]) return false;
  }
  return true;
}

std::vector<std::pair<std::size_t, std::size_t>> identicalWithinClasses(const PreparedDiscriminant& prepared,
                                                                        const std::vector<std::size_t>& rows) {
  const Grid& model = prepared.data.model;
  struct Candidate {
    std::size_t column;
    std::vector<double> centred;
    double projection;
  };
  std::vector<Candidate> candidates;
  for (std::size_t j = 0; j < model.columns; ++j) {
    if (constantWithinClasses(model.column(j), prepared, rows)) continue;
    Candidate candidate{j, classCentred(model.column(j), prepared, rows), 0};
    if (candidate.centred.empty()) continue;
    double sum = 0;
    for (std::size_t i = 0; i < rows.size(); ++i) sum += candidate.centred[i] * std::cos(static_cast<double>(i * i));
    candidate.projection = std::abs(sum);
    candidates.push_back(std::move(candidate));
  }
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const Candidate& a, const Candidate& b) { return a.projection < b.projection; });

  std::vector<std::size_t> first(model.columns);  // of each column: the earliest that it repeats
  std::iota(first.begin(), first.end(), std::size_t{0});
  for (std::size_t b = 1; b < candidates.size(); ++b)
    for (std::size_t a = b; a-- > 0;) {
      if (candidates[b].projection - candidates[a].projection > kSameProjection) break;
      const std::vector<double>& one = candidates[a].centred;
      const double r = std::inner_product(one.begin(), one.end(), candidates[b].centred.begin(), 0.0);
      if (std::abs(r) < kIdentical) continue;
      const auto [earlier, later] = std::minmax(candidates[a].column, candidates[b].column);
      first[later] = std::min(first[later], first[earlier]);
    }
  std::vector<std::pair<std::size_t, std::size_t>> pairs;
  for (std::size_t j = 0; j < first.size(); ++j)
    if (first[j] != j) pairs.emplace_back(first[j], j);
  return pairs;
}

std::string withinClassCulprits(const PreparedDiscriminant& prepared, const std::vector<std::size_t>& rows) {
  const Grid& model = prepared.data.model;
  const std::vector<std::string>& names = prepared.data.used.descriptors;
  std::vector<std::string> constant, identical;
  for (std::size_t j = 0; j < model.columns; ++j)
    if (constantWithinClasses(model.column(j), prepared, rows)) constant.push_back(names[j]);
  for (const auto& [kept, repeat] : identicalWithinClasses(prepared, rows))
    identical.push_back(fmt::format("{} and {}", names[kept], names[repeat]));
  std::string text;
  if (!constant.empty()) text = fmt::format("{} {} constant", listed(constant, 4), constant.size() == 1 ? "is" : "are");
  if (!identical.empty())
    text += fmt::format("{}{} are identical up to scale", text.empty() ? "" : "; ", listed(identical, 4));
  return text.empty() ? text : text + " within every class";
}

}  // namespace studystats
