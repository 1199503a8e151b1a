#include "host/report/describe_data.h"

#include "host/report/data.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace studystats {
namespace {

constexpr double kShortRange = 24;  // bins of whole numbers

struct Bin {
  std::size_t column;  // of the names
  double low, high;
  std::size_t count = 0;
};

std::vector<double> present(std::span<const double> cells) {
  std::vector<double> values;
  std::copy_if(cells.begin(), cells.end(), std::back_inserter(values), [](double cell) { return std::isfinite(cell); });
  return values;
}

std::vector<Bin> emptyBins(std::size_t column, const std::vector<double>& values) {
  const auto [least, most] = std::minmax_element(values.begin(), values.end());
  const double low = *least, range = *most - *least;
  const bool whole = std::all_of(values.begin(), values.end(), [](double value) { return value == std::floor(value); });
  std::vector<Bin> bins;
  if (whole && range < kShortRange) {
    for (double value = low; value <= *most; ++value) bins.push_back({column, value - 0.5, value + 0.5});
    return bins;
  }
  const double count =
      range > 0 && std::isfinite(range) ? std::ceil(std::log2(static_cast<double>(values.size()))) + 1 : 1;
  for (double k = 0; k < count; ++k) bins.push_back({column, low + range * k / count, low + range * (k + 1) / count});
  return bins;
}

void fill(std::vector<Bin>& bins, const std::vector<double>& values) {
  for (const double value : values) {
    const auto next =
        std::upper_bound(bins.begin(), bins.end(), value, [](double v, const Bin& bin) { return v < bin.low; });
    ++(next == bins.begin() ? *next : *(next - 1)).count;
  }
}

double correlation(std::span<const double> x, std::span<const double> y) {
  double n = 0, meanX = 0, meanY = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (!std::isfinite(x[i]) || !std::isfinite(y[i])) continue;
    ++n;
    meanX += x[i];
    meanY += y[i];
  }
  if (n < 3) return std::numeric_limits<double>::quiet_NaN();
  meanX /= n;
  meanY /= n;
  double xx = 0, yy = 0, xy = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (!std::isfinite(x[i]) || !std::isfinite(y[i])) continue;
    const double dx = x[i] - meanX, dy = y[i] - meanY;
    xx += dx * dx;
    yy += dy * dy;
    xy += dx * dy;
  }
  return std::clamp(xy / std::sqrt(xx * yy), -1.0, 1.0);  // not a number for a constant column
}

}  // namespace

Table histogramData(const TableView& table, const std::vector<std::string>& columns) {
  std::vector<Bin> all;
  for (std::size_t j = 0; j < columns.size(); ++j) {
    const std::vector<double> values = present(table.find(columns[j])->numbers);
    if (values.empty()) continue;
    std::vector<Bin> bins = emptyBins(j, values);
    fill(bins, values);
    all.insert(all.end(), bins.begin(), bins.end());
  }
  ReportData data("histogram");
  data.texts("column", all, [&](const Bin& bin) { return columns[bin.column]; })
      .numbers("low", all, [](const Bin& bin) { return bin.low; })
      .numbers("high", all, [](const Bin& bin) { return bin.high; })
      .numbers("count", all, [](const Bin& bin) { return bin.count; });
  return data.take();
}

Table correlationData(const TableView& table, const std::vector<std::string>& columns) {
  struct Pair {
    std::size_t first, second;
    double r;
  };
  const std::size_t n = columns.size();
  std::vector<Pair> pairs(n * n);
  for (std::size_t j = 0; j < n; ++j)
    for (std::size_t k = 0; k <= j; ++k) {
      const double r = j == k ? 1 : correlation(table.find(columns[j])->numbers, table.find(columns[k])->numbers);
      pairs[j * n + k] = {j, k, r};
      pairs[k * n + j] = {k, j, r};
    }
  ReportData data("correlations");
  data.texts("first", pairs, [&](const Pair& pair) { return columns[pair.first]; })
      .texts("second", pairs, [&](const Pair& pair) { return columns[pair.second]; })
      .numbers("r", pairs, [](const Pair& pair) { return pair.r; })
      .numbers("size", pairs, [](const Pair& pair) { return std::abs(pair.r); })
      .texts("sign", pairs, [](const Pair& pair) { return pair.r < 0 ? "negative" : "positive"; });
  return data.take();
}

}  // namespace studystats
