// Columns that repeat another up to scale, sign and shift.
//
// Brought to the range 0 ... 1, such columns are the same or mirrored. A sum of the cells' distances from the middle of
// the range, each times a fixed random weight, is then the same up to its sign: columns whose sums differ by more than
// rounding cannot belong together. Those that are left are compared cell by cell.
#include "host/preparation/same_information.h"

#include "host/preparation/magnitude.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <optional>

namespace studystats {
namespace {

using Cells = std::span<const double>;

constexpr double kRounding = 64 * std::numeric_limits<double>::epsilon();
constexpr int kShortDigits = 10;  // of a scale or shift that is taken for the number that was meant
constexpr int kAllDigits = 17;    // of a number that is not short

// What is compared first, and the rows that fix scale and shift best.
struct Shape {
  std::size_t column = 0;
  double figure = 0;       // the weighted sum, without its sign
  double uncertainty = 0;  // by how much rounding of the cells can have moved it
  std::size_t lowest = 0;  // rows
  std::size_t highest = 0;
};

// Numbers between -1 and 1 that depend on nothing but the row (Steele, Lea & Flood 2014, the mixing of SplitMix64).
std::vector<double> randomWeights(std::size_t rows) {
  std::vector<double> weights(rows);
  std::uint64_t state = 0;
  for (double& weight : weights) {
    std::uint64_t z = (state += 0x9E3779B97F4A7C15U);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
    z ^= z >> 31;
    weight = std::ldexp(static_cast<double>(z >> 11), -52) - 1;
  }
  return weights;
}

// Absent for a column without spread or with a cell that is not finite.
std::optional<Shape> shapeOf(std::size_t column, Cells cells, const std::vector<double>& weights, double weightSum) {
  if (!std::all_of(cells.begin(), cells.end(), [](double cell) { return std::isfinite(cell); })) return {};
  if (isConstant(cells)) return {};
  Shape shape{column};
  const auto [low, high] = std::minmax_element(cells.begin(), cells.end());
  shape.lowest = static_cast<std::size_t>(low - cells.begin());
  shape.highest = static_cast<std::size_t>(high - cells.begin());

  const double factor = unitFactor(cells);
  const double minimum = *low * factor, range = *high * factor - minimum;
  double sum = 0;
  for (std::size_t i = 0; i < cells.size(); ++i) sum += weights[i] * ((cells[i] * factor - minimum) / range - 0.5);
  shape.figure = std::abs(sum);
  const double ofCells = 8 * kRounding * std::max(std::abs(*low), std::abs(*high)) * factor / range;
  const double ofSum = static_cast<double>(cells.size()) * std::numeric_limits<double>::epsilon();
  shape.uncertainty = weightSum * (ofCells + ofSum);
  return shape;
}

// A number as it was meant, and how many digits say so.
struct Meant {
  double value;
  int digits;
};

// The decimal with the fewest digits within `tolerance` of the value; the value itself when that takes many.
Meant shortDecimal(double value, double tolerance) {
  if (std::abs(value) <= tolerance) return {0, 0};
  char text[40];
  for (int digits = 1; digits <= kShortDigits; ++digits) {
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific, digits - 1).ptr;
    double decimal = value;
    std::from_chars(text, end, decimal);
    if (std::abs(decimal - value) <= tolerance) return {decimal, digits};
  }
  return {value, kAllDigits};
}

// A short decimal, or one over a shorter one.
Meant shortFactor(double value, double tolerance) {
  const Meant direct = shortDecimal(value, tolerance);
  const Meant inverse = shortDecimal(1 / value, tolerance / (value * value));
  return inverse.digits + 1 < direct.digits ? Meant{1 / inverse.value, inverse.digits + 1} : direct;
}

struct Relation {
  Meant scale;
  Meant shift;

  int digits() const { return scale.digits + shift.digits; }
};

bool holds(const Relation& relation, Cells kept, Cells other) {
  const double scale = relation.scale.value, shift = relation.shift.value;
  for (std::size_t i = 0; i < kept.size(); ++i) {
    const double product = scale * kept[i];
    const double allowed = kRounding * (std::abs(shift) + std::abs(product) + std::abs(other[i]));
    if (!(std::abs(other[i] - (shift + product)) <= allowed)) return false;
  }
  return true;
}

using Relations = std::vector<Relation>;

void addProportional(const Shape& shape, Cells kept, Cells other, Relations& found) {
  const std::size_t i = std::abs(kept[shape.lowest]) > std::abs(kept[shape.highest]) ? shape.lowest : shape.highest;
  const double scale = other[i] / kept[i];
  const Relation raw{{scale, kAllDigits}, {0, 0}};
  if (!std::isfinite(scale) || scale == 0 || !holds(raw, kept, other)) return;
  found.push_back({shortFactor(scale, kRounding * std::abs(scale)), {0, 0}});
  found.push_back(raw);
}

// Adds a scale with its shift, taken from the row whose terms are smallest and so the most exact.
void addWithShift(Meant scale, Cells kept, Cells other, Relations& found) {
  const auto terms = [&](std::size_t i) { return std::abs(other[i]) + std::abs(scale.value * kept[i]); };
  std::size_t best = 0;
  for (std::size_t i = 1; i < kept.size(); ++i)
    if (terms(i) < terms(best)) best = i;
  const double shift = other[best] - scale.value * kept[best];
  found.push_back({scale, shortDecimal(shift, kRounding * terms(best))});
  found.push_back({scale, {shift, kAllDigits}});
}

void addShifted(const Shape& shape, Cells kept, Cells other, Relations& found) {
  const std::size_t low = shape.lowest, high = shape.highest;
  const double range = kept[high] - kept[low];
  const double scale = (other[high] - other[low]) / range;
  if (!std::isfinite(scale) || !std::isfinite(range) || scale == 0) return;
  Relations raw;
  addWithShift({scale, kAllDigits}, kept, other, raw);
  if (!holds(raw.back(), kept, other)) return;

  const double terms =
      std::abs(other[high]) + std::abs(other[low]) + std::abs(scale) * (std::abs(kept[high]) + std::abs(kept[low]));
  addWithShift(shortFactor(scale, kRounding * terms / range), kept, other, found);
  found.insert(found.end(), raw.begin(), raw.end());
}

// The relation that takes the fewest digits to say: beside a large offset several hold to rounding.
std::optional<Relation> relationOf(const Shape& shape, Cells kept, Cells other) {
  Relations found;
  addProportional(shape, kept, other, found);
  addShifted(shape, kept, other, found);
  std::stable_sort(found.begin(), found.end(),
                   [](const Relation& a, const Relation& b) { return a.digits() < b.digits(); });
  for (const Relation& relation : found)
    if (holds(relation, kept, other)) return relation;
  return {};
}

// Shapes whose figures may be equal, as runs of overlapping intervals.
std::vector<std::vector<Shape>> runsOf(std::vector<Shape> shapes) {
  const auto lower = [](const Shape& shape) { return shape.figure - shape.uncertainty; };
  std::sort(shapes.begin(), shapes.end(), [&](const Shape& a, const Shape& b) { return lower(a) < lower(b); });
  std::vector<std::vector<Shape>> runs;
  double reach = 0;
  for (const Shape& shape : shapes) {
    if (runs.empty() || lower(shape) > reach) {
      runs.emplace_back();
      reach = lower(shape);
    }
    runs.back().push_back(shape);
    reach = std::max(reach, shape.figure + shape.uncertainty);
  }
  return runs;
}

// Every column of the run that repeats an earlier one of it.
void findRepeats(std::vector<Shape> run, const std::vector<Cells>& columns, std::vector<SamePair>& pairs) {
  if (run.size() < 2) return;
  std::sort(run.begin(), run.end(), [](const Shape& a, const Shape& b) { return a.column < b.column; });
  std::vector<Shape> kept;
  for (const Shape& shape : run) {
    const Cells other = columns[shape.column];
    const auto repeated = [&](const Shape& first) {
      if (std::abs(first.figure - shape.figure) > first.uncertainty + shape.uncertainty) return false;
      const std::optional<Relation> relation = relationOf(first, columns[first.column], other);
      if (relation) pairs.push_back({first.column, shape.column, relation->scale.value, relation->shift.value});
      return relation.has_value();
    };
    if (std::none_of(kept.begin(), kept.end(), repeated)) kept.push_back(shape);
  }
}

}  // namespace

bool isConstant(std::span<const double> column) {
  const auto first = std::find_if(column.begin(), column.end(), [](double cell) { return !std::isnan(cell); });
  return std::all_of(first, column.end(), [&](double cell) { return std::isnan(cell) || cell == *first; });
}

std::vector<SamePair> sameInformation(const std::vector<std::span<const double>>& columns) {
  if (columns.empty()) return {};
  const std::vector<double> weights = randomWeights(columns[0].size());
  const double weightSum =
      std::accumulate(weights.begin(), weights.end(), 0.0, [](double sum, double w) { return sum + std::abs(w); });
  std::vector<Shape> shapes;
  for (std::size_t j = 0; j < columns.size(); ++j)
    if (const std::optional<Shape> shape = shapeOf(j, columns[j], weights, weightSum)) shapes.push_back(*shape);

  std::vector<SamePair> pairs;
  for (std::vector<Shape>& run : runsOf(std::move(shapes))) findRepeats(std::move(run), columns, pairs);
  std::sort(pairs.begin(), pairs.end(), [](const SamePair& a, const SamePair& b) { return a.setAside < b.setAside; });
  return pairs;
}

}  // namespace studystats
