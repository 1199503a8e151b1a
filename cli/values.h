// From the text of an option to its value. Each function throws BadOptions with one sentence and the nearest word.
#pragma once

#include <studystats/host.h>

#include <fmt/format.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/messages.h"
#include "cli/value_names.h"

namespace studystats::cli {

// The value called `text`, of the words in `choices`.
template <class Value, std::size_t n>
Value choice(std::string_view option, std::string_view text, const Named<Value> (&choices)[n]) {
  for (const auto& known : choices)
    if (known.name == text) return known.value;
  refuse(option, fmt::format("{} {} is not known.{}", option, inQuotes(text), suggestionFor(text, namesOf(choices))),
         nearest(text, namesOf(choices)));
}

// Names between commas, blanks around them trimmed. "@FILE" stands for the lines of a file; a name in quotation marks
// is taken literally, comma, blanks and "@" included, "" in it being one quotation mark.
std::vector<std::string> nameList(std::string_view option, const std::vector<std::string>& texts);

// One name as it stands, or literally when it is in quotation marks.
std::string singleName(std::string_view option, std::string_view text);

// A whole number from `least` to `most`.
int wholeNumber(std::string_view option, std::string_view text, int least, int most);

// A number, with a decimal point.
double realNumber(std::string_view option, std::string_view text);

// loo, K, random:N:P%, column:NAME.
Folds folds(std::string_view option, std::string_view text);

ComponentChoice componentChoice(std::string_view option, std::string_view text);  // ratio, ratio=L, min, A
ClassSelection classSelection(std::string_view option, std::string_view text);    // auto, all, N
Priors priors(std::string_view option, std::string_view text);                    // equal, size, or numbers

// A level above 0 and below 1.
double level(std::string_view option, std::string_view text);

char delimiter(std::string_view option, std::string_view text);

Missing missingRule(std::string_view option, std::string_view text);  // "fill=3.5" is FillValue

// NAME=KIND, NAME=KIND+SHIFT, NAME=KIND-SHIFT. A kind holds no "=", so that the last one ends the name.
Transform transform(std::string_view option, std::string_view text);

Derivation derivation(std::string_view option, std::string_view text);  // KIND or KIND:LIST

// NAME=VALUE at the last "="; a name in quotation marks leaves the value free to hold one.
std::pair<std::string, std::string> nameAndValue(std::string_view option, std::string_view text);

// Rows from `first` to `last`, counted from 1, both included.
struct RowRange {
  std::size_t first;
  std::size_t last;
};
std::vector<RowRange> rowRanges(std::string_view option, const std::vector<std::string>& texts);  // "51-60,72"

// The rows of the ranges, from 0, each once, in order; throws when the table ends before.
std::vector<std::size_t> rowsOf(std::string_view option, const std::vector<RowRange>& ranges, const Table& table);

}  // namespace studystats::cli
