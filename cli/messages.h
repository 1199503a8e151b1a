// Sentences for people: how names are quoted, lines wrapped and the nearest name is found.
#pragma once

#include <studystats/host.h>

#include <string>
#include <string_view>
#include <vector>

namespace studystats::cli {

constexpr std::size_t kLineWidth = 100;

// Text that a terminal shows as it is: control characters but the line end, and bytes that are no UTF-8, become \x1b.
std::string printable(std::string_view text);

// What the user typed, in quotation marks, printable, and cut in the middle when it is long.
std::string inQuotes(std::string_view typed);

// `label` and `text` broken at blanks to kLineWidth columns. Later lines, also those after a line end of the text, are
// indented as far as the label is long. Ends with a line end.
std::string hanging(std::string_view label, std::string_view text);

// The candidate nearest to `typed` by edit distance, letters compared without case; one that begins with `typed` is as
// good as one letter off. Empty when none is near.
std::string nearest(std::string_view typed, const std::vector<std::string>& candidates);

// " Did you mean "x"?", or " Use a, b or c." when nothing is near and the list is short.
std::string suggestionFor(std::string_view typed, const std::vector<std::string>& candidates);

// "a, b or c"
std::string anyOf(const std::vector<std::string>& names);

// The one way in which a value of an option is refused.
[[noreturn]] void refuse(std::string_view option, const std::string& sentence, std::string suggestion = {});

}  // namespace studystats::cli
