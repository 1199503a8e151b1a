// Columns made of columns: transforms in place, and derived products and powers.
#include "host/names.h"
#include "host/preparation/block.h"
#include "host/text.h"

#include <fmt/format.h>
#include <studystats/tables.h>
#include <studystats/utilities.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace studystats {
namespace {

constexpr std::int64_t kMostDerived = 5000;

StatsUtils::STATS_TRANSFORM_TYPE libraryType(Transform::Kind kind) {
  switch (kind) {
    case Transform::Kind::Ln:
    case Transform::Kind::Log10:
      return StatsUtils::STATS_TRANSFORM_LOG;
    case Transform::Kind::Sqrt:
      return StatsUtils::STATS_TRANSFORM_SQRT;
    case Transform::Kind::Square:
      return StatsUtils::STATS_TRANSFORM_SQUARE;
    case Transform::Kind::Cube:
      return StatsUtils::STATS_TRANSFORM_CUBE;
    case Transform::Kind::Exp:
      return StatsUtils::STATS_TRANSFORM_EXP;
    case Transform::Kind::Reciprocal:
      return StatsUtils::STATS_TRANSFORM_RECIPROCAL;
  }
  return StatsUtils::STATS_TRANSFORM_NONE;
}

std::string headingOf(const std::string& name, const Transform& transform) {
  std::string heading;
  StatsUtils::TransformHeading(name, libraryType(transform.kind), transform.shift, heading);
  return transform.kind == Transform::Kind::Log10 ? "log10" + heading.substr(3) : heading;
}

BlockColumn& sourceColumn(Block& block, const std::string& name, const char* option) {
  std::vector<std::string> names;
  for (BlockColumn& column : block.columns) {
    if (column.source == name) return column;
    names.push_back(column.source);
  }
  const std::string near = nearestName(name, names);
  throw BadOptions(fmt::format("{} {}: there is no descriptor \"{}\".{}", option, name, name,
                               near.empty() ? "" : fmt::format(" Did you mean \"{}\"?", near)),
                   {.option = option}, near);
}

// The factors of a derived column, each the index of a source column; a repeated index is a power.
using Factors = std::vector<std::size_t>;

std::vector<Factors> factorsOf(StatsDataInput::DataInputDerivation type, std::size_t n) {
  bool squares = false, cubes = false, products = false, squareProducts = false, triples = false;
  std::int32_t inLibrary = 0;
  StatsDataInput::GetDerivationParameters(type, static_cast<std::int32_t>(n), squares, cubes, products, squareProducts,
                                          triples, inLibrary);
  std::vector<Factors> all;
  for (std::size_t i = 0; squares && i < n; ++i) all.push_back({i, i});
  for (std::size_t i = 0; cubes && i < n; ++i) all.push_back({i, i, i});
  for (std::size_t i = 0; products && i < n; ++i)
    for (std::size_t j = i + 1; j < n; ++j) all.push_back({i, j});
  for (std::size_t i = 0; squareProducts && i < n; ++i)
    for (std::size_t j = 0; j < n; ++j)
      if (j != i) all.push_back({i, i, j});
  for (std::size_t i = 0; triples && i < n; ++i)
    for (std::size_t j = i + 1; j < n; ++j)
      for (std::size_t k = j + 1; k < n; ++k) all.push_back({i, j, k});
  return all;
}

// In 64 bits and before anything is allocated: n = 3000 cubic columns would wrap a 32-bit count.
std::int64_t countOf(Derivation::Kind kind, std::int64_t n) {
  const std::int64_t products = n * (n - 1) / 2;
  switch (kind) {
    case Derivation::Kind::CrossProducts:
      return products;
    case Derivation::Kind::Squares:
    case Derivation::Kind::Cubes:
      return n;
    case Derivation::Kind::Quadratic:
      return n + products;
    case Derivation::Kind::Cubic:
      return 2 * n + products + n * (n - 1) + n * (n - 1) / 2 * (n - 2) / 3;
  }
  return 0;
}

StatsDataInput::DataInputDerivation libraryType(Derivation::Kind kind) {
  switch (kind) {
    case Derivation::Kind::CrossProducts:
      return StatsDataInput::DerivationCrossProducts;
    case Derivation::Kind::Squares:
      return StatsDataInput::DerivationSquares;
    case Derivation::Kind::Quadratic:
      return StatsDataInput::DerivationQuadratic;
    case Derivation::Kind::Cubes:
      return StatsDataInput::DerivationCubes;
    case Derivation::Kind::Cubic:
      return StatsDataInput::DerivationCubic;
  }
  return StatsDataInput::DerivationNone;
}

std::string productName(const std::vector<const BlockColumn*>& sources, const Factors& factors) {
  std::string name;
  for (std::size_t f = 0; f < factors.size();) {
    std::size_t power = 1;
    while (f + power < factors.size() && factors[f + power] == factors[f]) ++power;
    if (!name.empty()) name += " * ";
    name += sources[factors[f]]->name;
    if (power > 1) name += fmt::format("^{}", power);
    f += power;
  }
  return name;
}

DescriptorRecipe productRecipe(const std::vector<const BlockColumn*>& sources, const Factors& factors) {
  DescriptorRecipe recipe;
  for (const std::size_t f : factors) recipe.factors.push_back(sources[f]->recipe.factors.front());
  return recipe;
}

std::vector<double> productCells(const std::vector<const BlockColumn*>& sources, const Factors& factors) {
  std::vector<double> cells = sources[factors[0]]->cells;
  for (std::size_t f = 1; f < factors.size(); ++f)
    for (std::size_t i = 0; i < cells.size(); ++i) cells[i] *= sources[factors[f]]->cells[i];
  return cells;
}

bool isZero(double cell) { return cell == 0 || std::isnan(cell); }

// Powers and products of numbers other than 0 that are 0 in every row would pass for a constant.
void requireNotLost(const std::string& heading, const std::vector<double>& cells, const auto& sourceIsZero) {
  if (!std::all_of(cells.begin(), cells.end(), isZero)) return;
  for (std::size_t i = 0; i < cells.size(); ++i)
    if (cells[i] == 0 && !sourceIsZero(i))
      throw NotComputed(
          fmt::format("{} is too small for a number in every row. Multiply its columns by a power of ten.", heading));
}

// A view with the block's headings, so that patterns name descriptors as they name table columns.
std::vector<std::size_t> sourcesOf(const Block& block, std::size_t given, const Derivation& derivation) {
  TableView headings;
  for (std::size_t j = 0; j < given; ++j) headings.add(block.columns[j].source, std::span<const double>());
  headings.setName("the descriptors");
  return matchingColumns(headings, derivation.columns.empty() ? std::vector<std::string>{"*"} : derivation.columns,
                         "--derive");
}

}  // namespace

bool transformed(double value, const Transform& transform, double& result) {
  if (!StatsUtils::TransformValue(value, libraryType(transform.kind), transform.shift, result)) return false;
  if (transform.kind == Transform::Kind::Log10) result = std::log10(value + transform.shift);
  return std::isfinite(result);
}

void applyTransforms(Block& block, const std::vector<Transform>& transforms, std::vector<Remark>& remarks) {
  for (const Transform& transform : transforms) {
    BlockColumn& column = sourceColumn(block, transform.column, "--transform");
    std::size_t outside = 0, first = 0;
    const std::vector<double> before = column.cells;
    for (std::size_t i = 0; i < column.cells.size(); ++i) {
      if (std::isnan(before[i])) continue;
      if (transformed(before[i], transform, column.cells[i])) continue;
      column.cells[i] = std::numeric_limits<double>::quiet_NaN();
      if (outside++ == 0) first = i;
    }
    const std::string heading = headingOf(column.name, transform);
    if (outside > 0)
      remarks.push_back(
          {Severity::Warning,
           "outside-domain",
           fmt::format("{} cannot be computed for {}, which became missing: {} has {} in {}.", heading,
                       counted(outside, "cell", "cells"), block.rows[first].name, exact(before[first]), column.name),
           {block.rows[first].name}});
    if (transform.kind == Transform::Kind::Square || transform.kind == Transform::Kind::Cube)
      requireNotLost(heading, column.cells, [&](std::size_t i) { return isZero(before[i] + transform.shift); });
    column.recipe.factors.front().transforms.push_back(transform);
    column.formula = heading;
    column.name = heading;
  }
}

void deriveColumns(Block& block, const std::vector<Derivation>& derivations, std::vector<Remark>& remarks) {
  const std::size_t given = block.columns.size();
  std::vector<std::vector<std::size_t>> sources;
  std::int64_t total = 0;
  for (const Derivation& derivation : derivations) {
    sources.push_back(sourcesOf(block, given, derivation));
    const auto n = static_cast<std::int64_t>(sources.back().size());
    total += n > 100000 ? kMostDerived + 1 : countOf(derivation.kind, n);
    if (total > kMostDerived)
      throw BadOptions(
          fmt::format("--derive would make {} columns of {}; the limit is {}. Name the columns to derive "
                      "from, as in --derive squares:A,B.",
                      total, counted(static_cast<std::size_t>(n), "descriptor", "descriptors"), kMostDerived),
          {.option = "--derive"});
  }

  UniqueNameGenerator unique;
  for (const BlockColumn& column : block.columns) unique.UniqueName(column.name);
  std::vector<BlockColumn> derived;
  for (std::size_t d = 0; d < derivations.size(); ++d) {
    std::vector<const BlockColumn*> columns;
    for (const std::size_t j : sources[d]) columns.push_back(&block.columns[j]);
    for (const Factors& factors : factorsOf(libraryType(derivations[d].kind), columns.size())) {
      const std::string formula = productName(columns, factors);
      derived.push_back({unique.UniqueName(formula), "Derived", formula, productCells(columns, factors),
                         productRecipe(columns, factors)});
      const std::vector<double>& cells = derived.back().cells;
      if (!std::all_of(cells.begin(), cells.end(), [](double x) { return std::isfinite(x); }))
        throw NotComputed(
            fmt::format("{} is too large for a number in some rows. Try --transform on its columns first.", formula));
      requireNotLost(formula, cells, [&](std::size_t i) {
        return std::any_of(factors.begin(), factors.end(), [&](std::size_t f) { return columns[f]->cells[i] == 0; });
      });
    }
  }
  for (BlockColumn& column : derived) block.columns.push_back(std::move(column));
  if (!derivations.empty())
    remarks.push_back({Severity::Note,
                       "derived-columns",
                       fmt::format("{} were derived from {}.", counted(derived.size(), "column", "columns"),
                                   counted(given, "descriptor", "descriptors")),
                       {}});
}

}  // namespace studystats
