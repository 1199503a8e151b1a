// Output files: all of them whole, or none; never over the input.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>

#include "tests/cli/child.h"

namespace fs = std::filesystem;

namespace studystats::cli::test {
namespace {

bool isJson(const std::string& text) { return !nlohmann::json::parse(text, nullptr, false).is_discarded(); }

TEST(OutputFiles, HoldEverythingThatWasAskedFor) {
  const Folder folder;
  writeFlowers("f.csv");
  writeText("real.json", "old");
  fs::permissions("real.json", fs::perms::owner_read | fs::perms::owner_write);
  fs::create_symlink("real.json", "link.json");
  const Outcome outcome = run({"pca", "f.csv", "--class", "kind", "--test-rows", "1,12", "--json", "link.json",
                               "--tables", "new/tables", "--output", "rows.csv"});
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_TRUE(fs::is_symlink("link.json"));
  EXPECT_TRUE(isJson(readText("real.json")));
  EXPECT_EQ(fs::status("real.json").permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_TRUE(fs::exists("new/tables/loadings.csv"));
  const std::string rows = readText("rows.csv");
  EXPECT_EQ(std::count(rows.begin(), rows.end(), '\n'), 1 + 11) << "heading, 12 rows less one with a missing cell";
  EXPECT_NE(rows.find(",02,"), std::string::npos) << "the class as it is written";
  for (const std::string& name : folder.files()) EXPECT_EQ(name.find("studystats-"), std::string::npos) << name;
}

TEST(OutputFiles, AreNotWrittenWhenOneOfThemCannotBe) {
  const Folder folder;
  writeFlowers("f.csv");
  writeText("file", "");
  fs::create_directories("full/loadings.csv");
  const auto before = folder.files();
  const struct {
    Arguments options;
    const char* fragment;
  } cases[] = {
      {{"--output", "rows.csv", "--json", "no/such.json"}, "there is no folder"},
      {{"--output", "rows.csv", "--json", "full"}, "it is a folder"},
      {{"--output", "rows.csv", "--json", "file/x.json"}, "is no folder"},
      {{"--json", "a.json", "--tables", "file"}, "is no folder"},
      {{"--json", "a.json", "--tables", "file/deeper"}, "is no folder"},
      {{"--json", "a.json", "--output", "rows.csv", "--tables", "full"}, "loadings.csv"},  // found out at the end only
      {{"--json", "a.json", "--output", "./a.json"}, "both name"},
      {{"--output", "-"}, "only --json - writes to standard output"},
  };
  for (const auto& one : cases) {
    Arguments all{"pca", "f.csv", "--class", "kind"};
    all.insert(all.end(), one.options.begin(), one.options.end());
    const Outcome outcome = run(all);
    EXPECT_EQ(outcome.status, 2) << one.options.back();
    EXPECT_EQ(outcome.out, "") << one.options.back();
    EXPECT_NE(outcome.err.find(one.fragment), std::string::npos) << outcome.err;
    EXPECT_EQ(folder.files(), before) << one.options.back();
  }
}

TEST(OutputFiles, NeverReplaceATableThatIsRead) {
  const Folder folder;
  writeFlowers("loadings.csv");
  fs::create_hard_link("loadings.csv", "same");
  writeFlowers("other.csv");
  const std::string before = readText("loadings.csv");
  for (const Arguments& options : std::vector<Arguments>{{"--json", "loadings.csv"},
                                                         {"--json", "./same"},
                                                         {"--tables", "."},
                                                         {"--output", "other.csv", "--test", "other.csv"}}) {
    Arguments all{"pca", "loadings.csv", "--class", "kind"};
    all.insert(all.end(), options.begin(), options.end());
    const Outcome outcome = run(all);
    EXPECT_EQ(outcome.status, 2) << options[1];
    EXPECT_NE(outcome.err.find("would overwrite the table"), std::string::npos) << outcome.err;
  }
  EXPECT_EQ(readText("loadings.csv"), before);
  EXPECT_EQ(folder.files(), (std::vector<std::string>{"loadings.csv", "other.csv", "same"}));
}

TEST(OutputFiles, GoThroughAPipeThatStaysOne) {
  const Folder folder;
  writeFlowers("f.csv");
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  std::string json;
  std::thread reader([&] { json = readText("pipe"); });
  const Outcome outcome = run({"pca", "f.csv", "--class", "kind", "--json", "pipe"});
  if (outcome.status != 0) close(open("pipe", O_WRONLY | O_NONBLOCK));  // lets the reader go
  reader.join();
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_TRUE(isJson(json));
  EXPECT_TRUE(fs::is_fifo("pipe"));
}

TEST(StandardOutput, FullIsAnErrorAndClosedIsQuiet) {
  const Folder folder;
  writeFlowers("f.csv");
  const Arguments pca{"pca", "f.csv", "--class", "kind", "--missing", "drop-columns", "--json", "a.json"};
  const Outcome full = run(pca, {.outFile = "/dev/full"});
  EXPECT_EQ(full.status, 2);
  EXPECT_NE(full.err.find("cannot write to standard output"), std::string::npos) << full.err;
  const Outcome closed = run(pca, {.out = Child::Output::Closed});
  EXPECT_EQ(closed.status, 0);
  EXPECT_EQ(closed.err.find("studystats: "), std::string::npos) << closed.err;
  EXPECT_TRUE(isJson(readText("a.json")));
}

}  // namespace
}  // namespace studystats::cli::test
