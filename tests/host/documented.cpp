#include "tests/host/documented.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

namespace studystats::test {
namespace {

using Json = nlohmann::json;

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

// "| `path` | kind | unit | what | null or absent |"
std::vector<std::string> cellsOf(const std::string& line) {
  std::vector<std::string> cells;
  for (std::size_t from = 2, to = 0; (to = line.find(" |", from)) != std::string::npos; from = to + 3)
    cells.push_back(line.substr(from, to - from));
  return cells;
}

}  // namespace

std::string jsonDocumentOnDisk() {
  std::ifstream file(STUDYSTATS_SOURCE_DIR "/docs/json.md", std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

Documented::Documented(const std::string& command) {
  std::istringstream lines(jsonDocumentOnDisk());
  std::string section;
  std::size_t own = 0;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("## ")) section = line.substr(3);
    if (!line.starts_with("| `") || (section != "several commands" && section != command)) continue;
    const std::vector<std::string> cells = cellsOf(line);
    EXPECT_EQ(cells.size(), 5u) << line;
    keys_[cells[0].substr(1, cells[0].size() - 2)] = {cells[1], !cells[4].empty()};
    own += section == command ? 1 : 0;
  }
  EXPECT_GT(own, 5u) << "docs/json.md does not document " << command;
}

void Documented::compare(const std::string& json) { compareAt(Json::parse(json), ""); }

void Documented::expectAllSeen() const {
  for (const auto& [path, key] : keys_) EXPECT_TRUE(seen_.contains(path)) << path << " has a value nowhere";
}

template <class Value>
void Documented::compareAt(const Value& value, const std::string& path) {
  const auto key = keys_.find(path);
  if (key != keys_.end()) {
    if (value.is_null())
      EXPECT_TRUE(key->second.mayBeNull) << path << " is null";
    else
      EXPECT_TRUE(isOf(value, key->second.kind)) << path << " is no " << key->second.kind << ": " << value;
    if (!value.is_null() && !(value.is_array() && value.empty())) seen_.insert(path);
  } else if (value.is_object()) {
    for (const auto& [name, inner] : value.items()) compareAt(inner, path.empty() ? name : path + '.' + name);
  } else if (value.is_array()) {
    for (const Value& record : value) {
      EXPECT_TRUE(record.is_object()) << path << " is not documented";
      compareAt(record, path + "[]");
    }
  } else {
    ADD_FAILURE() << path << " is not documented";
  }
}

}  // namespace studystats::test
