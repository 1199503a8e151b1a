#include "cli/values.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <fstream>
#include <limits>
#include <optional>

namespace studystats::cli {
namespace {

constexpr std::size_t kLargestListFile = std::size_t{64} << 20;

std::string_view trimmed(std::string_view text) {
  const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
  while (!text.empty() && blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && blank(text.back())) text.remove_suffix(1);
  return text;
}

// The text as a number, all of it, finite; a leading + is allowed.
std::optional<double> number(std::string_view text) {
  if (text.starts_with('+') && text.size() > 1 && text[1] != '-') text.remove_prefix(1);
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) return std::nullopt;
  return value;
}

template <class Integer>
std::optional<Integer> integer(std::string_view text) {
  Integer value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

// A name in quotation marks at the front of `text`, taken off it; absent when there is none.
std::optional<std::string> takeQuoted(std::string_view option, std::string_view& text) {
  if (!text.starts_with('"')) return std::nullopt;
  std::string name;
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i] != '"') {
      name += text[i];
    } else if (i + 1 < text.size() && text[i + 1] == '"') {
      name += text[i++];
    } else {
      text.remove_prefix(i + 1);
      return name;
    }
  }
  refuse(option, fmt::format("{}: the quotation mark of {} is never closed.", option, inQuotes(text)));
}

// The lines of a file of names, without empty ones.
void addLines(std::string_view option, const std::string& path, std::vector<std::string>& names) {
  const auto unreadable = [&](std::string_view why) {
    refuse(option, fmt::format("{}: the list of names {} {}.", option, inQuotes(path), why));
  };
  std::ifstream file(path, std::ios::binary);
  if (!file) unreadable("cannot be opened");
  std::string content, block(std::size_t{1} << 16, '\0');
  while (file.read(block.data(), static_cast<std::streamsize>(block.size())) || file.gcount() > 0) {
    content.append(block, 0, static_cast<std::size_t>(file.gcount()));
    if (content.find('\0', content.size() - static_cast<std::size_t>(file.gcount())) != std::string::npos)
      unreadable("is not a text file");
    if (content.size() > kLargestListFile) unreadable("is longer than 64 MB");
  }
  if (content.empty()) unreadable("is empty, or is no file");
  std::string_view rest = content;
  if (rest.starts_with("\xEF\xBB\xBF")) rest.remove_prefix(3);
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    const std::string_view name = trimmed(rest.substr(0, end));
    if (!name.empty()) names.emplace_back(name);
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
}

// What stands before the next comma, taken off `text` together with it.
std::string_view takeItem(std::string_view& text) {
  const std::size_t comma = text.find(',');
  const std::string_view item = text.substr(0, comma);
  text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
  return item;
}

}  // namespace

std::vector<std::string> nameList(std::string_view option, const std::vector<std::string>& texts) {
  std::vector<std::string> names;
  for (std::string_view text : texts) {
    const std::string_view whole = text;
    while (!text.empty()) {
      std::string_view rest = trimmed(text);
      if (auto name = takeQuoted(option, rest)) {
        names.push_back(*name);
        rest = trimmed(rest);
        if (!rest.empty() && rest.front() != ',')
          refuse(option,
                 fmt::format("{}: a comma is missing after the quotation mark in {}.", option, inQuotes(whole)));
        text = rest.substr(rest.empty() ? 0 : 1);
        continue;
      }
      const std::string_view item = trimmed(takeItem(text));
      if (item.starts_with('@'))
        addLines(option, std::string(item.substr(1)), names);
      else if (!item.empty())
        names.emplace_back(item);
    }
  }
  if (names.empty() && !texts.empty()) refuse(option, fmt::format("{} {} names nothing.", option, inQuotes(texts[0])));
  return names;
}

std::string singleName(std::string_view option, std::string_view text) {
  std::string_view rest = text;
  const auto name = takeQuoted(option, rest);
  return name && rest.empty() ? *name : std::string(text);
}

int wholeNumber(std::string_view option, std::string_view text, int least, int most) {
  const auto value = integer<int>(text);
  if (value && *value >= least && *value <= most) return *value;
  if (most == std::numeric_limits<int>::max())
    refuse(option, fmt::format("{} {} is not a whole number from {} on.", option, inQuotes(text), least));
  refuse(option, fmt::format("{} {} is not a whole number from {} to {}.", option, inQuotes(text), least, most));
}

double realNumber(std::string_view option, std::string_view text) {
  if (const auto value = number(text)) return *value;
  refuse(option, fmt::format("{} {} is not a number.", option, inQuotes(text)));
}

Folds folds(std::string_view option, std::string_view text) {
  constexpr std::string_view kRandom = "random:";
  if (text == "loo") return Folds::leaveOneOut();
  if (text.starts_with("column:")) {
    const std::string name = singleName(option, text.substr(7));
    if (name.empty()) refuse(option, fmt::format("{} column: names no column.", option));
    return Folds::byColumn(name);
  }
  if (!text.starts_with(kRandom)) {
    const auto groups = integer<int>(text);
    if (!groups)
      refuse(option, fmt::format("{} {} is not known. Use loo, a number of groups, random:N:P% or column:NAME.", option,
                                 inQuotes(text)));
    if (*groups < 2)
      refuse(option,
             fmt::format("{} {} leaves nothing to train on or nothing to hold out; try --folds 7 or --folds loo.",
                         option, text));
    return Folds::systematic(*groups);
  }
  const std::string_view rest = text.substr(kRandom.size());
  const std::size_t colon = rest.find(':');
  const std::string_view share = colon == std::string_view::npos ? std::string_view() : rest.substr(colon + 1);
  const auto percent = share.ends_with('%') ? number(share.substr(0, share.size() - 1)) : std::nullopt;
  if (!percent)
    refuse(option, fmt::format("{} {} is not of the form random:N:P%, as in random:100:20%.", option, inQuotes(text)));
  return Folds::random({.draws = wholeNumber(option, rest.substr(0, colon), 1, 1000000), .heldOut = *percent / 100});
}

double level(std::string_view option, std::string_view text) {
  const std::string_view digits = text.ends_with('%') ? trimmed(text.substr(0, text.size() - 1)) : text;
  const auto value = number(digits);
  if (value && digits.size() == text.size() && *value > 0 && *value < 1) return *value;
  const bool percent = value && *value > 1 && *value < 100;
  const std::string meant = percent ? fmt::format("{:.10g}", *value / 100) : "";
  refuse(option,
         fmt::format("{} {} is not between 0 and 1.{}", option, inQuotes(text),
                     percent ? fmt::format(" Did you mean {}?", meant) : ""),
         meant);
}

char delimiter(std::string_view option, std::string_view text) {
  const bool usable = text.size() == 1 && text[0] != '"' &&
                      (std::ispunct(static_cast<unsigned char>(text[0])) != 0 || text[0] == ' ' || text[0] == '\t');
  return usable ? text[0] : choice(option, text, kDelimiters);
}

Missing missingRule(std::string_view option, std::string_view text) {
  if (text.starts_with("fill=")) {
    if (const auto value = number(text.substr(5))) return {Missing::Rule::FillValue, *value};
    if (text == "fill=V") refuse(option, fmt::format("{} fill=V wants a number for V, as in fill=0.", option));
  }
  return {choice(option, text, kMissingRules), 0};
}

Transform transform(std::string_view option, std::string_view text) {
  std::string_view rest = text;
  Transform result;
  if (auto name = takeQuoted(option, rest); name && rest.starts_with('=')) {
    result.column = *name;
    rest.remove_prefix(1);
  } else {
    const std::size_t equals = text.rfind('=');
    if (equals == std::string_view::npos || equals == 0)
      refuse(option, fmt::format("{} {} is not of the form NAME=KIND, as in dose=log10+1.", option, inQuotes(text)));
    result.column = text.substr(0, equals);
    rest = text.substr(equals + 1);
  }
  const std::size_t sign = std::min(rest.find_first_of("+-"), rest.size());
  result.kind = choice(option, rest.substr(0, sign), kTransforms);
  if (sign == rest.size()) return result;
  const auto shift = number(rest.substr(sign + 1));
  if (!shift || *shift < 0)
    refuse(option, fmt::format("{}: the shift {} of {} is not a number.", option, inQuotes(rest.substr(sign)),
                               inQuotes(result.column)));
  result.shift = rest[sign] == '-' ? -*shift : *shift;
  return result;
}

Derivation derivation(std::string_view option, std::string_view text) {
  const std::size_t colon = text.find(':');
  Derivation result{choice(option, text.substr(0, colon), kDerivations), {}};
  if (colon != std::string_view::npos) result.columns = nameList(option, {std::string(text.substr(colon + 1))});
  if (colon != std::string_view::npos && result.columns.empty())
    refuse(option, fmt::format("{} {} names no column after the colon.", option, inQuotes(text)));
  return result;
}

ComponentChoice componentChoice(std::string_view option, std::string_view text) {
  constexpr std::string_view kRatio = "ratio";
  if (text == "min") return {ComponentChoice::Kind::Minimum};
  if (text == kRatio) return {};
  if (text.starts_with("ratio="))
    return {ComponentChoice::Kind::Ratio, realNumber(option, text.substr(kRatio.size() + 1))};
  const auto count = integer<int>(text);
  if (!count || *count < 1)
    refuse(option,
           fmt::format("{} {} is not known. Use ratio=L, min or a number of components.", option, inQuotes(text)));
  return {.kind = ComponentChoice::Kind::Number, .number = *count};
}

ClassSelection classSelection(std::string_view option, std::string_view text) {
  if (!text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos)
    return {ClassSelection::Kind::Number, wholeNumber(option, text, 1, std::numeric_limits<int>::max())};
  return {choice(option, text, kClassSelections)};
}

Priors priors(std::string_view option, std::string_view text) {
  if (text.find_first_of("0123456789") == std::string_view::npos) return {choice(option, text, kPriors)};
  Priors given{Priors::Kind::Given, {}};
  for (std::string_view rest = text; !rest.empty();)
    given.values.push_back(realNumber(option, trimmed(takeItem(rest))));
  return given;
}

std::pair<std::string, std::string> nameAndValue(std::string_view option, std::string_view text) {
  std::string_view rest = text;
  if (auto name = takeQuoted(option, rest); name && rest.starts_with('=')) return {*name, std::string(rest.substr(1))};
  const std::size_t equals = text.rfind('=');
  if (equals == std::string_view::npos || equals == 0)
    refuse(option, fmt::format("{} {} is not of the form NAME=VALUE, as in set=test.", option, inQuotes(text)));
  if (equals + 1 == text.size()) refuse(option, fmt::format("{} {} names no value.", option, inQuotes(text)));
  return {std::string(text.substr(0, equals)), std::string(text.substr(equals + 1))};
}

std::vector<RowRange> rowRanges(std::string_view option, const std::vector<std::string>& texts) {
  std::vector<RowRange> ranges;
  for (std::string_view text : texts) {
    while (!text.empty()) {
      const std::string_view item = trimmed(takeItem(text));
      const std::size_t dash = std::min(item.find('-'), item.size());
      const auto first = integer<std::size_t>(trimmed(item.substr(0, dash)));
      const auto last = dash == item.size() ? first : integer<std::size_t>(trimmed(item.substr(dash + 1)));
      if (!first || !last)
        refuse(option, fmt::format("{}: {} is neither a row number nor a range of them, as in 51-60,72.", option,
                                   inQuotes(item)));
      if (*first == 0) refuse(option, fmt::format("{}: rows are counted from 1, there is no row 0.", option));
      if (*last < *first) refuse(option, fmt::format("{}: the range {} runs backwards.", option, inQuotes(item)));
      ranges.push_back({*first, *last});
    }
  }
  return ranges;
}

std::vector<std::size_t> rowsOf(std::string_view option, const std::vector<RowRange>& ranges, const Table& table) {
  const std::size_t n = table.rows();
  std::vector<bool> chosen(n);
  for (const RowRange& range : ranges) {
    if (range.last > n)
      refuse(option, fmt::format("{}: {} has {} rows, there is no row {}.", option, table.name, n, range.last));
    std::fill(chosen.begin() + static_cast<std::ptrdiff_t>(range.first - 1),
              chosen.begin() + static_cast<std::ptrdiff_t>(range.last), true);
  }
  std::vector<std::size_t> rows;
  for (std::size_t i = 0; i < n; ++i)
    if (chosen[i]) rows.push_back(i);
  return rows;
}

}  // namespace studystats::cli
