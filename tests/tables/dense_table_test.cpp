#include <gtest/gtest.h>
#include <studystats/tables.h>

#include <climits>

#include "tests/refusal.h"

namespace {

using studystats::test::invalid;
using studystats::test::refusal;
using Ints = std::vector<std::int32_t>;
using Reals = std::vector<double>;
using Texts = std::vector<std::string>;
using Matrix = std::vector<Reals>;
using NameSet = kel::set<std::string, std::less<std::string>, kel::pool_allocator<std::string, 1>>;

// Cells 10 * column + row, headings and formulas that name their column.
CompleteDataArray numbered(std::int32_t nRows, std::int32_t nColumns) {
  CompleteDataArray table(nRows, nColumns);
  for (std::int32_t c = 0; c < nColumns; ++c) {
    for (std::int32_t r = 0; r < nRows; ++r) table.SetDataItem(r, c, 10.0 * c + r);
    std::string text = "h";
    text += std::to_string(c);
    table.SetColumnHeading(c, text);
    text[0] = 'f';
    table.SetColumnFormula(c, text);
  }
  return table;
}

// Everything that a table holds, as text.
std::string contents(CompleteDataArray table) {
  Texts used, rows;
  table.GetColumnsUsed(&used);
  table.GetRowsUsed(&rows);
  Texts headings, formulas;
  for (std::int32_t c = 0; c < table.ColumnCount(); ++c) {
    headings.push_back(table.GetColumnHeading(c));
    formulas.push_back(table.GetColumnFormula(c));
  }
  return testing::PrintToString(table.GetData()) + testing::PrintToString(used) + testing::PrintToString(rows) +
         testing::PrintToString(headings) + testing::PrintToString(formulas) + std::to_string(table.RowCount());
}

TEST(DenseTable, BeginsEmptyAndFlattensInTheOrderAsked) {
  const CompleteDataArray empty(3, 2);
  EXPECT_EQ(empty.GetData(), Matrix(2, Reals(3, 0.0)));
  EXPECT_EQ(empty.NumRealColumns(), 2);

  const CompleteDataArray table = numbered(2, 3);
  Reals out{99};
  Matrix lists{{99}};
  table.GetDataColumnMajor(&out);
  EXPECT_EQ(out, (Reals{0, 1, 10, 11, 20, 21}));
  table.GetDataRowMajor(&out);
  EXPECT_EQ(out, (Reals{0, 10, 20, 1, 11, 21}));
  table.GetDataColumnMajor(Ints{2, 0, 2}, &out);
  EXPECT_EQ(out, (Reals{20, 21, 0, 1, 20, 21}));
  table.GetDataColumnMajor(Ints{2, 0}, &lists);
  EXPECT_EQ(lists, (Matrix{{20, 21}, {0, 1}}));
  table.GetDataColumnMajor(&lists);
  EXPECT_EQ(lists, table.GetData());
  table.GetRowData(1, &out);
  EXPECT_EQ(out, (Reals{1, 11, 21}));
  table.GetColumnData(1, &out);
  EXPECT_EQ(out, (Reals{10, 11}));

  for (const CompleteDataArray& none : {CompleteDataArray(2, 0), CompleteDataArray(0, 0)}) {
    out = {99};
    none.GetDataColumnMajor(&out);
    EXPECT_EQ(out, Reals{});
    out = {99};
    none.GetDataRowMajor(&out);
    EXPECT_EQ(out, Reals{});
    EXPECT_EQ(none.NumRealColumns(), 0);
  }
}

TEST(DenseTable, InsertedColumnsAreZeroAndNamelessAndPushTheOthersRight) {
  CompleteDataArray table = numbered(3, 2);
  Texts names{"a", "Derived"};
  table.SetColumnsUsed(&names);
  table.InsertColumns(2, 1);
  EXPECT_EQ(table.GetData(), (Matrix{{0, 1, 2}, {0, 0, 0}, {0, 0, 0}, {10, 11, 12}}));
  table.GetColumnsUsed(&names);
  EXPECT_EQ(names, (Texts{"a", "", "", "Derived"}));
  EXPECT_EQ(table.GetColumnHeading(2) + table.GetColumnFormula(2), "");
  EXPECT_EQ(table.GetColumnHeading(3) + table.GetColumnFormula(3), "h1f1");
  EXPECT_EQ(table.NumRealColumns(), 3);
  table.InsertColumns(1, 4);
  table.InsertColumns(0, 0);
  EXPECT_EQ(table.ColumnCount(), 5);
  EXPECT_EQ(table.RowCount(), 3);
}

TEST(DenseTable, NamesCountAsDerivedByTheirExactWord) {
  CompleteDataArray table(1, 2);
  Texts names{"a", "Derived", "b", "derived", "Derived "};
  table.SetColumnsUsed(&names);  // any length
  EXPECT_EQ(table.NumRealColumns(), 4);
  Texts rows{"b", "a", "b"}, out{"z"};
  table.SetRowsUsed(&rows);
  table.GetRowsUsed(&out);
  EXPECT_EQ(out, rows);
  NameSet set{"z"};
  table.GetRowsUsed(&set);
  EXPECT_EQ(Texts(set.begin(), set.end()), (Texts{"a", "b"}));
}

TEST(DenseTable, CopiesAreDeep) {
  CompleteDataArray first = numbered(2, 2);
  CompleteDataArray second = first;
  second.SetDataItem(0, 0, 5.0);
  second.InsertColumns(1, 0);
  EXPECT_EQ(contents(first), contents(numbered(2, 2)));
  first = second;
  EXPECT_EQ(contents(first), contents(second));
  const std::unique_ptr<StatsDataArray> base = std::make_unique<CompleteDataArray>(std::move(second));
  Reals out;
  base->GetColumnData(1, &out);
  EXPECT_EQ(out, (Reals{5, 1}));
}

TEST(DenseTable, NamesHeadingsAndFormulasGoFromOneKindOfTableToAnother) {
  CompleteDataArray source = numbered(1, 3);
  Texts names{"a", "b", "c"}, out;
  source.SetColumnsUsed(&names);
  IncompleteDataArray incomplete = 3;
  StatsDataArray& target = incomplete;
  target = source;
  target.GetColumnsUsed(&out);
  EXPECT_EQ(out, names);
  EXPECT_EQ(target.GetColumnHeading(2) + target.GetColumnFormula(1), "h2f1");
  Reals cells{9};
  target.GetDataColumnMajor(&cells);
  EXPECT_EQ(cells, Reals{});

  // Lists that are shorter than the table: columns are inserted only as far as each of them reaches.
  static_cast<StatsDataArray&>(source) = numbered(1, 1);
  source.SetColumnsUsed(&names);
  EXPECT_EQ(refusal([&] { source.InsertColumns(1, 2); }), invalid("InsertColumns"));
  EXPECT_EQ(refusal([&] { source.GetColumnHeading(1); }), invalid("GetColumnHeading"));
  source.InsertColumns(1, 1);
  EXPECT_EQ(source.GetData(), (Matrix{{0}, {0}, {10}, {20}}));
}

TEST(DenseTable, RefusesACallersErrorAndChangesNothing) {
  CompleteDataArray table = numbered(3, 2);
  Texts rows{"r"};
  table.SetRowsUsed(&rows);
  const std::string before = contents(table);
  Reals reals{7};
  Matrix lists{{7}};
  Reals* const noReals = nullptr;
  Matrix* const noLists = nullptr;
  Texts* const noTexts = nullptr;
  std::string text = "new";

  for (const std::int32_t bad : {-1, 3, INT_MAX, INT_MIN}) {
    EXPECT_EQ(refusal([&] { table.GetDataItem(bad, 0); }), invalid("GetDataItem"));
    EXPECT_EQ(refusal([&] { table.GetDataItem(0, bad); }), invalid("GetDataItem"));
    EXPECT_EQ(refusal([&] { table.SetDataItem(bad, 1, 5); }), invalid("SetDataItem"));
    EXPECT_EQ(refusal([&] { table.SetDataItem(1, bad, 5); }), invalid("SetDataItem"));
    EXPECT_EQ(refusal([&] { table.GetColumnData(bad, &reals); }), invalid("GetColumnData"));
    EXPECT_EQ(refusal([&] { table.SetColumnData(bad, &reals); }), invalid("SetColumnData"));
    EXPECT_EQ(refusal([&] { table.GetRowData(bad, &reals); }), invalid("GetRowData"));
    EXPECT_EQ(refusal([&] { table.GetDataColumnMajor(Ints{0, bad}, &reals); }), invalid("GetDataColumnMajor"));
    EXPECT_EQ(refusal([&] { table.GetDataColumnMajor(Ints{0, bad}, &lists); }), invalid("GetDataColumnMajor"));
    EXPECT_EQ(refusal([&] { table.SetColumnHeading(bad, text); }), invalid("SetColumnHeading"));
    EXPECT_EQ(refusal([&] { table.GetColumnHeading(bad); }), invalid("GetColumnHeading"));
    EXPECT_EQ(refusal([&] { table.SetColumnFormula(bad, text); }), invalid("SetColumnFormula"));
    EXPECT_EQ(refusal([&] { table.GetColumnFormula(bad); }), invalid("GetColumnFormula"));
    EXPECT_EQ(refusal([&] { table.InsertColumns(1, bad); }), invalid("InsertColumns"));
  }
  for (const std::int32_t bad : {-1, INT_MIN, INT_MAX})
    EXPECT_EQ(refusal([&] { table.InsertColumns(bad, 0); }), invalid("InsertColumns"));
  EXPECT_EQ(refusal([&] { table.GetColumnData(0, noReals); }), invalid("GetColumnData"));
  EXPECT_EQ(refusal([&] { table.SetColumnData(0, noReals); }), invalid("SetColumnData"));
  EXPECT_EQ(refusal([&] { table.GetRowData(0, noReals); }), invalid("GetRowData"));
  EXPECT_EQ(refusal([&] { table.GetDataColumnMajor(noReals); }), invalid("GetDataColumnMajor"));
  EXPECT_EQ(refusal([&] { table.GetDataColumnMajor(Ints{}, noReals); }), invalid("GetDataColumnMajor"));
  EXPECT_EQ(refusal([&] { table.GetDataColumnMajor(noLists); }), invalid("GetDataColumnMajor"));
  EXPECT_EQ(refusal([&] { table.GetDataColumnMajor(Ints{}, noLists); }), invalid("GetDataColumnMajor"));
  EXPECT_EQ(refusal([&] { table.GetDataRowMajor(noReals); }), invalid("GetDataRowMajor"));
  EXPECT_EQ(refusal([&] { table.SetRowsUsed(noTexts); }), invalid("SetRowsUsed"));
  EXPECT_EQ(refusal([&] { table.GetRowsUsed(noTexts); }), invalid("GetRowsUsed"));
  EXPECT_EQ(refusal([&] { table.GetRowsUsed(static_cast<NameSet*>(nullptr)); }), invalid("GetRowsUsed"));
  EXPECT_EQ(refusal([&] { table.SetColumnsUsed(noTexts); }), invalid("SetColumnsUsed"));
  EXPECT_EQ(refusal([&] { table.GetColumnsUsed(noTexts); }), invalid("GetColumnsUsed"));
  EXPECT_EQ(refusal([] { CompleteDataArray(-1, INT_MAX); }), invalid("CompleteDataArray"));
  EXPECT_EQ(refusal([] { CompleteDataArray(INT_MAX, -1); }), invalid("CompleteDataArray"));
  EXPECT_EQ(contents(table), before);
  EXPECT_EQ(reals, Reals{7});
  EXPECT_EQ(lists, Matrix{{7}});
}

TEST(DenseTable, AColumnOfAnotherLengthIsNeverReadPastItsEnd) {
  CompleteDataArray table = numbered(2, 2);
  Reals longer{5, 6, 7}, shorter{5}, out{99};
  table.SetColumnData(1, &longer);
  EXPECT_EQ(table.RowCount(), 2);
  table.GetDataColumnMajor(&out);
  EXPECT_EQ(out, (Reals{0, 1, 5, 6}));
  EXPECT_EQ(table.GetDataItem(2, 1), 7);

  table.SetColumnData(1, &shorter);
  EXPECT_EQ(refusal([&] { table.GetDataColumnMajor(&out); }), invalid("GetDataColumnMajor"));
  EXPECT_EQ(refusal([&] { table.GetDataColumnMajor(Ints{1}, &out); }), invalid("GetDataColumnMajor"));
  EXPECT_EQ(refusal([&] { table.GetDataRowMajor(&out); }), invalid("GetDataRowMajor"));
  EXPECT_EQ(refusal([&] { table.GetRowData(1, &out); }), invalid("GetRowData"));
  EXPECT_EQ(out, (Reals{0, 1, 5, 6}));
  table.GetDataColumnMajor(Ints{0}, &out);
  EXPECT_EQ(out, (Reals{0, 1}));

  Texts names{"one"};
  table.SetColumnsUsed(&names);
  const std::string before = contents(table);
  EXPECT_EQ(refusal([&] { table.InsertColumns(1, 2); }), invalid("InsertColumns"));
  EXPECT_EQ(contents(table), before);
}

}  // namespace
