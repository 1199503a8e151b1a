#include "frame/utf16.h"

namespace studystats::core {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// What a first byte promises. The bounds of the second byte shut out overlong forms, surrogates and everything above
// U+10FFFF (Unicode Standard, table 3-7).
struct Lead {
  int following;         // -1: no character begins with this byte
  char32_t bits;         // the byte's share of the code point
  unsigned char lowest;  // of the second byte
  unsigned char highest;
};

Lead leadOf(unsigned char byte) {
  if (byte < 0x80) return {0, byte, 0x80, 0xBF};
  if (byte < 0xC2) return {-1, 0, 0, 0};
  if (byte < 0xE0) return {1, byte & 0x1Fu, 0x80, 0xBF};
  if (byte == 0xE0) return {2, 0, 0xA0, 0xBF};
  if (byte == 0xED) return {2, 0xD, 0x80, 0x9F};
  if (byte < 0xF0) return {2, byte & 0xFu, 0x80, 0xBF};
  if (byte == 0xF0) return {3, 0, 0x90, 0xBF};
  if (byte < 0xF4) return {3, byte & 7u, 0x80, 0xBF};
  if (byte == 0xF4) return {3, 4, 0x80, 0x8F};
  return {-1, 0, 0, 0};
}

// The code point that begins at `at`, which moves past it. A byte that does not continue the sequence is left for the
// next character.
char32_t nextCodePoint(std::string_view text, std::size_t& at) {
  Lead lead = leadOf(static_cast<unsigned char>(text[at++]));
  if (lead.following < 0) return kReplacement;
  char32_t point = lead.bits;
  for (int i = 0; i < lead.following; ++i) {
    if (at == text.size()) return kReplacement;
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < lead.lowest || byte > lead.highest) return kReplacement;
    point = (point << 6) | (byte & 0x3Fu);
    lead.lowest = 0x80;
    lead.highest = 0xBF;
    ++at;
  }
  return point;
}

}  // namespace

std::u16string utf16(std::string_view text) {
  std::u16string units;
  units.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const char32_t point = nextCodePoint(text, at);
    if (point < 0x10000) {
      units += static_cast<char16_t>(point);
    } else {
      units += static_cast<char16_t>(0xD7C0 + (point >> 10));
      units += static_cast<char16_t>(0xDC00 + (point & 0x3FF));
    }
  }
  return units;
}

}  // namespace studystats::core
