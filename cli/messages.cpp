#include "cli/messages.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <utility>

namespace studystats::cli {
namespace {

constexpr std::size_t kLongestQuote = 60;      // of what the user typed
constexpr std::size_t kLongestCompared = 100;  // longer words have no near name worth the time

bool continues(char c) { return (static_cast<unsigned char>(c) & 0xC0u) == 0x80u; }

// Length of the UTF-8 sequence at the front of `text` when it is whole, shortest and no control character; else 0.
std::size_t printableLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned first = byte(0);
  if (first < 0x80) return (first >= 0x20 && first != 0x7F) || first == '\n' ? 1 : 0;
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i)
    if (!continues(text[i])) return 0;
  const unsigned second = byte(1);
  const bool control = first == 0xC2 && second < 0xA0;
  const bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
  const bool outside = (first == 0xED && second >= 0xA0) || (first == 0xF4 && second >= 0x90);
  return control || overlong || outside ? 0 : length;
}

std::size_t width(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return !continues(c); }));
}

std::string lower(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return result;
}

// Insertions, deletions, changes and swaps of neighbours that make one word of the other.
std::size_t editDistance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> before, last(b.size() + 1), now(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    now[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      now[j] = std::min({last[j] + 1, now[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0u : 1u)});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) now[j] = std::min(now[j], before[j - 2] + 1);
    }
    before = std::exchange(last, now);
  }
  return last[b.size()];
}

}  // namespace

std::string printable(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const std::size_t length = printableLength(text);
    if (length > 0)
      shown += text.substr(0, length);
    else
      shown += fmt::format("\\x{:02x}", static_cast<unsigned char>(text[0]));
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return shown;
}

std::string inQuotes(std::string_view typed) {
  if (typed.size() <= kLongestQuote) return '"' + printable(typed) + '"';
  std::size_t head = kLongestQuote / 2, tail = typed.size() - kLongestQuote / 4;
  while (head > 0 && continues(typed[head])) --head;
  while (tail < typed.size() && continues(typed[tail])) ++tail;
  return fmt::format("\"{} ... {}\"", printable(typed.substr(0, head)), printable(typed.substr(tail)));
}

std::string hanging(std::string_view label, std::string_view text) {
  std::string result(label);
  const std::string indent(width(label), ' ');
  std::size_t column = indent.size();
  bool lineStart = true;
  while (!text.empty()) {
    if (text[0] == '\n') {
      result += '\n';
      column = 0;
      lineStart = true;
      text.remove_prefix(1);
      continue;
    }
    // A word with the blanks before it; the blanks fall away where the line is broken.
    const std::size_t blanks = std::min(text.find_first_not_of(' '), text.size());
    const std::size_t end = std::min(text.find_first_of(" \n", blanks), text.size());
    const std::string_view word = text.substr(blanks, end - blanks);
    if (!lineStart && column + blanks + width(word) > kLineWidth) {
      result += '\n';
      column = 0;
      lineStart = true;
    }
    if (column == 0 && !word.empty()) {
      result += indent;
      column = indent.size();
    }
    if (!lineStart && !word.empty()) {
      result.append(blanks, ' ');
      column += blanks;
    }
    result += word;
    column += width(word);
    lineStart = lineStart && word.empty();
    text.remove_prefix(end);
  }
  return result + '\n';
}

std::string nearest(std::string_view typed, const std::vector<std::string>& candidates) {
  if (typed.empty() || typed.size() > kLongestCompared) return {};
  const std::string word = lower(typed);
  std::string best;
  std::size_t bestDistance = 1 + std::max<std::size_t>(1, typed.size() / 3);
  for (const std::string& candidate : candidates) {
    if (candidate.size() > kLongestCompared) continue;
    const std::string other = lower(candidate);
    const bool begins = word.size() >= 3 && other.starts_with(word);
    const std::size_t distance = begins ? 1 : editDistance(word, other);
    if (distance >= bestDistance) continue;
    best = candidate;
    bestDistance = distance;
  }
  return best;
}

std::string anyOf(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) text += i + 1 == names.size() ? " or " : ", ";
    text += names[i];
  }
  return text;
}

std::string suggestionFor(std::string_view typed, const std::vector<std::string>& candidates) {
  constexpr std::size_t kShortList = 12;
  const std::string near = nearest(typed, candidates);
  if (!near.empty()) return fmt::format(" Did you mean {}?", inQuotes(near));
  if (candidates.empty() || candidates.size() > kShortList) return {};
  return fmt::format(" Use {}.", anyOf(candidates));
}

void refuse(std::string_view option, const std::string& sentence, std::string suggestion) {
  throw BadOptions(sentence, Where{.file = {}, .line = 0, .column = 0, .cell = {}, .option = std::string(option)},
                   std::move(suggestion));
}

}  // namespace studystats::cli
