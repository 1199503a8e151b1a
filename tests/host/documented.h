// docs/json.md against the JSON of a command: every key that occurs is documented, with its kind and with the
// permission to be null; every key documented has a value somewhere.
#pragma once

#include <map>
#include <set>
#include <string>

namespace studystats::test {

std::string jsonDocumentOnDisk();

class Documented {
 public:
  explicit Documented(const std::string& command);
  void compare(const std::string& json);  // the JSON of one result
  void expectAllSeen() const;             // over all results that were compared

 private:
  struct Key {
    std::string kind;
    bool mayBeNull = false;
  };
  template <class Json>
  void compareAt(const Json& value, const std::string& path);

  std::map<std::string, Key> keys_;
  std::set<std::string> seen_;
};

}  // namespace studystats::test
