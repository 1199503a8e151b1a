// One description of a result, written as JSON, CSV and text.
#include "host/json_writer.h"
#include "host/result/write.h"

#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

namespace studystats {
namespace {

TEST(JsonWriter, EscapesWhatJsonCannotHold) {
  const std::string fffd = "\xEF\xBF\xBD";
  const std::pair<std::string, std::string> cases[] = {
      {"plain", "plain"},
      {"a\"b\\c\n\t\r\b\f/", R"(a\"b\\c\n\t\r\b\f/)"},
      {std::string("\x01\x1F\0x", 4), R"(\u0001\u001f\u0000x)"},
      {"\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xF4\x8F\xBF\xBF",
       "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xF4\x8F\xBF\xBF"},
      {"\xE9t\xE9", fffd + "t" + fffd},                 // Latin-1
      {"\xC0\xAF", fffd + fffd},                        // overlong
      {"\xE0\x9F\xBF", fffd + fffd + fffd},             // overlong
      {"\xED\xA0\x80", fffd + fffd + fffd},             // a surrogate
      {"\xF4\x90\x80\x80", fffd + fffd + fffd + fffd},  // above U+10FFFF
      {"x\xE2\x82", "x" + fffd + fffd},                 // cut off
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(jsonString(text), '"' + expected + '"');
    EXPECT_NO_THROW(nlohmann::json::parse(jsonString(text)));
  }
}

TEST(JsonWriter, KeepsNumbersExactAndPutsCommasBetween) {
  JsonWriter json;
  json.beginObject(true).key("a").beginList();
  const double numbers[] = {0.1, 1.0 / 3, 1e22, 5e-324, -1.7976931348623157e308, 3, -0.0};
  for (const double number : numbers) json.number(number);
  json.number(std::numeric_limits<double>::quiet_NaN()).number(-std::numeric_limits<double>::infinity());
  json.endList().key("empty").beginObject(true).endObject().key("b").flag(true).key("c").beginList(true);
  json.beginObject().key("x").null().key("y").whole(-7).endObject().raw("[1,2]").endList().endObject();
  const std::string text = json.take();
  const auto read = nlohmann::json::parse(text);
  for (std::size_t i = 0; i < std::size(numbers); ++i) EXPECT_EQ(read["a"][i].get<double>(), numbers[i]);
  EXPECT_TRUE(read["a"][7].is_null() && read["a"][8].is_null());
  EXPECT_EQ(text.substr(text.find("\n  \"empty\"")),
            "\n  \"empty\": {},\n  \"b\": true,\n  \"c\": [\n    {\"x\": null, \"y\": -7},\n    [1,2]\n  ]\n}");
}

struct Compound {
  std::string name;
  std::optional<double> activity;
  bool active;
  std::vector<double> scores;
};

ResultPart compounds(const std::vector<Compound>& list) {
  const auto of = each(list);
  return listPart("compounds", "", list.size(),
                  {{"name", kText, of(&Compound::name), ""},
                   {"activity_q2", "q²", figures(3), of(&Compound::activity), ""},
                   {"active", kFlag, of(&Compound::active), ""},
                   Field("scores", listOf(figures(2)), of(&Compound::scores), "")
                       .spread({{{"score_1", "t1", figures(2)}, {"score_2", "t2", figures(2)}}}),
                   {"tags", listOf(kText),
                    [](std::size_t) {
                      return std::vector<std::string>{"a", "b"};
                    },
                    ""},
                   {"chosen", outOf(7), [](std::size_t i) { return 5 + i; }, ""},
                   Field(
                       "class", kText, [](std::size_t) { return "none"; }, "")
                       .when(false)});
}

TEST(Parts, SayTheSameInEveryForm) {
  const std::vector<Compound> list{{"x, 1", 0.123456789, true, {1.5, -2}}, {"x2", std::nullopt, false, {}}};
  ResultPart document = objectPart("", "", {{"level", kShare, [](std::size_t) { return 0.95; }, ""}},
                                   {compounds(list), objectPart("cut", "", {})});
  document.parts.back().rows = 0;
  const auto json = nlohmann::json::parse(jsonOf(document));
  EXPECT_EQ(json["compounds"][0],
            nlohmann::json::parse(R"({"name": "x, 1", "activity_q2": 0.123456789, "active": true, "scores": [1.5, -2],
                                      "tags": ["a", "b"], "chosen": 5})"));
  EXPECT_TRUE(json["compounds"][1]["activity_q2"].is_null());
  EXPECT_TRUE(json["cut"].is_null());

  const std::vector<CsvFile> files = csvFiles(document);
  ASSERT_EQ(files.size(), 1u);
  EXPECT_EQ(files[0].name, "compounds.csv");
  EXPECT_EQ(files[0].content,
            "name,activity_q2,active,score_1,score_2,tags,chosen\n"
            "\"x, 1\",0.123456789,yes,1.5,-2,a; b,5\n"
            "x2,,no,,,a; b,6\n");

  EXPECT_EQ(textTable(compounds(list), {"name", "score_2", "activity_q2", "chosen"}, {}),
            "name    t2     q2  chosen\n"
            "x, 1  -2.0  0.123  5 of 7\n"
            "x2       -      -  6 of 7\n");
  EXPECT_EQ(textTable(compounds(list), {"name"}, {}, {1, 0}, 1), "name\nx2\n... 1 more\n");
  EXPECT_THROW(columnOf(compounds(list), "class"), std::logic_error);
}

}  // namespace
}  // namespace studystats
