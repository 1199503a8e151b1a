// The HTML file: names cannot break out of it, it holds what the page holds, and it is the same whenever it is made.
#include "tests/report/pages.h"

#include <nlohmann/json.hpp>

#include <cstdlib>

namespace studystats::test {
namespace {

using Json = nlohmann::json;

std::size_t count(const std::string& text, const std::string& part) {
  std::size_t n = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
  return n;
}

const std::string kNasty = "</script><script>alert(1)</script>\"'&<b>--> {{data}} ]]> \xE2\x80\xA8 \xFF";

// A page with the text in every place that shows one.
ReportPage pageWith(const std::string& text) {
  ReportPage page;
  page.title = page.subtitle = page.answer = page.banner = text;
  page.frame = {{"", text, "cross-validated"}, {{text, text, text}}};
  page.remarks = {{{Severity::Warning, "w", text, {}}, "f"}, {{Severity::Note, "n", text, {}}, "f"}};
  page.data = {{.name = "d", .columns = {{.name = "x", .kind = ColumnKind::Text, .texts = {text}}}}};
  page.figures = {{"f", text, text, text, R"({"data": {"name": "d"}, "mark": "point"})"}};
  page.tables = {{"t", text, text, "d", {{"x", text}}}};
  page.card = page.reading = {{text, text}};
  return page;
}

Json dataOf(const std::string& html) {
  const std::string open = "id=\"page-data\">";
  const std::size_t from = html.find(open) + open.size();
  return Json::parse(html.substr(from, html.find("</script>", from) - from));
}

TEST(Html, KeepsTextFromBecomingMarkup) {
  const std::string tame = reportHtml(pageWith("tame"), {}), nasty = reportHtml(pageWith(kNasty), {});
  for (const char* tag : {"<script", "</script", "<b>", "<!--", "-->"})
    EXPECT_EQ(count(nasty, tag), count(tame, tag)) << tag;
  EXPECT_EQ(nasty.find("alert(1)<"), std::string::npos);
  EXPECT_EQ(nasty.find('\xFF'), std::string::npos) << "no UTF-8";
  EXPECT_EQ(count(nasty, "\xE2\x80\xA8"), count(nasty, "{{data}} ]]&gt; \xE2\x80\xA8"))
      << "a line separator within a script";
  const Json data = dataOf(nasty);
  EXPECT_EQ(data["figures"][0]["title"], data["data"][0]["columns"][0]["values"][0]);
  EXPECT_TRUE(
      data["figures"][0]["title"].get<std::string>().starts_with("</script><script>alert(1)</script>\"'&<b>-->"));
}

TEST(Html, CarriesScriptsThatSpeakOfTheEndOfScripts) {
  const std::string html =
      reportHtml(pageWith("tame"),
                 {.vega = "var a = \"</script>\";", .vegaLite = "b", .vegaEmbed = "c", .notices = "one -- two -->"});
  EXPECT_NE(html.find("var a = \"<\\/script>\";"), std::string::npos);
  EXPECT_NE(html.find("<script>b</script>"), std::string::npos);
  EXPECT_EQ(count(html, "-->"), 1u) << "the end of the comment with the licences";
}

// Nothing that a browser would fetch: the only addresses are names of schemas and the like within scripts.
TEST(Html, RefersToNoOtherFile) {
  for (const auto& [what, page] : pagesOfEveryAnalysis()) {
    const std::string html = reportHtml(page, {});
    for (const char* reference : {"src=", "href=\"http", "url(", "@import", "<link", "<iframe"})
      EXPECT_EQ(html.find(reference), std::string::npos) << what << ": " << reference;
    EXPECT_NE(html.find("default-src 'none'"), std::string::npos);
    EXPECT_NE(html.find("<html lang=\"en\">"), std::string::npos);
  }
}

TEST(Html, IsTheSameForTheSameInputAndHoldsTheDateOnce) {
  const Table table = example("bloodbrain.csv");
  const auto html = [&](const std::string& date) {
    const TableView view(table);
    return reportHtml(reportPage(regress(table, {.response = "logBBB", .maxSteps = 5}),
                                 {.command = "studystats mlr", .digest = "abc", .date = date, .table = &view}),
                      {});
  };
  EXPECT_EQ(html("2026-03-09"), html("2026-03-09"));
  EXPECT_EQ(count(html("2026-03-09"), "2026-03-09"), 1u);
  std::string other = html("1999-12-31");
  other.replace(other.find("1999-12-31"), 10, "2026-03-09");
  EXPECT_EQ(other, html("2026-03-09"));
}

TEST(Html, TakesItsDateFromTheEnvironment) {
  // 1234567890 seconds: 13 February 2009.
  const std::pair<const char*, const char*> cases[] = {{"0", "1970-01-01"}, {"1234567890", "2009-02-13"}};
  for (const auto& [epoch, date] : cases) {
    setenv("SOURCE_DATE_EPOCH", epoch, 1);
    EXPECT_EQ(reportDate(), date);
  }
  for (const char* epoch : {"", "1e5", "12 "}) {
    setenv("SOURCE_DATE_EPOCH", epoch, 1);
    EXPECT_GT(reportDate(), "2020-01-01") << epoch;
  }
  unsetenv("SOURCE_DATE_EPOCH");
}

}  // namespace
}  // namespace studystats::test
