// Command lines: the exit status, and what stands on standard output and standard error.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/cli/child.h"

namespace studystats::cli::test {
namespace {

struct Line {
  Arguments arguments;
  int status;
  std::vector<std::string> out;  // fragments; none: standard output stays empty
  std::vector<std::string> err;  // fragments; none: standard error stays empty
};

void PrintTo(const Line& line, std::ostream* out) {
  for (const std::string& argument : line.arguments) *out << ' ' << argument.substr(0, 80);
}

void expectLines(const std::vector<Line>& lines) {
  for (const Line& line : lines) {
    const Outcome outcome = run(line.arguments);
    const std::string label = testing::PrintToString(line);
    EXPECT_EQ(outcome.status, line.status) << label << '\n' << outcome.err;
    for (const std::string& fragment : line.out)
      EXPECT_NE(outcome.out.find(fragment), std::string::npos)
          << label << "\nwants " << fragment << "\nin " << outcome.out;
    for (const std::string& fragment : line.err)
      EXPECT_NE(outcome.err.find(fragment), std::string::npos)
          << label << "\nwants " << fragment << "\nin " << outcome.err;
    EXPECT_TRUE(!line.out.empty() || outcome.out.empty()) << label << '\n' << outcome.out;
    EXPECT_TRUE(!line.err.empty() || outcome.err.empty()) << label << '\n' << outcome.err;
  }
}

TEST(Command, SaysWhatItIs) {
  expectLines({
      {{}, 2, {}, {"usage: studystats COMMAND TABLE", "pca TABLE", "--help"}},
      {{"--help"}, 0, {"describe TABLE", "Examples", "Exit status"}, {}},
      {{"-h"}, 0, {"usage: studystats"}, {}},
      {{"--version"}, 0, {"studystats 0.", "report pages: "}, {}},
      {{"pca", "--help"}, 0, {"usage: studystats pca TABLE", "--components K", "[default autoscale]"}, {}},
      {{"pca", "--help", "--nosuch"}, 0, {"usage: studystats pca"}, {}},
      {{"describe", "-h"}, 0, {"usage: studystats describe TABLE"}, {}},
      {{"--man"}, 0, {".TH STUDYSTATS 1"}, {}},
      {{"pac"}, 2, {}, {"studystats: there is no command \"pac\". Did you mean \"pca\"?"}},
      {{"--verison"}, 2, {}, {"no option \"--verison\". Did you mean \"--version\"?"}},
      {{"--quiet", "pca", "t.csv"}, 2, {}, {"--quiet goes after the command"}},
      {{"completions", "tcsh"}, 2, {}, {"Use bash, zsh or fish."}},
  });
}

TEST(Command, RefusesBadOptionsWithTheNearestName) {
  const Folder folder;
  writeFlowers("f.csv");
  writeText("binary.txt", std::string("a\0b", 3));
  const std::string huge(100000, 'x');
  expectLines({
      {{"pca"}, 2, {}, {"pca needs a table: studystats pca TABLE"}},
      {{"pca", ""}, 2, {}, {"pca needs a file name"}},
      {{"pca", "f.csv", "g.csv"}, 2, {}, {"\"g.csv\" is one too many"}},
      {{"pca", huge, huge}, 2, {}, {"xxx ... xxx"}},
      {{"pca", "f.csv", "--" + huge}, 2, {}, {"pca has no option \"--xxx"}},
      {{"pca", "f.csv", "--\x1b[31m\xff"}, 2, {}, {R"("--\x1b[31m\xff")"}},
      {{"pca", "f.csv", "--colums", "a"}, 2, {}, {"pca has no option \"--colums\". Did you mean --columns?"}},
      {{"pca", "f.csv", "-x"}, 2, {}, {"pca has no option \"-x\""}},
      {{"describe", "f.csv", "--scale", "none"},
       2,
       {},
       {"describe has no option --scale; it belongs to pca, mlr, pls, da or cluster."}},
      {{"pca", "f.csv", "--columns"}, 2, {}, {"--columns needs a value: --columns LIST."}},
      {{"pca", "f.csv", "--columns", "--all"}, 2, {}, {"--columns needs a value"}},
      {{"pca", "--columns=", "f.csv"}, 2, {}, {"--columns needs a value"}},
      {{"pca", "f.csv", "--columns", ""}, 2, {}, {"--columns needs a value"}},
      {{"pca", "f.csv", "--columns", ","}, 2, {}, {"--columns \",\" names nothing."}},
      {{"pca", "f.csv", "--columns", "\"a"}, 2, {}, {"quotation mark", "never closed"}},
      {{"pca", "f.csv", "--columns", "@no.txt"}, 2, {}, {"list of names \"no.txt\" cannot be opened"}},
      {{"pca", "f.csv", "--columns", "@binary.txt"}, 2, {}, {"is not a text file"}},
      {{"pca", "f.csv", "--columns", "@."}, 2, {}, {"list of names \".\""}},
      {{"pca", "f.csv", "--all=yes"}, 2, {}, {"--all takes no value."}},
      {{"pca", "f.csv", "--scale", "none", "--scale=range"}, 2, {}, {"given twice: \"none\", then \"range\""}},
      {{"pca", "f.csv", "--scale", "autoscal"}, 2, {}, {"Did you mean \"autoscale\"?"}},
      {{"pca", "f.csv", "--scale", "zzz"}, 2, {}, {"Use autoscale, pareto, range, centre or none."}},
      {{"pca", "f.csv", "--missing", "fill=medain"}, 2, {}, {"Did you mean \"fill=median\"?"}},
      {{"pca", "f.csv", "--missing", "fill=V"}, 2, {}, {"wants a number for V"}},
      {{"pca", "f.csv", "--transform", "a"}, 2, {}, {"not of the form NAME=KIND"}},
      {{"pca", "f.csv", "--transform", "a=logten"}, 2, {}, {"--transform \"logten\" is not known"}},
      {{"pca", "f.csv", "--transform", "a=ln+x"}, 2, {}, {"the shift \"+x\""}},
      {{"pca", "f.csv", "--derive", "square"}, 2, {}, {"Did you mean \"squares\"?"}},
      {{"pca", "f.csv", "--test-rows", "0"}, 2, {}, {"rows are counted from 1"}},
      {{"pca", "f.csv", "--test-rows", "9-3"}, 2, {}, {"runs backwards"}},
      {{"pca", "f.csv", "--test-rows", "3-x"}, 2, {}, {"\"3-x\" is neither a row number nor a range"}},
      {{"pca", "f.csv", "--test-rows", "12-13"}, 2, {}, {"f.csv has 12 rows, there is no row 13."}},
      {{"pca", "f.csv", "--test-rows", "1", "--test", "f.csv"}, 2, {}, {"--test and --test-rows exclude each other"}},
      {{"pca", "-", "--test", "-"}, 2, {}, {"only one table can come from standard input"}},
      {{"pca", "f.csv", "--test-column", "kind"}, 2, {}, {"not of the form NAME=VALUE"}},
      {{"pca", "f.csv", "--level", "95"}, 2, {}, {"\"95\" is not between 0 and 1. Did you mean 0.95?"}},
      {{"pca", "f.csv", "--level", "nan"}, 2, {}, {"not between 0 and 1"}},
      {{"pca", "f.csv", "--digits", "18"}, 2, {}, {"not a whole number from 1 to 17"}},
      {{"pca", "f.csv", "--components", "2.5"}, 2, {}, {"not a whole number from 1 on"}},
      {{"pca", "f.csv", "--components", "99999999999"}, 2, {}, {"not a whole number"}},
      {{"pca", "f.csv", "--delimiter", "zzzz"}, 2, {}, {"Use comma, semicolon, tab or pipe."}},
      {{"pca", "f.csv", "--delimiter", ",", "--decimal", "comma"}, 2, {}, {"cannot both be \",\""}},
      {{"pca", "f.csv", "--progress", "jsn"}, 2, {}, {"Did you mean \"json\"?"}},
      {{"describe", "f.csv", "--class", "knid"}, 2, {}, {"f.csv has no column \"knid\". Did you mean \"kind\"?"}},
      {{"pca", "f.csv", "--id", "nam"}, 2, {}, {"studystats: ", "\"name\""}},
      {{"pca", "f.csv", "--columns", "nosuch*"}, 2, {}, {"studystats: ", "nosuch*"}},
      {{"pca", "missing.csv"}, 2, {}, {"studystats: ", "missing.csv"}},
      {{"pca", "--", "-t.csv"}, 2, {}, {"studystats: ", "-t.csv"}},
  });
}

TEST(Command, PutsEachThingOnItsStream) {
  const Folder folder;
  writeFlowers("f.csv");
  writeText("two.csv", "a,b\n4,2\n2,1\n9,5\n");
  expectLines({
      {{"describe", "f.csv"}, 0, {"f.csv: 12 rows, 5 columns"}, {}},
      {{"describe", "f.csv", "--class", "kind"}, 0, {"(3 numeric, 2 text)"}, {}},
      {{"pca", "f.csv", "--class", "kind"}, 0, {"Principal components of f.csv"}, {"note: 1 of 12 rows"}},
      {{"--", "f.csv"}, 2, {}, {"no option"}},
      {{"pca", "--", "two.csv"}, 0, {"Principal components"}, {}},
      {{"pca", "f.csv", "--missing=drop-columns", "--class=kind", "--quiet", "--all", "--all"}, 0, {}, {}},
      {{"pca", "two.csv", "--explain"}, 0, {"two.csv", "nothing was analysed"}, {}},
  });
  const std::string text = readText("f.csv");
  EXPECT_EQ(run({"pca", "-", "--class", "kind"}, {.input = text}).status, 0);
}

TEST(Strict, TurnsAWarningIntoStatusOne) {
  const Folder folder;
  writeText("copies.csv", "a,b,c\n1,2,4\n2,4,1\n3,6,5\n4,8,2\n");  // b = 2 a
  const Outcome lenient = run({"pca", "copies.csv"}), strict = run({"pca", "copies.csv", "--strict"});
  ASSERT_NE(lenient.err.find("warning: "), std::string::npos) << lenient.err;
  EXPECT_EQ(lenient.status, 0);
  EXPECT_EQ(strict.status, 1);
  EXPECT_EQ(strict.out, lenient.out);
}

TEST(JsonOnStandardOutput, IsAllThatStandsThere) {
  const Folder folder;
  writeFlowers("f.csv");
  for (const char* command : {"describe", "pca"}) {
    const Outcome outcome = run({command, "f.csv", "--json", "-"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const auto json = nlohmann::json::parse(outcome.out, nullptr, false);
    ASSERT_FALSE(json.is_discarded()) << outcome.out;
    EXPECT_TRUE(json.contains("schema"));
  }
}

TEST(Progress, IsABarOnATerminalAndObjectsForPrograms) {
  const Folder folder;
  writeText("two.csv", "a,b\n4,2\n2,1\n9,5\n");
  const Arguments pca{"pca", "two.csv", "--progress"};
  const auto with = [&](const char* when) {
    Arguments all = pca;
    all.emplace_back(when);
    return run(all).err;
  };
  EXPECT_EQ(with("auto"), "") << "no terminal, no bar";
  EXPECT_NE(with("always").find("\rpca  "), std::string::npos);
  EXPECT_EQ(with("always").back(), '\r') << "the bar is erased";
  std::istringstream lines(with("json"));
  double last = -1;
  for (std::string line; std::getline(lines, line);) {
    const auto json = nlohmann::json::parse(line, nullptr, false);
    ASSERT_FALSE(json.is_discarded()) << line;
    EXPECT_EQ(json["command"], "pca");
    EXPECT_GE(json["percent"].get<double>(), last);
    last = json["percent"];
  }
  EXPECT_EQ(last, 100);
}

TEST(Color, FollowsOptionTerminalAndEnvironment) {
  const Folder folder;
  const auto colored = [](const Child::Setup& setup, Arguments more = {}) {
    Arguments all{"pca", "missing.csv"};
    all.insert(all.end(), more.begin(), more.end());
    return run(all, setup).err.find("\x1b[") != std::string::npos;
  };
  const auto terminal = Child::Output::Terminal;
  EXPECT_FALSE(colored({}));
  EXPECT_TRUE(colored({}, {"--color", "always"}));
  if (!terminalsCanBeHad()) GTEST_SKIP() << "no pseudo-terminal is to be had here";
  EXPECT_TRUE(colored({.err = terminal, .environment = {"TERM=xterm", "NO_COLOR="}}));
  EXPECT_FALSE(colored({.err = terminal, .environment = {"TERM=xterm", "NO_COLOR="}}, {"--color=never"}));
  EXPECT_FALSE(colored({.err = terminal, .environment = {"TERM=xterm", "NO_COLOR=1"}}));
  EXPECT_FALSE(colored({.err = terminal, .environment = {"TERM=dumb", "NO_COLOR="}}));
}

}  // namespace
}  // namespace studystats::cli::test
