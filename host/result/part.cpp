#include "host/result/part.h"

#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace studystats {
namespace {

std::string withBlanks(std::string name) {
  std::replace(name.begin(), name.end(), '_', ' ');
  return name;
}

[[noreturn]] void noField(const ResultPart& part, std::string_view name) {
  throw std::logic_error(fmt::format("{} has no field {}", part.name, name));
}

Cell element(const Cell& cell, std::size_t k) {
  const auto* list = std::get_if<std::vector<Cell>>(&cell.value);
  return list != nullptr && k < list->size() ? (*list)[k] : Cell();
}

std::string numberText(double value, Format format, int digits) {
  switch (format.kind) {
    case CellKind::Value:
      return brief(value, std::max(digits, format.digits));
    case CellKind::Number:
      return significant(value, format.digits == kAllFigures ? digits : format.digits);
    case CellKind::Fixed:
    case CellKind::Bar:
      return fixed(value, format.digits);
    case CellKind::Explained:
      return explained(value);
    case CellKind::Probability:
      return value < 0.0001 ? "<0.0001" : fixed(value, 4);
    case CellKind::Share:
      return percent(value);
    case CellKind::Count:
      return fmt::format("{} of {}", value, format.digits);
    default:
      return exact(value);
  }
}

}  // namespace

Cell::Cell(double number) {
  if (!std::isnan(number)) value = number;
}

double Cell::number() const {
  if (const auto* whole = std::get_if<std::int64_t>(&value)) return static_cast<double>(*whole);
  const auto* number = std::get_if<double>(&value);
  return number != nullptr ? *number : std::numeric_limits<double>::quiet_NaN();
}

Format forSpread(double spread) {
  constexpr int kMostDecimals = 12;
  if (!(spread > 0) || !std::isfinite(spread)) return decimals(3);
  const int places = std::max(0, 2 - static_cast<int>(std::floor(std::log10(spread))));
  return places > kMostDecimals ? figures(4) : decimals(places);
}

Field::Field(const char* name_, Format format_, Getter value_, const char* meaning_, const char* absent_,
             const char* unit_)
    : Field(name_, withBlanks(name_), format_, std::move(value_), meaning_, absent_, unit_) {}

Field::Field(const char* name_, std::string heading_, Format format_, Getter value_, const char* meaning_,
             const char* absent_, const char* unit_)
    : name(name_),
      heading(std::move(heading_)),
      format(format_),
      value(std::move(value_)),
      meaning(meaning_),
      absent(absent_),
      unit(unit_) {}

Field Field::when(bool wanted) && {
  present = wanted;
  return std::move(*this);
}

Field Field::spread(std::vector<ListColumn> wanted) && {
  columns = std::move(wanted);
  return std::move(*this);
}

std::vector<Field> joined(std::vector<std::vector<Field>> lists) {
  std::vector<Field> all;
  for (std::vector<Field>& list : lists) std::move(list.begin(), list.end(), std::back_inserter(all));
  return all;
}

ResultPart listPart(const char* name, const char* meaning, std::size_t rows, std::vector<Field> fields) {
  return {name, meaning, true, rows, std::move(fields)};
}

ResultPart objectPart(const char* name, const char* meaning, std::vector<Field> fields, std::vector<ResultPart> parts) {
  return {name, meaning, false, 1, std::move(fields), std::move(parts)};
}

Field& fieldOf(ResultPart& part, std::string_view name) {
  const auto found =
      std::find_if(part.fields.begin(), part.fields.end(), [&](const Field& field) { return field.name == name; });
  if (found == part.fields.end()) noField(part, name);
  return *found;
}

std::vector<PartColumn> columnsOf(const ResultPart& part) {
  std::vector<PartColumn> columns;
  for (const Field& field : part.fields) {
    if (!field.present) continue;
    if (!field.columns) {
      columns.push_back({field.name, field.heading, field.format, field.value});
      continue;
    }
    std::size_t k = 0;
    for (const auto& [name, heading, format] : *field.columns)
      columns.push_back({name, heading, format,
                         [value = field.value, at = k++](std::size_t row) { return element(value(row), at); }});
  }
  return columns;
}

PartColumn columnOf(const ResultPart& part, std::string_view name) {
  std::vector<PartColumn> columns = columnsOf(part);
  const auto found =
      std::find_if(columns.begin(), columns.end(), [&](const PartColumn& column) { return column.name == name; });
  if (found == columns.end()) noField(part, name);
  return std::move(*found);
}

std::string shown(const Cell& cell, Format format, int digits) {
  if (cell.absent()) return "-";
  if (const auto* flag = std::get_if<bool>(&cell.value)) return *flag ? "yes" : "no";
  if (const auto* text = std::get_if<std::string>(&cell.value)) return *text;
  if (const auto* list = std::get_if<std::vector<Cell>>(&cell.value)) {
    std::vector<std::string> parts;
    for (const Cell& one : *list) parts.push_back(shown(one, format, digits));
    return fmt::format("{}", fmt::join(parts, "; "));
  }
  return numberText(cell.number(), format, digits);
}

std::string shown(const ResultPart& part, std::string_view name, std::size_t row) {
  const PartColumn column = columnOf(part, name);
  return shown(column.value(row), column.format);
}

std::string equation(const ResultPart& part, std::string_view name) {
  const PartColumn column = columnOf(part, name);
  const std::string value = shown(column.value(0), column.format);
  if (value.starts_with('<')) return fmt::format("{} < {}", column.heading, value.substr(1));
  return fmt::format("{} {}{}", column.heading, value == "-" ? "not computed" : "= ", value == "-" ? "" : value);
}

}  // namespace studystats
