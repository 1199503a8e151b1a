// UTF-8 to UTF-16.
#pragma once

#include <string>
#include <string_view>

namespace studystats::core {

// Never fails on any bytes: each ill-formed sequence (its longest beginning that could still have become a character,
// or one byte) gives one U+FFFD, as the Unicode Standard recommends (version 15, section 3.9, "U+FFFD Substitution of
// Maximal Subparts"). A zero byte is a character like any other.
std::u16string utf16(std::string_view text);

}  // namespace studystats::core
