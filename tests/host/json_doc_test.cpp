// docs/json.md against the JSON of the commands: every key that occurs is documented, with its kind and with the
// permission to be null; every key documented has a value somewhere.
#include "docs/json_doc.h"

#include <gtest/gtest.h>
#include <studystats/host.h>

#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

namespace studystats {
namespace {

using Json = nlohmann::json;

struct Key {
  std::string kind;
  bool mayBeNull = false;
};

std::string documentText() {
  std::ifstream file(STUDYSTATS_SOURCE_DIR "/docs/json.md", std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The keys of the sections "every command" and `command`: lines "| `path` | kind | unit | what | null |".
std::map<std::string, Key> documentedKeys(const std::string& command) {
  std::map<std::string, Key> keys;
  std::istringstream lines(documentText());
  std::string section;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("## ")) section = line.substr(3);
    if (!line.starts_with("| `") || (section != "every command" && section != command)) continue;
    std::vector<std::string> cells;
    for (std::size_t from = 2, to = 0; (to = line.find(" |", from)) != std::string::npos; from = to + 3)
      cells.push_back(line.substr(from, to - from));
    EXPECT_EQ(cells.size(), 5u) << line;
    keys[cells[0].substr(1, cells[0].size() - 2)] = {cells[1], !cells[4].empty()};
  }
  return keys;
}

bool isOf(const Json& value, const std::string& kind) {
  if (kind.starts_with("list of "))
    return value.is_array() && std::all_of(value.begin(), value.end(),
                                           [&](const Json& one) { return one.is_null() || isOf(one, kind.substr(8)); });
  if (kind == "text") return value.is_string();
  if (kind == "flag") return value.is_boolean();
  if (kind == "whole number") return value.is_number_integer();
  if (kind == "share" || kind == "probability") return value.is_number() && value >= 0 && value <= 1;
  return kind == "number" && value.is_number();
}

class Documented : public testing::Test {
 protected:
  explicit Documented(const std::string& command) : keys_(documentedKeys(command)) { EXPECT_GT(keys_.size(), 40u); }

  void compare(const std::string& json) { compare(Json::parse(json), ""); }

  void expectAllSeen() const {
    for (const auto& [path, key] : keys_) EXPECT_TRUE(seen_.contains(path)) << path << " has a value nowhere";
  }

 private:
  void compare(const Json& value, const std::string& path) {
    const auto key = keys_.find(path);
    if (key != keys_.end()) {
      if (value.is_null())
        EXPECT_TRUE(key->second.mayBeNull) << path << " is null";
      else
        EXPECT_TRUE(isOf(value, key->second.kind)) << path << " is no " << key->second.kind << ": " << value;
      if (!value.is_null() && !(value.is_array() && value.empty())) seen_.insert(path);
    } else if (value.is_object()) {
      for (const auto& [name, inner] : value.items()) compare(inner, path.empty() ? name : path + '.' + name);
    } else if (value.is_array()) {
      for (const Json& record : value) {
        EXPECT_TRUE(record.is_object()) << path;
        compare(record, path + "[]");
      }
    } else {
      ADD_FAILURE() << path << " is not documented";
    }
  }

  const std::map<std::string, Key> keys_;
  std::set<std::string> seen_;
};

Table example(const std::string& name) { return readTable(STUDYSTATS_SOURCE_DIR "/examples/" + name); }

TEST(JsonDocument, IsWrittenFromTheDescriptions) {
  EXPECT_EQ(documentText(), jsonDocument()) << "cmake --build build --target json_doc writes it again";
}

struct MlrDocument : Documented {
  MlrDocument() : Documented("mlr") {}
};

TEST_F(MlrDocument, HoldsWhatIsWritten) {
  const Table blood = example("bloodbrain.csv"), air = example("airquality.csv"), cement = example("cement.csv");
  compare(toJson(regress(blood, {.response = "logBBB", .maxSteps = 12, .data = {.test = {.rows = {3, 5}}}})));
  compare(toJson(regress(air, {.response = "Ozone",
                               .folds = Folds::random({5, 0.2}),
                               .data = {.transforms = {{.column = "Wind"}}, .derivations = {{}}}})));
  compare(toJson(regress(air, {.response = "Ozone", .data = {.missing = {.rule = Missing::Rule::FillMean}}})));
  compare(toJson(regress(cement, {.response = "y", .selection = Selection::All, .folds = Folds::leaveOneOut()})));
  Table twins = cement;  // rows held out leave two columns equal: not validated
  twins.columns.push_back({.name = "x5", .numbers = twins.find("x4")->numbers});
  twins.columns.back().numbers.back() += 1;
  const Regression abandoned =
      regress(twins, {.response = "y", .selection = Selection::All, .corrLimit = 1, .folds = Folds::leaveOneOut()});
  ASSERT_FALSE(abandoned.validation);
  compare(toJson(abandoned));
  expectAllSeen();
}

}  // namespace
}  // namespace studystats
