// studystats cluster as it is typed: what is refused, what is written, and how a run ends.
#include <gtest/gtest.h>

#include <algorithm>

#include <csignal>
#include <nlohmann/json.hpp>

#include "tests/cli/child.h"

namespace studystats::cli::test {
namespace {

std::string example(const std::string& name) { return std::string(STUDYSTATS_SOURCE_DIR) + "/examples/" + name; }

bool holds(const std::string& text, const std::string& fragment) { return text.find(fragment) != std::string::npos; }

TEST(ClusterCommand, RefusesInOneSentence) {
  const std::string iris = example("iris.csv");
  const struct {
    Arguments options;
    const char* fragment;  // of standard error
  } refusals[] = {
      {{"--method", "kmean"}, "--method \"kmean\" is not known. Did you mean \"kmeans\"?"},
      {{"--linkage", "wards"}, "Did you mean \"ward\"?"},
      {{"--distance", "manhattan"}, "--distance \"manhattan\" is not known"},
      {{"--clusters", "1"}, "--clusters \"1\" is not a whole number from 2 on."},
      {{"--clusters", "151"}, "--clusters 151 is more than the 150 rows"},
      {{"--clusters", "3", "--threshold", "2"}, "--clusters and --threshold exclude each other"},
      {{"--method", "kmeans", "--threshold", "2"}, "--threshold belongs to --method hierarchical"},
      {{"--neighbours", "5"}, "--neighbours belongs to --method neighbours"},
      {{"--distance", "tanimoto", "--scale", "autoscale"}, "say --scale none, or leave it out"},
      {{"--distance", "tanimoto", "--scale", "range"}, "say --scale none, or leave it out"},
      {{"--response", "Sepal"}, "has no column \"Sepal\""},
      {{"--level", "0.9"}, "--level"},
  };
  for (const auto& refusal : refusals) {
    Arguments arguments{"cluster", iris};
    arguments.insert(arguments.end(), refusal.options.begin(), refusal.options.end());
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.status, 2) << outcome.err;
    EXPECT_TRUE(holds(unwrapped(outcome.err), refusal.fragment)) << testing::PrintToString(arguments) << '\n'
                                                                 << outcome.err;
    EXPECT_EQ(outcome.out, "");
  }
}

TEST(ClusterCommand, WritesClustersRepresentativesAndTheHistory) {
  const Folder folder;
  const Outcome outcome =
      run({"cluster", example("iris.csv"), "--linkage", "average", "--clusters", "3", "--class", "Species",
           "--test-rows", "7,150", "--json", "c.json", "--tables", "tables", "--output", "rows.csv"});
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_TRUE(holds(outcome.out, "Hierarchical clustering (average linkage, Euclidean) of 148 rows on 4 descriptors"));
  EXPECT_TRUE(holds(outcome.out, "row kept out  cluster  distance  farthest in it"));
  EXPECT_TRUE(holds(outcome.err, "2 rows kept out were placed in the cluster whose mean is nearest"));
  const auto json = nlohmann::json::parse(readText("c.json"));
  EXPECT_EQ(json["schema"], "studystats.cluster/1");
  EXPECT_EQ(json["history"]["merges"].size(), 147u);
  EXPECT_EQ(json["history"]["leaf_order"].size(), 148u);
  EXPECT_EQ(json["rows"].size(), 150u);
  EXPECT_EQ(json["rows"][149]["role"], "predicted");
  EXPECT_TRUE(json["rows"][149]["silhouette"].is_null());
  EXPECT_EQ(json["rows"][0]["cluster"], 2);  // the larger cluster is the first, setosa the second
  const std::vector<std::string> files = folder.files();
  for (const char* name : {"c.json", "rows.csv", "tables/clusters.csv", "tables/differences.csv", "tables/history.csv",
                           "tables/leaf_order.csv", "tables/representatives.csv", "tables/silhouettes.csv"})
    EXPECT_NE(std::find(files.begin(), files.end(), name), files.end()) << name;
  EXPECT_TRUE(readText("rows.csv")
                  .starts_with("name,role,Species,cluster,distance,silhouette,next_cluster\nflower 1,model,setosa,2,"));
  const std::string representatives = readText("tables/representatives.csv");
  for (const auto& cluster : json["clusters"])
    EXPECT_TRUE(holds(representatives, cluster["representative"].get<std::string>() + ','));

  const Outcome uncut = run({"cluster", example("iris.csv"), "--method", "kmeans", "--quiet", "--tables", "uncut"});
  EXPECT_EQ(uncut.status, 0) << uncut.err;
  EXPECT_FALSE(holds(readText("uncut/rows.csv"), "model,1"));
  const Outcome explained = run({"cluster", example("iris.csv"), "--threshold", "2.5", "--explain"});
  EXPECT_TRUE(holds(explained.out, "hierarchical, Ward, Euclidean distances; cut at height 2.5")) << explained.out;
}

TEST(ClusterCommand, WarnsWhereThereAreNoGroups) {
  const Arguments blood{"cluster", example("bloodbrain.csv"), "--exclude", "logBBB", "--clusters", "6"};
  const Outcome outcome = run(blood);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_TRUE(
      outcome.err.starts_with("warning: no clear groups in these descriptors (silhouettes below 0.25 at every "
                              "cut). The clusters\n         are a way to spread a selection"))
      << outcome.err;
  Arguments strict = blood;
  strict.emplace_back("--strict");
  EXPECT_EQ(run(strict).status, 1);
}

TEST(ClusterCommand, ListsNeighboursWithTheirDistances) {
  const Outcome outcome = run({"cluster", example("iris.csv"), "--method", "neighbours", "--neighbours", "5", "--json",
                               "-", "--scale", "none"});
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  const auto rows = nlohmann::json::parse(outcome.out)["rows"];
  ASSERT_EQ(rows.size(), 150u);
  // Flower 1 is 5.1 3.5 1.4 0.2, flower 18 is 5.1 3.5 1.4 0.3.
  EXPECT_EQ(rows[0]["neighbours"][0]["name"], "flower 18");
  EXPECT_NEAR(rows[0]["neighbours"][0]["distance"].get<double>(), 0.1, 1e-15);
}

// Draws are repeatable, and an interrupt ends them at once.
TEST(ClusterCommand, RepeatsItselfWithASeedAndEndsWhenInterrupted) {
  const Folder folder;
  std::string text = "a,b,c\n";
  for (int i = 0; i < 6000; ++i)
    text +=
        std::to_string(i * 7919 % 1009) + ',' + std::to_string(i * 104729 % 2003) + ',' + std::to_string(i % 97) + '\n';
  writeText("t.csv", text);
  const Arguments seeded{"cluster", "t.csv",      "--test-rows", "501-6000", "--method",
                         "kmeans",  "--clusters", "4",           "--seed"};
  const auto ofSeed = [&](const char* seed) {
    Arguments arguments = seeded;
    arguments.insert(arguments.end(), {seed, "--restarts", "1", "--json", "-"});
    return run(arguments).out;
  };
  EXPECT_EQ(ofSeed("11"), ofSeed("11"));
  EXPECT_NE(ofSeed("11"), ofSeed("12"));

  Child child({"cluster", "t.csv", "--method", "kmeans", "--clusters", "40", "--restarts", "100000", "--json", "a.json",
               "--progress", "json"});
  ASSERT_TRUE(child.waitForError("start 1 of 100000")) << child.err();
  child.send(SIGINT);
  EXPECT_EQ(child.wait(), 130);
  EXPECT_TRUE(child.err().ends_with("stopped: nothing was written.\n")) << child.err();
  EXPECT_EQ(folder.files(), std::vector<std::string>{"t.csv"});
}

}  // namespace
}  // namespace studystats::cli::test
