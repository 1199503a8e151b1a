// Numbers by std::from_chars: the same in every locale, and every double reads back exactly.
#include "host/reading/reader_cells.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace studystats {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

constexpr Cell kMissingCell{CellMeaning::Missing, kNone};
constexpr Cell kTextCell{CellMeaning::Text, kNone};

bool isBlank(char c) { return c == ' ' || c == '\t'; }

// True of nearly every number, and of no text that means missing.
bool opensNumber(char c) { return (c >= '0' && c <= '9') || c == '-'; }

// A number with a decimal point. One leading + is accepted, which from_chars does not know.
Cell readNumber(std::string_view text) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  double value = kNone;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (end != text.data() + text.size() || error == std::errc::invalid_argument) return kTextCell;
  if (error == std::errc::result_out_of_range) return {CellMeaning::OutOfRange, kNone};
  if (!std::isfinite(value)) return {CellMeaning::NotFinite, kNone};
  return {CellMeaning::Number, value};
}

// A number with a decimal comma: a point (of thousands, perhaps) is none.
Cell readNumberWithComma(std::string_view text) {
  const std::size_t comma = text.find(',');
  if (text.find('.') != text.npos) return kTextCell;
  if (comma == text.npos) return readNumber(text);
  std::array<char, 64> copy;
  if (text.size() <= copy.size()) {
    std::memcpy(copy.data(), text.data(), text.size());
    copy[comma] = '.';
    return readNumber({copy.data(), text.size()});
  }
  std::string longCopy(text);
  longCopy[comma] = '.';
  return readNumber(longCopy);
}

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool equalInAnyCase(std::string_view text, std::string_view word) {
  return std::equal(text.begin(), text.end(), word.begin(), word.end(), [](char a, char b) { return lower(a) == b; });
}

}  // namespace

bool CellReader::isMissing(std::string_view text) const {
  constexpr std::array<std::string_view, 6> kWords{"na", "n/a", "nan", "?", ".", "null"};
  return std::any_of(kWords.begin(), kWords.end(), [&](std::string_view word) { return equalInAnyCase(text, word); });
}

Cell CellReader::read(std::string_view text) const {
  if (text.empty()) return kMissingCell;
  for (const std::string& missing : missingAs_)
    if (text == missing) return kMissingCell;
  if (!opensNumber(text[0]) && isMissing(text)) return kMissingCell;
  return decimal_ == '.' ? readNumber(text) : readNumberWithComma(text);
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

std::string quotedCell(std::string_view text) {
  constexpr std::size_t kMost = 40;
  std::size_t size = std::min(text.size(), kMost);
  while (size < text.size() && size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) --size;
  std::string shown(text.substr(0, size));
  std::replace_if(
      shown.begin(), shown.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
  return '"' + shown + (size < text.size() ? "..." : "") + '"';
}

}  // namespace studystats
