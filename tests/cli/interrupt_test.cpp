// Ctrl-C and its like at every stage: status 130, one sentence, nothing written.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fcntl.h>
#include <csignal>
#include <random>

#include "tests/cli/child.h"

namespace studystats::cli::test {
namespace {

constexpr char kStopped[] = "stopped: nothing was written.\n";

void expectStopped(Child& child, const Folder& folder, const std::vector<std::string>& before) {
  EXPECT_EQ(child.wait(), 130) << child.err();
  EXPECT_EQ(child.out(), "");
  EXPECT_TRUE(child.err().ends_with(kStopped)) << child.err();
  EXPECT_EQ(folder.files(), before);
}

TEST(Interrupt, EndsAReadFromASilentPipe) {
  const Folder folder;
  for (const int signal : {SIGINT, SIGTERM}) {
    Child child({"pca", "-", "--json", "a.json"}, {.input = "a,b\n1,2\n2,4\n3,5\n", .keepInput = true});
    child.waitUntilItCatches(signal);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));  // so that it waits in its read; true without, too
    child.send(signal);
    expectStopped(child, folder, {});
  }
}

TEST(Interrupt, EndsAReadFromAPipeThatNeverEnds) {
  const Folder folder;
  Child child({"describe", "-", "--json", "a.json"}, {.input = "a,b\n", .keepInput = true});
  child.waitUntilItCatches(SIGINT);
  std::string rows;
  for (int i = 0; i < 20000; ++i) rows += std::to_string(i) + ",2.5\n";
  for (int i = 0; i < 20; ++i) child.feed(rows);
  child.send(SIGINT);
  for (int i = 0; i < 200; ++i) child.feed(rows);  // returns at once when nobody reads any more
  expectStopped(child, folder, {});
}

// Wide enough that the analysis takes a while after its first report, and the texts of its results after the last.
TEST(Interrupt, EndsAnAnalysisAndHoldsBackItsFiles) {
  const Folder folder;
#ifdef __SANITIZE_ADDRESS__
  constexpr int kColumns = 150, kRows = 160;  // everything is slower then
#else
  constexpr int kColumns = 400, kRows = 420;
#endif
  std::mt19937 draw(1);
  std::string text;
  for (int j = 0; j < kColumns; ++j) text += (j > 0 ? ",x" : "x") + std::to_string(j);
  for (int i = 0; i < kRows; ++i)
    for (int j = 0; j < kColumns; ++j) text += (j > 0 ? ',' : '\n') + std::to_string(draw() % 100000);
  writeText("wide.csv", text + '\n');
  for (const char* moment : {"\"stage\": \"analysis\"", "\"percent\": 100.0"}) {
    Child child({"pca", "wide.csv", "--components", std::to_string(kColumns), "--json", "a.json", "--tables", "tables",
                 "--progress", "json"});
    ASSERT_TRUE(child.waitForError(moment)) << child.err();
    child.send(SIGINT);
    expectStopped(child, folder, {"wide.csv"});
  }
}

// A list of names is read without a look at the signal, so that the first one changes nothing.
TEST(Interrupt, ASecondOneEndsAtOnce) {
  const Folder folder;
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  const int writer = open("pipe", O_RDWR);  // the pipe has a writer that says nothing
  Child child({"pca", "table.csv", "--columns", "@pipe"});
  child.waitUntilItCatches(SIGINT);
  for (int i = 0; i < 2; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    child.send(SIGINT);
  }
  expectStopped(child, folder, {"pipe"});
  close(writer);
}

}  // namespace
}  // namespace studystats::cli::test
