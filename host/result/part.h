// What a result holds, described once. Every field has its name, heading, form, value and meaning in one place, and
// JSON, CSV files, the data and tables of a page, tables of text and docs/json.md are all written from there.
#pragma once

#include <studystats/host/output.h>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace studystats {

// A value of a result: absent, a flag, a whole number, a number, a text or a list.
struct Cell {
  Cell() = default;
  Cell(bool flag) : value(flag) {}
  template <std::integral Whole>
  Cell(Whole whole) : value(static_cast<std::int64_t>(whole)) {}
  Cell(double number);  // not-a-number is absent
  Cell(const char* text) : value(std::string(text)) {}
  Cell(std::string text) : value(std::move(text)) {}
  Cell(std::vector<Cell> list) : value(std::move(list)) {}
  template <class T>
  Cell(const std::optional<T>& maybe) {
    if (maybe) *this = Cell(*maybe);
  }
  template <class T>
  Cell(const std::vector<T>& list) : value(std::vector<Cell>(list.begin(), list.end())) {}

  bool absent() const { return std::holds_alternative<std::monostate>(value); }
  double number() const;  // not-a-number unless it is one

  std::variant<std::monostate, bool, std::int64_t, double, std::string, std::vector<Cell>> value;
};

struct Format {
  CellKind kind = CellKind::Text;
  int digits = 0;
  bool list = false;  // of such values
};

inline constexpr Format kText{CellKind::Text}, kFlag{CellKind::Flag}, kWhole{CellKind::Whole},
    kGiven{CellKind::Value, 8}, kExplained{CellKind::Explained}, kProbability{CellKind::Probability},
    kShare{CellKind::Share};
inline constexpr int kAllFigures = 6;  // significant digits of what a summary shows in full: --digits changes them

constexpr Format figures(int digits) { return {CellKind::Number, digits}; }
constexpr Format decimals(int digits) { return {CellKind::Fixed, digits}; }
constexpr Format bar(int digits) { return {CellKind::Bar, digits}; }
constexpr Format outOf(std::size_t whole) { return {CellKind::Count, static_cast<int>(whole)}; }
Format forSpread(double spread);  // decimals at which a quantity with this spread shows three to four figures
constexpr Format listOf(Format format) { return {format.kind, format.digits, true}; }

using Getter = std::function<Cell(std::size_t row)>;

// A column that one element of a list has to itself, in CSV files, tables and the data of a page.
struct ListColumn {
  std::string name;
  std::string heading;
  Format format;
};

struct Field {
  // The heading is the name with blanks unless it is given.
  Field(const char* name, Format format, Getter value, const char* meaning, const char* absent = "",
        const char* unit = "");
  Field(const char* name, std::string heading, Format format, Getter value, const char* meaning,
        const char* absent = "", const char* unit = "");
  Field when(bool wanted) &&;                        // else the field is nowhere
  Field spread(std::vector<ListColumn> columns) &&;  // of a list whose elements have columns of their own

  std::string name;     // snake_case: key in JSON, heading in CSV, field of a page's data
  std::string heading;  // in tables of pages and of text; text writes it in plain ASCII
  Format format;
  Getter value;
  const char* meaning;
  const char* absent;  // when there is no value; empty: there always is one
  const char* unit;
  bool present = true;
  std::optional<std::vector<ListColumn>> columns{};
};

// A list of records, or a single one: an object, which may hold further parts. Values are asked for when they are
// written: the result that a part describes must outlive it, and may be empty when the description alone is wanted.
struct ResultPart {
  std::string name;  // key in JSON, file of CSV, data of a page
  const char* meaning;
  bool list;
  std::size_t rows;  // of an object 1, or 0 when there is none
  std::vector<Field> fields;
  std::vector<ResultPart> parts{};
};

std::vector<Field> joined(std::vector<std::vector<Field>> lists);
ResultPart listPart(const char* name, const char* meaning, std::size_t rows, std::vector<Field> fields);
ResultPart objectPart(const char* name, const char* meaning, std::vector<Field> fields,
                      std::vector<ResultPart> parts = {});

// Getters for the elements of a list: each(result.rows)(&RegressionRow::name).
template <class List>
auto each(const List& list) {
  return [&list](auto get) { return [&list, get](std::size_t i) { return Cell(std::invoke(get, list[i])); }; };
}

// The same for a list made for the purpose, which lives as long as its getters.
template <class Row>
auto eachOf(std::vector<Row> rows) {
  return [list = std::make_shared<const std::vector<Row>>(std::move(rows))](auto get) {
    return [list, get](std::size_t i) { return Cell(std::invoke(get, (*list)[i])); };
  };
}

// Getters for one thing; absent when there is none.
template <class T>
auto only(const T* one) {
  return [one](auto get) {
    return [one, get](std::size_t) { return one == nullptr ? Cell() : Cell(std::invoke(get, *one)); };
  };
}

// A field, or an element of one that is spread, with its values.
struct PartColumn {
  std::string name;
  std::string heading;
  Format format;
  Getter value;
};

Field& fieldOf(ResultPart& part, std::string_view name);             // there must be one
std::vector<PartColumn> columnsOf(const ResultPart& part);           // those that are present, lists spread
PartColumn columnOf(const ResultPart& part, std::string_view name);  // there must be one

std::string shown(const Cell& cell, Format format, int digits = kAllFigures);  // "-" for what is absent
std::string shown(const ResultPart& part, std::string_view name, std::size_t row = 0);
std::string equation(const ResultPart& part, std::string_view name);  // "s = 0.486", "p < 0.0001", of an object

}  // namespace studystats
