#include "host/json_writer.h"

#include "host/text.h"

#include <fmt/format.h>

#include <cmath>
#include <utility>

namespace studystats {
namespace {

unsigned byteAt(std::string_view text, std::size_t i) {
  return i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
}

// How many bytes the character at `i` takes, 0 where none begins. RFC 3629: no overlong forms, no surrogates, nothing
// above U+10FFFF.
std::size_t lengthOfCharacter(std::string_view text, std::size_t i) {
  const unsigned first = byteAt(text, i), second = byteAt(text, i + 1);
  if (first < 0x80) return 1;
  const std::size_t length = first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 0;
  for (std::size_t k = 1; k < length; ++k)
    if ((byteAt(text, i + k) & 0xC0) != 0x80) return 0;
  const bool outside = (first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F) ||
                       (first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F);
  return outside ? 0 : length;
}

void appendEscaped(std::string& out, char c) {
  constexpr std::string_view kPlain = "\"\\\b\f\n\r\t", kLetters = "\"\\bfnrt";
  const std::size_t at = kPlain.find(c);
  if (at != std::string_view::npos)
    out.append({'\\', kLetters[at]});
  else if (static_cast<unsigned char>(c) < 0x20)
    out += fmt::format("\\u{:04x}", static_cast<unsigned>(c));
  else
    out += c;
}

}  // namespace

std::string validUtf8(std::string_view text) {
  std::string valid;
  valid.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = lengthOfCharacter(text, i);
    valid += length == 0 ? "\xEF\xBF\xBD" : text.substr(i, length);
    i += length == 0 ? 1 : length;
  }
  return valid;
}

std::string jsonString(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : validUtf8(text)) appendEscaped(quoted, c);
  return quoted + '"';
}

std::string jsonDouble(double value) { return std::isfinite(value) ? exact(value) : "null"; }

JsonWriter& JsonWriter::beginObject(bool lines) { return begin('{', lines); }
JsonWriter& JsonWriter::endObject() { return end('}'); }
JsonWriter& JsonWriter::beginList(bool lines) { return begin('[', lines); }
JsonWriter& JsonWriter::endList() { return end(']'); }

JsonWriter& JsonWriter::key(std::string_view name) {
  place();
  text_ += jsonString(name) + ": ";
  afterKey_ = true;
  return *this;
}

JsonWriter& JsonWriter::number(double value) { return raw(jsonDouble(value)); }
JsonWriter& JsonWriter::whole(std::int64_t value) { return raw(std::to_string(value)); }
JsonWriter& JsonWriter::flag(bool value) { return raw(value ? "true" : "false"); }
JsonWriter& JsonWriter::text(std::string_view value) { return raw(jsonString(value)); }
JsonWriter& JsonWriter::null() { return raw("null"); }

JsonWriter& JsonWriter::raw(std::string_view json) {
  place();
  text_ += json;
  return *this;
}

std::string JsonWriter::take() { return std::move(text_); }

JsonWriter& JsonWriter::begin(char bracket, bool lines) {
  place();
  text_ += bracket;
  levels_.push_back({lines, true});
  return *this;
}

JsonWriter& JsonWriter::end(char bracket) {
  const Level level = levels_.back();
  levels_.pop_back();
  if (level.lines && !level.empty) newLine();
  text_ += bracket;
  return *this;
}

void JsonWriter::place() {
  if (std::exchange(afterKey_, false) || levels_.empty()) return;
  Level& level = levels_.back();
  if (!std::exchange(level.empty, false)) text_ += level.lines ? "," : ", ";
  if (level.lines) newLine();
}

void JsonWriter::newLine() {
  text_ += '\n';
  text_.append(2 * levels_.size(), ' ');
}

}  // namespace studystats
