#include <gtest/gtest.h>
#include <studystats/tables.h>

#include <climits>
#include <memory>

#include "tests/refusal.h"

namespace {

using studystats::test::invalid;
using studystats::test::refusal;
using Ints = std::vector<std::int32_t>;
using Reals = std::vector<double>;
using Texts = std::vector<std::string>;
using NameSet = kel::set<std::string, std::less<std::string>, kel::pool_allocator<std::string, 1>>;

Reals* const kNoReals = nullptr;
Texts* const kNoTexts = nullptr;

Reals flat(const StatsDataArray& table) {
  Reals out{99};
  table.GetDataColumnMajor(&out);
  return out;
}

Texts flat(const CompleteStringArray& table) {
  Texts out{"old"};
  table.GetDataColumnMajor(&out);
  return out;
}

TEST(IncompleteTable, HoldsColumnsOfTheirOwnLengths) {
  IncompleteDataArray table(3);
  EXPECT_EQ(table.ColumnCount(), 3);
  EXPECT_EQ(flat(table), Reals{});
  Reals first{1, 2}, none, last{3}, out{99};
  table.SetColumnData(0, &first);
  table.SetColumnData(2, &last);
  EXPECT_EQ(flat(table), (Reals{1, 2, 3}));
  table.GetDataColumnMajor(Ints{2, 0, 1, 2}, &out);
  EXPECT_EQ(out, (Reals{3, 1, 2, 3}));
  table.GetDataColumnMajor(Ints{}, &out);
  EXPECT_EQ(out, Reals{});
  out = {99};
  table.GetColumnData(1, &out);
  EXPECT_EQ(out, Reals{});

  Reals longer{7, 8, 9};
  table.SetColumnData(0, &none);
  table.SetColumnData(1, &longer);
  EXPECT_EQ(flat(table), (Reals{7, 8, 9, 3}));
  longer[0] = -1;  // the table has its own copy
  table.GetColumnData(1, &out);
  EXPECT_EQ(out, (Reals{7, 8, 9}));
  EXPECT_EQ(flat(IncompleteDataArray(0)), Reals{});
}

TEST(IncompleteTable, CopiesAreDeep) {
  IncompleteDataArray first(2);
  Reals values{1, 2}, other{5};
  std::string heading = "h";
  first.SetColumnData(1, &values);
  first.SetColumnHeading(1, heading);
  const std::unique_ptr<StatsDataArray> second = std::make_unique<IncompleteDataArray>(first);
  second->SetColumnData(1, &other);
  EXPECT_EQ(flat(first), values);
  EXPECT_EQ(flat(*second), other);
  EXPECT_EQ(second->GetColumnHeading(1) + second->GetColumnFormula(0), "h");
}

TEST(IncompleteTable, RefusesACallersErrorAndChangesNothing) {
  IncompleteDataArray table(2);
  Reals values{1, 2}, out{7};
  table.SetColumnData(0, &values);
  for (const std::int32_t bad : {-1, 2, INT_MAX, INT_MIN}) {
    EXPECT_EQ(refusal([&] { table.GetColumnData(bad, &out); }), invalid("GetColumnData"));
    EXPECT_EQ(refusal([&] { table.SetColumnData(bad, &out); }), invalid("SetColumnData"));
    EXPECT_EQ(refusal([&] { table.GetDataColumnMajor(Ints{0, bad}, &out); }), invalid("GetDataColumnMajor"));
  }
  EXPECT_EQ(refusal([&] { table.GetColumnData(0, kNoReals); }), invalid("GetColumnData"));
  EXPECT_EQ(refusal([&] { table.SetColumnData(0, kNoReals); }), invalid("SetColumnData"));
  EXPECT_EQ(refusal([&] { table.GetDataColumnMajor(kNoReals); }), invalid("GetDataColumnMajor"));
  EXPECT_EQ(refusal([&] { table.GetDataColumnMajor(Ints{}, kNoReals); }), invalid("GetDataColumnMajor"));
  for (const std::int32_t bad : {-1, INT_MIN})
    EXPECT_EQ(refusal([&] { IncompleteDataArray{bad}; }), invalid("IncompleteDataArray"));
  EXPECT_EQ(flat(table), values);
  EXPECT_EQ(out, Reals{7});
}

TEST(TextTable, KeepsTheCellsThatAListDoesNotReach) {
  CompleteStringArray table(3, 2);
  EXPECT_EQ(table.RowCount() * 10 + table.ColumnCount(), 32);
  EXPECT_EQ(flat(table), Texts(6));
  Texts whole{"a", "b", "c"}, one{"x"}, none;
  table.SetColumnData(1, &whole);
  table.SetColumnData(1, &one);
  table.SetColumnData(1, &none);
  EXPECT_EQ(flat(table), (Texts{"", "", "", "x", "b", "c"}));
  EXPECT_EQ(one, Texts{"x"});

  const CompleteStringArray noColumns(4, 0), noRows(0, 2);
  EXPECT_EQ(noColumns.RowCount() * 10 + noColumns.ColumnCount(), 0);
  EXPECT_EQ(noRows.RowCount() * 10 + noRows.ColumnCount(), 2);
  EXPECT_EQ(flat(noColumns), Texts{});
  EXPECT_EQ(flat(noRows), Texts{});
}

TEST(TextTable, DoesNothingWhenAskedForNumbers) {
  CompleteStringArray table(2, 2);
  Texts text{"a", "b"};
  table.SetColumnData(0, &text);
  StatsDataArray& base = table;
  Reals numbers{1, 2, 3};
  for (const std::int32_t column : {0, -1, INT_MAX})
    for (Reals* list : {&numbers, kNoReals}) {
      base.GetColumnData(column, list);
      base.SetColumnData(column, list);
      base.GetDataColumnMajor(Ints{column}, list);
      base.GetDataColumnMajor(list);
    }
  EXPECT_EQ(numbers, (Reals{1, 2, 3}));
  EXPECT_EQ(flat(table), (Texts{"a", "b", "", ""}));
}

TEST(TextTable, CopiesAreDeepAndCarryTheRowNames) {
  CompleteStringArray first(1, 1);
  Texts text{"a"}, rows{"b", "a", "b"}, out{"z"}, other{"x"};
  first.SetColumnData(0, &text);
  first.SetRowsUsed(&rows);
  CompleteStringArray second = first;
  second.SetColumnData(0, &other);
  second.SetRowsUsed(&other);
  EXPECT_EQ(flat(first), text);
  first.GetRowsUsed(&out);
  EXPECT_EQ(out, rows);
  NameSet set{"z"};
  first.GetRowsUsed(&set);
  EXPECT_EQ(Texts(set.begin(), set.end()), (Texts{"a", "b"}));
  first = std::move(second);
  first.GetRowsUsed(&out);
  EXPECT_EQ(out, other);
  EXPECT_EQ(flat(first), other);
}

TEST(TextTable, RefusesACallersErrorAndChangesNothing) {
  CompleteStringArray table(2, 1);
  Texts text{"a", "b"}, tooLong{"x", "y", "z"};
  table.SetColumnData(0, &text);
  for (const std::int32_t bad : {-1, 1, INT_MAX, INT_MIN})
    EXPECT_EQ(refusal([&] { table.SetColumnData(bad, &text); }), invalid("SetColumnData"));
  EXPECT_EQ(refusal([&] { table.SetColumnData(0, &tooLong); }), invalid("SetColumnData"));
  EXPECT_EQ(refusal([&] { table.SetColumnData(0, kNoTexts); }), invalid("SetColumnData"));
  EXPECT_EQ(refusal([&] { table.GetDataColumnMajor(kNoTexts); }), invalid("GetDataColumnMajor"));
  EXPECT_EQ(refusal([&] { table.SetRowsUsed(kNoTexts); }), invalid("SetRowsUsed"));
  EXPECT_EQ(refusal([&] { table.GetRowsUsed(kNoTexts); }), invalid("GetRowsUsed"));
  EXPECT_EQ(refusal([&] { table.GetRowsUsed(static_cast<NameSet*>(nullptr)); }), invalid("GetRowsUsed"));
  EXPECT_EQ(refusal([] { CompleteStringArray(-1, INT_MAX); }), invalid("CompleteStringArray"));
  EXPECT_EQ(refusal([] { CompleteStringArray(INT_MAX, -1); }), invalid("CompleteStringArray"));
  EXPECT_EQ(flat(table), text);
}

}  // namespace
