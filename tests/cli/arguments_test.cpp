// From texts to option structs: what a list, a transform or a rule is read as. What is refused stands in
// command_line_test.cpp.
#include "cli/arguments.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/cli/child.h"

namespace studystats::cli::test {
namespace {

PcaArguments pca(const Arguments& options) {
  Arguments all{"t.csv"};
  all.insert(all.end(), options.begin(), options.end());
  return readPca(CommandLine(*findCommand("pca"), all));
}

TEST(ListOfNames, IsSplitAtCommasUnlessQuotedAndTakesFiles) {
  const Folder folder;
  writeText("names.txt", "\xEF\xBB\xBF x 1 \r\n\r\nlogP, clogP\nvsa_*");
  const struct {
    Arguments options;
    std::vector<std::string> names;
  } cases[] = {
      {{"--columns", "a,b"}, {"a", "b"}},
      {{"--columns", " a , 900  nm "}, {"a", "900  nm"}},
      {{"--columns", R"("a, b",c,"say ""x""","@d")"}, {"a, b", "c", "say \"x\"", "@d"}},
      {{"--columns", "[q,w]"}, {"[q", "w]"}},
      {{"--columns", "a", "--columns=b"}, {"a", "b"}},
      {{"--columns", "a,@names.txt,A..B"}, {"a", "x 1", "logP, clogP", "vsa_*", "A..B"}},
      {{"--columns", "-"}, {"-"}},
  };
  for (const auto& one : cases) EXPECT_EQ(pca(one.options).analysis.data.columns, one.names) << one.options.back();
}

TEST(Transforms, EndTheNameAtTheLastEqualsSign) {
  const struct {
    const char* text;
    Transform expected;
  } cases[] = {
      {"dose=ln", {"dose", Transform::Kind::Ln, 0}},
      {"dose=log", {"dose", Transform::Kind::Ln, 0}},
      {"dose=log10+1.5", {"dose", Transform::Kind::Log10, 1.5}},
      {"dose=sqrt-2e-3", {"dose", Transform::Kind::Sqrt, -0.002}},
      {"a=b=cube", {"a=b", Transform::Kind::Cube, 0}},
      {"x-1=exp", {"x-1", Transform::Kind::Exp, 0}},
      {R"("a=ln"=reciprocal)", {"a=ln", Transform::Kind::Reciprocal, 0}},
  };
  for (const auto& one : cases) {
    const auto transforms = pca({"--transform", one.text}).analysis.data.transforms;
    ASSERT_EQ(transforms.size(), 1u) << one.text;
    EXPECT_EQ(transforms[0].column, one.expected.column) << one.text;
    EXPECT_EQ(transforms[0].kind, one.expected.kind) << one.text;
    EXPECT_EQ(transforms[0].shift, one.expected.shift) << one.text;
  }
}

TEST(PreparationOptions, ReachTheirFields) {
  const PcaArguments one = pca({"--scale",
                                "center",
                                "--missing",
                                "fill=-3.5",
                                "--derive",
                                "cross-products:a,b",
                                "--derive=squares",
                                "--components",
                                "4",
                                "--level",
                                ".9",
                                "--digits",
                                "4",
                                "--delimiter",
                                "tab",
                                "--decimal",
                                ",",
                                "--missing-as",
                                "<4.0,-999",
                                "--response",
                                "y,z"});
  const DataOptions& data = one.analysis.data;
  EXPECT_EQ(data.scaling, Scaling::Centre);
  EXPECT_EQ(data.missing.rule, Missing::Rule::FillValue);
  EXPECT_EQ(data.missing.value, -3.5);
  ASSERT_EQ(data.derivations.size(), 2u);
  EXPECT_EQ(data.derivations[0].kind, Derivation::Kind::CrossProducts);
  EXPECT_EQ(data.derivations[0].columns, (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(data.derivations[1].kind, Derivation::Kind::Squares);
  EXPECT_TRUE(data.derivations[1].columns.empty());
  EXPECT_EQ(one.analysis.components, 4);
  EXPECT_EQ(one.analysis.level, 0.9);
  EXPECT_EQ(one.output.text.digits, 4);
  EXPECT_EQ(one.input.read.delimiter, '\t');
  EXPECT_EQ(one.input.read.decimal, ',');
  EXPECT_EQ(one.input.read.missingAs, (std::vector<std::string>{"<4.0", "-999"}));
  EXPECT_EQ(one.analysis.responses, (std::vector<std::string>{"y", "z"}));
}

TEST(LabelColumns, AreReadAsText) {
  const PcaArguments one = pca({"--id", "nr", "--class", "kind", "--test-column", "set=a=b"});
  std::vector<std::string> asText = one.input.read.asText;
  std::sort(asText.begin(), asText.end());
  EXPECT_EQ(asText, (std::vector<std::string>{"kind", "nr", "set=a"}));
  EXPECT_EQ(one.analysis.data.id, "nr");
  EXPECT_EQ(one.analysis.classColumn, "kind");
  EXPECT_EQ(one.analysis.data.test.value, "b");
  EXPECT_EQ(pca({"--test-column", R"("set"=a=b)"}).analysis.data.test.value, "a=b");
}

TEST(TestRows, AreCountedFromOneAndExpandedOnceEach) {
  Table table;
  table.columns.resize(1);
  table.columns[0].numbers.resize(9);
  const auto ranges = pca({"--test-rows", "2-4, 9", "--test-rows", "3"}).input.testRows;
  EXPECT_EQ(rowsOf("--test-rows", ranges, table), (std::vector<std::size_t>{1, 2, 3, 8}));
  // A range far beyond any table costs nothing before it is refused.
  const auto huge = pca({"--test-rows", "2-18446744073709551615"}).input.testRows;
  EXPECT_THROW(rowsOf("--test-rows", huge, table), BadOptions);
}

}  // namespace
}  // namespace studystats::cli::test
