// JSON written as it goes, straight into one text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace studystats {

// Numbers in their shortest exact form, not-a-number and infinity as null, bytes that are no UTF-8 as U+FFFD. Members
// and elements stand on one line, or each on a line of its own where `lines` asks for it.
class JsonWriter {
 public:
  JsonWriter& beginObject(bool lines = false);
  JsonWriter& endObject();
  JsonWriter& beginList(bool lines = false);
  JsonWriter& endList();
  JsonWriter& key(std::string_view name);

  JsonWriter& number(double value);
  JsonWriter& whole(std::int64_t value);
  JsonWriter& flag(bool value);
  JsonWriter& text(std::string_view value);
  JsonWriter& null();
  JsonWriter& raw(std::string_view json);  // as it stands

  std::string take();

 private:
  struct Level {
    bool lines = false;
    bool empty = true;
  };
  JsonWriter& begin(char bracket, bool lines);
  JsonWriter& end(char bracket);
  void place();    // where the next member or element begins
  void newLine();  // indented

  std::string text_;
  std::vector<Level> levels_;
  bool afterKey_ = false;
};

std::string validUtf8(std::string_view text);   // each byte that is no UTF-8 as U+FFFD
std::string jsonString(std::string_view text);  // in quotes
std::string jsonDouble(double value);           // "null" for what is no number

}  // namespace studystats
