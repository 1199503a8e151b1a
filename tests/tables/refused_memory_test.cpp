// A table or a record either becomes what it was told to become or stays as it was, and so does the list that a getter
// fills. Texts are too long to stand inside a string object, so that each costs an allocation.
#include "tests/refused_memory.h"

#include <gtest/gtest.h>
#include <studystats/tables.h>

namespace {

using namespace studystats::test;
using Texts = std::vector<std::string>;
using Matrix = std::vector<std::vector<double>>;

const Texts kShort{"a", "b"}, kLong{std::string(40, 'x'), std::string(50, 'y')};

template <class Value>
std::string printed(const Value& value) {
  return testing::PrintToString(value);
}

template <class Table>
std::string shown(Table table) {
  Texts names, texts;
  table.GetColumnsUsed(&names);
  std::string text = printed(names);
  for (std::int32_t c = 0; c < table.ColumnCount(); ++c) text += table.GetColumnHeading(c) + table.GetColumnFormula(c);
  if constexpr (!std::is_same_v<Table, IncompleteDataArray>) {
    table.GetRowsUsed(&names);
    text += printed(names) + printed(table.RowCount());
  }
  if constexpr (std::is_same_v<Table, CompleteStringArray>) {
    table.GetDataColumnMajor(&texts);
    return text + printed(texts);
  } else {
    std::vector<double> cells;
    table.GetDataColumnMajor(&cells);
    return text + printed(cells);
  }
}

// Two columns with names, headings and formulas; row names and cells where the table has them.
template <class Table>
Table filled(Table table, Texts names, double cell) {
  table.SetColumnsUsed(&names);
  std::vector<double> cells(cell == 1 ? 3 : 6, cell);
  for (std::int32_t c = 0; c < 2; ++c) {
    table.SetColumnHeading(c, names[0]);
    table.SetColumnFormula(c, names[1]);
    table.SetColumnData(c, &cells);
    if constexpr (std::is_same_v<Table, CompleteStringArray>) table.SetColumnData(c, &names);
  }
  if constexpr (!std::is_same_v<Table, IncompleteDataArray>) table.SetRowsUsed(&names);
  return table;
}

template <class Table>
void expectTableWhole(const Table& empty) {
  const Table before = filled(empty, kShort, 1), other = filled(empty, kLong, 2);
  Texts names = kLong;
  std::string text = kLong[0];
  const auto check = [&](const char* what, auto change) { expectAllOrNothing(what, before, change, shown<Table>); };
  check("assignment", [&](Table& t) { t = other; });
  check("base", [&](Table& t) { static_cast<StatsDataArray&>(t) = other; });
  check("SetColumnsUsed", [&](Table& t) { t.SetColumnsUsed(&names); });
  check("SetColumnHeading", [&](Table& t) { t.SetColumnHeading(1, text); });
  if constexpr (!std::is_same_v<Table, IncompleteDataArray>)
    check("SetRowsUsed", [&](Table& t) { t.SetRowsUsed(&names); });
  if constexpr (std::is_same_v<Table, CompleteDataArray>)
    check("InsertColumns", [](Table& t) { t.InsertColumns(2, 1); });
  if constexpr (std::is_same_v<Table, CompleteStringArray>)
    check("SetColumnData", [&](Table& t) { t.SetColumnData(1, &names); });
}

TEST(RefusedMemory, LeavesTablesAsTheyWere) {
  expectTableWhole(CompleteDataArray(3, 2));
  expectTableWhole(IncompleteDataArray(2));
  expectTableWhole(CompleteStringArray(2, 2));
}

TEST(RefusedMemory, LeavesTheListsOfGettersAsTheyWere) {
  const CompleteDataArray numbers = filled(CompleteDataArray(3, 2), kLong, 2);
  const CompleteStringArray texts = filled(CompleteStringArray(2, 2), kLong, 2);
  const auto names = [](const char* what, auto get) { expectAllOrNothing(what, kShort, get, printed<Texts>); };
  names("GetColumnsUsed", [&](Texts& out) { numbers.GetColumnsUsed(&out); });
  names("GetRowsUsed", [&](Texts& out) { numbers.GetRowsUsed(&out); });
  names("texts", [&](Texts& out) { texts.GetDataColumnMajor(&out); });
  const Matrix before{{7}, {8}};
  const auto lists = [&](const char* what, auto get) { expectAllOrNothing(what, before, get, printed<Matrix>); };
  lists("columns", [&](Matrix& out) { numbers.GetDataColumnMajor(&out); });
  lists("listed columns", [&](Matrix& out) { numbers.GetDataColumnMajor({1, 0}, &out); });
  const auto cells = [](const char* what, auto get) {
    expectAllOrNothing(what, std::vector<double>{7}, get, printed<std::vector<double>>);
  };
  cells("flat", [&](std::vector<double>& out) { numbers.GetDataColumnMajor(&out); });
  cells("by rows", [&](std::vector<double>& out) { numbers.GetDataRowMajor(&out); });
  cells("row", [&](std::vector<double>& out) { numbers.GetRowData(1, &out); });
}

std::string shown(StatsDataInput input) {
  Texts columns, rows;
  input.GetColumns(&columns);
  input.GetRows(&rows);
  return input.GetGridGUID() + printed(columns) + printed(rows) + printed(input.GetSheet());
}

std::string shown(StatsDataFactoryResults results) {
  Texts rows, headings;
  results.GetRowsMissing(&rows);
  results.GetColumnHeadings(&headings);
  return results.GetStudyGUID() + printed(rows) + printed(headings) + results.GetComments();
}

StatsDataFactoryResults resultsWith(const Texts& names) {
  StatsDataFactoryResults results;
  results.SetStudyGUID(names[0]);
  results.AddToRowsMissing(names);
  results.AddToColumnHeadings(names);
  results.SetComments(names[1]);
  return results;
}

TEST(RefusedMemory, LeavesRecordsAsTheyWere) {
  const StatsDataInput input(kShort[0], 1, kShort, kShort), otherInput(kLong[0], 2, kLong, kLong);
  expectAllOrNothing(
      "request", input, [&](StatsDataInput& i) { i = otherInput; }, [](const StatsDataInput& i) { return shown(i); });

  const StatsDataFactoryResults before = resultsWith(kShort), other = resultsWith(kLong);
  const auto check = [&](const char* what, auto change) {
    expectAllOrNothing(what, before, change, [](const StatsDataFactoryResults& r) { return shown(r); });
  };
  check("results", [&](StatsDataFactoryResults& r) { r = other; });
  check("comments", [](StatsDataFactoryResults& r) { r.SetComments(kLong[0]); });
  check("names", [](StatsDataFactoryResults& r) { r.AddToRowsMissing(kLong); });
  check("one name", [](StatsDataFactoryResults& r) { r.AddToRowsMissing(kLong[0]); });
}

TEST(InsertedColumns, OneAtATimeCostConstantTime) {
  CompleteDataArray table(3, 0);
  const std::size_t before = bytesObtained;
  for (std::int32_t c = 0; c < 5000; ++c) table.InsertColumns(1, c);
  // A column and its entries in the lists take some 200 bytes, 1 million altogether; lists that are copied at each call
  // add up to 1500 millions.
  EXPECT_LT(bytesObtained - before, 10'000'000U);
}

}  // namespace
