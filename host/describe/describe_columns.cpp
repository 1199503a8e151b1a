// The figures of one column.
#include "host/describe/describe.h"

#include "host/preparation/magnitude.h"
#include "host/preparation/preparation.h"

#include <studystats/utilities.h>

#include <algorithm>
#include <cmath>
#include <string_view>
#include <unordered_map>

namespace studystats {
namespace {

constexpr std::size_t kFewestCodes = 3;     // two values are a yes and a no, whatever they are called
constexpr std::size_t kCellsPerCode = 4;    // on average
constexpr double kEvenCodes = 3;            // most frequent over least frequent code, at most ...
constexpr double kEvenCodesFromZero = 1.5;  // ... and when they begin with 0, as counts of something do

std::optional<double> finite(double value) { return std::isfinite(value) ? std::optional(value) : std::nullopt; }

// How often the values of a sorted column occur.
struct Frequencies {
  std::size_t different = 0;
  std::size_t most = 0;
  std::size_t fewest = 0;
};

Frequencies frequencies(const std::vector<double>& sorted) {
  Frequencies result;
  for (std::size_t i = 0; i < sorted.size();) {
    std::size_t end = i + 1;
    while (end < sorted.size() && sorted[end] == sorted[i]) ++end;
    ++result.different;
    result.most = std::max(result.most, end - i);
    result.fewest = result.fewest == 0 ? end - i : std::min(result.fewest, end - i);
    i = end;
  }
  return result;
}

// Months, days, classes: whole numbers without a gap, each about as frequent as any other. Counts of something pile up
// at their small end instead.
bool lookLikeCodes(const std::vector<double>& sorted, const Frequencies& found) {
  if (found.different < kFewestCodes || found.different * kCellsPerCode > sorted.size()) return false;
  if (sorted.front() < 0 || sorted.back() - sorted.front() + 1 != static_cast<double>(found.different)) return false;
  if (std::any_of(sorted.begin(), sorted.end(), [](double value) { return value != std::floor(value); })) return false;
  const double evenness = sorted.front() == 0 ? kEvenCodesFromZero : kEvenCodes;
  return static_cast<double>(found.most) <= evenness * static_cast<double>(found.fewest);
}

double median(const std::vector<double>& sorted) {
  const std::size_t half = sorted.size() / 2;
  if (sorted.size() % 2 == 1) return sorted[half];
  const double middle = (sorted[half - 1] + sorted[half]) * 0.5;
  return std::isfinite(middle) ? middle : sorted[half - 1] * 0.5 + sorted[half] * 0.5;
}

// Moments of the column brought close to 1 by a power of two: the same digits, and no square leaves the range.
void describeMoments(std::vector<double> present, ColumnSummary& summary) {
  const double factor = unitFactor(present);
  for (double& value : present) value *= factor;
  double range = 0, maximum = 0, minimum = 0, mean = 0, sd = 0, variance = 0, deviation = 0, skewness = 0, kurtosis = 0;
  StatsCalcUtils::UnivariateStatistics(present, count32(present.size()), range, maximum, minimum, mean, sd, variance,
                                       deviation, skewness, kurtosis);
  summary.mean = finite(mean / factor);
  if (present.size() > 1) summary.sd = finite(sd / factor);
  if (sd > 0) {
    summary.skewness = finite(skewness);
    summary.kurtosis = finite(kurtosis);
  }
}

void describeNumbers(const TableView::Column& column, ColumnSummary& summary, bool& code) {
  std::vector<double> present;
  for (const double cell : column.numbers)
    if (!std::isnan(cell)) present.push_back(cell);
  summary.count = present.size();
  if (present.empty()) return;
  std::vector<double> sorted = present;
  std::sort(sorted.begin(), sorted.end());
  const Frequencies found = frequencies(sorted);
  summary.different = found.different;
  summary.mostCommon = found.most;
  summary.minimum = finite(sorted.front());
  summary.maximum = finite(sorted.back());
  summary.median = finite(median(sorted));
  code = lookLikeCodes(sorted, found);
  if (found.different == 1) {  // by comparison: the mean of twenty cells 0.1 is not 0.1
    summary.mean = summary.minimum;
    if (summary.count > 1) summary.sd = 0.0;
  } else {
    describeMoments(std::move(present), summary);
  }
}

void describeTexts(const TableView::Column& column, ColumnSummary& summary) {
  std::unordered_map<std::string_view, std::size_t> frequency;
  for (const std::string& cell : column.texts)
    if (!cell.empty()) {
      ++summary.count;
      summary.mostCommon = std::max(summary.mostCommon, ++frequency[cell]);
    }
  summary.different = frequency.size();
}

}  // namespace

ColumnSummary describeColumn(const TableView::Column& column, bool& code) {
  ColumnSummary summary;
  summary.name = column.name;
  summary.kind = column.kind;
  summary.strayCount = column.strayCount;
  summary.strays.assign(column.strays.begin(), column.strays.end());
  const bool numeric = column.kind == ColumnKind::Numeric;
  if (numeric)
    describeNumbers(column, summary, code);
  else
    describeTexts(column, summary);
  summary.missing = (numeric ? column.numbers.size() : column.texts.size()) - summary.count;
  return summary;
}

const char* reasonFor(const ColumnSummary& column, const std::optional<double> ColumnSummary::*figure) {
  if (column.*figure) return nullptr;
  if (column.count == 0) return "no value";
  if (column.count == 1) return "one value";
  if (column.different == 1) return "constant";
  return "beyond the range of a 64-bit float";
}

}  // namespace studystats
