// The analyses as they are typed: what is refused, what is written, and how a run ends.
#include <gtest/gtest.h>

#include <csignal>
#include <nlohmann/json.hpp>
#include <random>

#include "tests/cli/child.h"

namespace studystats::cli::test {
namespace {

std::string example(const std::string& name) { return std::string(STUDYSTATS_SOURCE_DIR) + "/examples/" + name; }

struct Refusal {
  Arguments arguments;
  int status;
  const char* fragment;  // of standard error
};

void expectRefusals(const std::vector<Refusal>& refusals) {
  for (const Refusal& refusal : refusals) {
    const Outcome outcome = run(refusal.arguments);
    const std::string label = testing::PrintToString(refusal.arguments);
    EXPECT_EQ(outcome.status, refusal.status) << label << '\n' << outcome.err;
    EXPECT_NE(unwrapped(outcome.err).find(refusal.fragment), std::string::npos) << label << '\n' << outcome.err;
    EXPECT_EQ(outcome.out, "") << label;
  }
}

bool holds(const std::string& text, const std::string& fragment) { return text.find(fragment) != std::string::npos; }

TEST(MlrCommand, RefusesInOneSentence) {
  const Folder folder;
  writeText("assay.csv",
            "name,a,b,pIC50\nx1,1,2,5.1\nx2,2,1,<4.0\nx3,4,3,6.2\nx4,3,5,4.4\nx5,5,4,5.0\nx6,6,8,5.5\n"
            "x7,7,7,5.2\nx8,8,6,6.1\nx9,9,9,6.3\nx10,11,10,5.9\nx11,10,12,6.6\n");
  const std::string blood = example("bloodbrain.csv");
  expectRefusals({
      {{"mlr", blood}, 2, "--response"},
      {{"mlr", blood, "--response", "logBB"}, 2, "has no column \"logBB\". Did you mean \"logBBB\"?"},
      {{"mlr", example("cement.csv"), "--response", "nosuch"}, 2, "Its columns are mix, x1, x2, x3, x4, y."},
      {{"mlr", "assay.csv", "--response", "pIC50"}, 2, "line 3, column 4, \"<4.0\""},
      {{"mlr", blood, "--response", "logBBB", "--folds", "1"}, 2, "try --folds 7 or --folds loo."},
      {{"mlr", blood, "--response", "logBBB", "--folds", "random:10"}, 2, "--folds"},
      {{"mlr", blood, "--response", "logBBB", "--folds", "random:10:0%"}, 2, "--folds"},
      {{"mlr", blood, "--response", "logBBB", "--folds", "often"},
       2,
       "Use loo, a number of groups, random:N:P% or column:NAME."},
      {{"mlr", blood, "--response", "logBBB", "--select", "al"}, 2, "Did you mean \"all\"?"},
      {{"mlr", blood, "--response", "logBBB", "--f-enter", "four"}, 2, "--f-enter"},
      {{"mlr", blood, "--response", "logBBB", "--corr-limit", "2"}, 2, "--corr-limit"},
  });
  // The column that is text because of one cell is read once the cell's text means missing; its row is predicted.
  const Outcome mended = run({"mlr", "assay.csv", "--response", "pIC50", "--missing-as", "<4.0"});
  EXPECT_EQ(mended.status, 0) << mended.err;
  EXPECT_TRUE(holds(mended.out, "10 rows")) << mended.out;
  EXPECT_TRUE(holds(mended.out, "predicted only")) << mended.out;
}

TEST(MlrCommand, WritesWhatWasAskedFor) {
  const Folder folder;
  const Outcome outcome = run({"mlr", example("cement.csv"), "--response", "y", "--folds", "loo", "--corr-limit", "1",
                               "--json", "-", "--output", "rows.csv", "--tables", "tables"});
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  const auto json = nlohmann::json::parse(outcome.out);
  EXPECT_EQ(json["schema"], "studystats.mlr/1");
  EXPECT_NEAR(json["validation"]["press"].get<double>(), 149.10, 0.005);  // published, leave-one-out
  const std::string rows = readText("rows.csv");
  EXPECT_EQ(std::count(rows.begin(), rows.end(), '\n'), 1 + 13);
  for (const char* name : {"coefficients.csv", "preparation.csv", "rows.csv", "selection_frequency.csv", "steps.csv"})
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "tables" / name)) << name;

  const Outcome random =
      run({"mlr", example("cement.csv"), "--response", "y", "--folds", "random:10:20%", "--seed", "3"});
  EXPECT_EQ(random.status, 0) << random.err;
  EXPECT_TRUE(holds(random.out, "10 random draws of 3 rows")) << random.out;
  EXPECT_EQ(random.out,
            run({"mlr", example("cement.csv"), "--response", "y", "--folds=random:10:20%", "--seed=3"}).out);

  const Outcome explained = run({"mlr", example("bloodbrain.csv"), "--response", "logBBB", "--explain"});
  EXPECT_EQ(explained.status, 0);
  EXPECT_TRUE(holds(explained.out, "7 folds of 29 or 30 rows, dealt in the order of logBBB")) << explained.out;
  EXPECT_TRUE(explained.out.ends_with("nothing was analysed (--explain)\n"));
}

// b equals a but for the last row: the fold without that row cannot be fitted.
TEST(MlrCommand, ShowsNoFigureOfAnAbandonedValidation) {
  const Folder folder;
  writeText("t.csv",
            "x,a,b,y\n3,1,1,2\n1,4,4,7\n4,2,2,1\n1,8,8,8\n5,5,5,2\n9,7,7,8\n2,1,1,1\n6,3,3,8\n5,2,2,2\n3,6,9,8\n");
  const Outcome outcome = run({"mlr", "t.csv", "--response", "y", "--select", "all", "--corr-limit", "1", "--folds",
                               "loo", "--json", "t.json"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_TRUE(holds(outcome.out, "not validated: fold 10 of 10 became singular")) << outcome.out;
  EXPECT_TRUE(holds(outcome.err, "warning: not validated")) << outcome.err;
  const auto validation = nlohmann::json::parse(readText("t.json"))["validation"];
  EXPECT_TRUE(validation["q2"].is_null());
  EXPECT_TRUE(validation["press"].is_null());
  EXPECT_TRUE(holds(validation["reason"].get<std::string>(), "fold 10 of 10"));
  EXPECT_EQ(
      run({"mlr", "t.csv", "--response", "y", "--select", "all", "--corr-limit", "1", "--folds", "loo", "--strict"})
          .status,
      1);
}

TEST(DaCommand, RefusesInOneSentence) {
  const Folder folder;
  const std::string wine = example("wine.csv");
  expectRefusals({
      {{"da", wine}, 2, "--class NAME is missing"},
      {{"da", wine, "--class", "cultiva"}, 2, "has no column \"cultiva\". Did you mean \"cultivar\"?"},
      {{"da", wine, "--class", "cultivar", "--select", "some"}, 2, "--select \"some\" is not known"},
      {{"da", wine, "--class", "cultivar", "--select", "0"}, 2, "--select"},
      {{"da", wine, "--class", "cultivar", "--prior", "0.5,0.5"}, 2, "--prior has 2 values for 3 classes"},
      {{"da", wine, "--class", "cultivar", "--prior", "equl"}, 2, "Did you mean \"equal\"?"},
      {{"da", wine, "--class", "cultivar", "--class-order", "class_9"}, 2, "has no class \"class_9\""},
      {{"da", wine, "--class", "cultivar", "--folds", "1"}, 2, "--folds 1"},
      {{"da", wine, "--class", "wine"}, 1, "no class with two rows or more"},
  });
}

TEST(DaCommand, CountsTheRowsOfKnownClassAlone) {
  const Folder folder;
  std::string table = readText(example("wine.csv"));
  std::string line, emptied;
  std::istringstream lines(table);
  for (int row = 0; std::getline(lines, line); ++row) {
    const bool empty =
        row == 10 || row == 45 || row == 70 || row == 101 || row == 120 || row == 131 || row == 150 || row == 175;
    const std::size_t at = empty ? line.find("class_") : std::string::npos;
    emptied += (at == std::string::npos ? line : line.erase(at, 7)) + '\n';
  }
  writeText("wines.csv", emptied);
  const Outcome outcome = run(
      {"da", "wines.csv", "--class", "cultivar", "--json", "da.json", "--tables", "tables", "--output", "rows.csv"});
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_TRUE(holds(outcome.out, "170 rows in 3 classes"));
  EXPECT_TRUE(holds(outcome.out, "8 rows have no class: classified only"));
  const auto json = nlohmann::json::parse(readText("da.json"));
  EXPECT_EQ(json["validation"]["confusion"]["total"], 170);
  EXPECT_EQ(json["validation"]["confusion"]["correct"], 164);
  EXPECT_EQ(json["validation"]["all_descriptors"]["correct"], 169);
  EXPECT_TRUE(holds(readText("rows.csv"), "wine 131,predicted,,class_1,class_2,,"));
  EXPECT_TRUE(holds(readText("tables/confusion.csv"), "cross-validated,class_0,class_1,4"));
}

TEST(AnalysisCommands, EndAtTheNextFoldWhenInterrupted) {
  const Folder folder;
  std::mt19937 draw(1);
  std::string text = "kind,y";
  for (int j = 0; j < 80; ++j) text += ",x" + std::to_string(j);
  for (int i = 0; i < 900; ++i) {
    text += (i % 3 == 0 ? "\na," : i % 3 == 1 ? "\nb," : "\nc,") + std::to_string(draw() % 1000);
    for (int j = 0; j < 80; ++j) text += ',' + std::to_string(draw() % 100000);
  }
  writeText("wide.csv", text + '\n');
  for (const Arguments& analysis :
       {Arguments{"mlr", "wide.csv", "--response", "y", "--f-enter", "0.01", "--f-remove", "0.001"},
        Arguments{"da", "wide.csv", "--class", "kind", "--select", "20"}}) {
    Arguments all = analysis;
    for (const char* more : {"--folds", "loo", "--json", "a.json", "--tables", "tables", "--progress", "json"})
      all.emplace_back(more);
    Child child(all);
    ASSERT_TRUE(child.waitForError("fold 1 of 900")) << child.err();
    child.send(SIGINT);
    EXPECT_EQ(child.wait(), 130);
    EXPECT_EQ(child.out(), "");
    EXPECT_TRUE(child.err().ends_with("stopped: nothing was written.\n")) << child.err();
    EXPECT_EQ(folder.files(), std::vector<std::string>{"wide.csv"});
  }
}

}  // namespace
}  // namespace studystats::cli::test
