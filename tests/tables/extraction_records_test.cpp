#include <gtest/gtest.h>
#include <studystats/tables.h>

#include <climits>
#include <memory>

#include "tests/refusal.h"

namespace {

using studystats::test::invalid;
using studystats::test::refusal;
using Texts = std::vector<std::string>;
using Input = StatsDataInput;
using Results = StatsDataFactoryResults;

TEST(ExtractionRequest, KeepsWhatItWasGiven) {
  Input input("{grid}", 3, {"a", "b"});
  const std::unique_ptr<Input> copy(input.Copy());
  bool first = true, second = false;
  auto badItems = Input::BadItemBehavior(9);
  auto arrayType = Input::DataArrayType(9);
  auto derivation = Input::DerivationCubic;
  std::int32_t parameter = 9;
  input.GetBehavior(first, second, badItems, arrayType);
  input.GetDerivationType(derivation, parameter);
  EXPECT_TRUE(!first && second && badItems == 0 && arrayType == 0 && derivation == 0 && parameter == 0);
  EXPECT_EQ(input.GetDefaultValue(), 0.0);

  input.SetBehavior(true, false, Input::BadItemBehavior(-7), Input::IncompleteData);
  input.SetDerivationType(Input::DerivationSquares, 12);
  input.SetDefaultValue(2.5);
  input.GetBehavior(first, second, badItems, arrayType);
  input.GetDerivationType(derivation, parameter);
  EXPECT_TRUE(first && !second && badItems == -7 && arrayType == Input::IncompleteData && parameter == 12);
  EXPECT_EQ(input.GetArrayType(), Input::IncompleteData);
  EXPECT_EQ(copy->GetArrayType(), 0);

  Texts names{"old"};
  copy->GetRows(&names);
  EXPECT_EQ(names, Texts{});
  Input("g", 1, {}, {"r", "r"}).GetRows(&names);
  EXPECT_EQ(names, (Texts{"r", "r"}));
  copy->GetColumns(&names);
  EXPECT_EQ(names, (Texts{"a", "b"}));
  EXPECT_EQ(copy->GetGridGUID() + std::to_string(copy->GetSheet()), "{grid}3");
  EXPECT_EQ(refusal([&] { input.GetColumns(nullptr); }), invalid("GetColumns"));
  EXPECT_EQ(refusal([&] { input.GetRows(nullptr); }), invalid("GetRows"));
}

TEST(ExtractionRequest, DerivedColumnsAreCountedByFamilyAndWrapIn32Bits) {
  // Counts by hand; the wrapped ones from the products in arbitrary precision, reduced modulo 2^32 before the division.
  const struct {
    int type;
    std::int32_t n;
    std::string families;  // squares, cubes, cross, square-cross and triple products
    std::int32_t count;
  } kRows[] = {
      {0, 5, "-----", 0},
      {1, 1, "--x--", 0},
      {1, 7, "--x--", 21},
      {2, 7, "s----", 7},
      {3, 3, "s-x--", 6},
      {4, 7, "-c---", 7},
      {5, 4, "scxqt", 30},
      {5, 1, "scxqt", 2},
      {5, 0, "scxqt", 0},
      {5, 3, "scxqt", 16},
      {7, 4, "-----", 0},
      {-1, 4, "-----", 0},
      {1, 46341, "--x--", 1073720970},     // 46340 * 46341 = 2147441940 still fits
      {1, 46342, "--x--", -1073716337},    // 46341 * 46342 = 2147534622 wraps to -2147432674
      {3, INT_MAX, "s-x--", 1073741824},   // (2^31 - 2)(2^31 - 1) wraps to 2 - 2^31; half of it and 2^31 - 1
      {1, INT_MIN, "--x--", -1073741824},  // (-2^31 - 1)(-2^31) wraps to -2^31
      {2, -5, "s----", -5},
  };
  for (const auto& row : kRows) {
    bool s = true, c = true, x = true, q = true, t = true;
    std::int32_t count = -99;
    Input::GetDerivationParameters(Input::DataInputDerivation(row.type), row.n, s, c, x, q, t, count);
    const std::string families{s ? 's' : '-', c ? 'c' : '-', x ? 'x' : '-', q ? 'q' : '-', t ? 't' : '-'};
    EXPECT_EQ(families, row.families) << row.type << ", n = " << row.n;
    EXPECT_EQ(count, row.count) << row.type << ", n = " << row.n;
  }
}

// One list of the record with every way to it.
struct List {
  const char* name;  // of its getter
  void (Results::*addAll)(const Texts&);
  void (Results::*addOne)(std::string);
  void (Results::*get)(Texts*) const;
  std::string (Results::*entry)(std::int32_t);
  std::int32_t (Results::*count)() const;
};

#define LIST(plural) "Get" #plural, &Results::AddTo##plural, &Results::AddTo##plural, &Results::Get##plural
const List kLists[] = {
    {LIST(RowsRequested), nullptr, &Results::NumRowsRequested},
    {LIST(RowsExtracted), nullptr, &Results::NumRowsExtracted},
    {LIST(RowsMissing), nullptr, &Results::NumRowsMissing},
    {LIST(RowsEliminated), nullptr, &Results::NumRowsEliminated},
    {LIST(ColumnsRequested), &Results::GetColumnRequested, &Results::NumColumnsRequested},
    {LIST(ColumnsExtracted), &Results::GetColumnExtracted, &Results::NumColumnsExtracted},
    {LIST(ColumnsMissing), &Results::GetColumnMissing, &Results::NumColumnsMissing},
    {LIST(ColumnsEliminated), &Results::GetColumnEliminated, &Results::NumColumnsEliminated},
    {LIST(ColumnFormulae), &Results::GetColumnFormula, &Results::NumColumnsGenerated},
    {"GetColumnHeadings", &Results::AddToColumnHeadings, nullptr, &Results::GetColumnHeadings,
     &Results::GetColumnHeading, nullptr},
};
#undef LIST

TEST(ExtractionResults, EachListGrowsByItselfKeepsOrderAndRepeatsAndIsGuarded) {
  for (const List& grown : kLists) {
    SCOPED_TRACE(grown.name);
    Results results;
    (results.*grown.addAll)({"b", "a"});
    if (grown.addOne != nullptr)
      (results.*grown.addOne)("b");
    else
      (results.*grown.addAll)({"b"});
    const std::unique_ptr<Results> copy(results.Copy());
    (results.*grown.addAll)({"later"});
    for (const List& list : kLists) {
      Texts names{"old"};
      (copy.get()->*list.get)(&names);
      EXPECT_EQ(names, &list == &grown ? (Texts{"b", "a", "b"}) : Texts{}) << list.name;
      if (list.count == nullptr) continue;
      EXPECT_EQ((copy.get()->*list.count)(), &list == &grown ? 3 : 0) << list.name;
    }
    EXPECT_EQ(refusal([&] { (results.*grown.get)(nullptr); }), invalid(grown.name));
    if (grown.entry == nullptr) continue;
    EXPECT_EQ((results.*grown.entry)(1), "a");
    for (const std::int32_t bad : {-1, 4, INT_MAX, INT_MIN})
      EXPECT_NE(refusal([&] { (results.*grown.entry)(bad); }).find("80070057 Invalid argument to GetColumn"),
                std::string::npos);
  }
}

TEST(ExtractionResults, ScalarsStartAtTheirDefaultsAndAreKept) {
  Results copy;
  EXPECT_EQ(copy.GetSheetUsed(), 1);
  EXPECT_EQ(copy.NumCellsEliminated() + copy.NumCellsDefaulted() + copy.GetDerivationType(), 0);
  Results results;
  results.SetSheetUsed(4);
  results.SetNumCellsEliminated(5);
  results.SetNumCellsDefaulted(6);
  results.SetDerivationType(Input::DerivationCubes);
  results.SetStudyGUID("{study}");
  results.SetComments("none");
  copy = results;
  EXPECT_EQ(copy.GetSheetUsed() * 100 + copy.NumCellsEliminated() * 10 + copy.NumCellsDefaulted(), 456);
  EXPECT_EQ(copy.GetDerivationType(), Input::DerivationCubes);
  EXPECT_EQ(copy.GetStudyGUID() + copy.GetComments(), "{study}none");
}

}  // namespace
