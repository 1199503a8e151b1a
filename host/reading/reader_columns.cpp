#include "host/reading/reader_columns.h"

#include <fmt/format.h>
#include <studystats/utilities.h>

#include <unordered_set>
#include <utility>

#include "host/reading/reader_source.h"
#include "host/text.h"

namespace studystats {
namespace {

constexpr std::size_t kShownStrays = 3;

// At least 90 % of the cells that are present are numbers.
bool almostNumeric(std::size_t numbers, std::size_t texts) { return 10 * numbers >= 9 * (numbers + texts); }

std::string quoted(const std::string& name) { return '"' + name + '"'; }

}  // namespace

ColumnBuilder::ColumnBuilder(std::string name, bool askedAsText, std::size_t expectedRows)
    : isText_(askedAsText), askedAsText_(askedAsText), name_(std::move(name)), expectedRows_(expectedRows) {
  if (askedAsText) {
    texts_.reserve(expectedRows);
  } else {
    numbers_.reserve(expectedRows);
    askForLargePages(numbers_.data(), numbers_.capacity() * sizeof(double));
  }
}

void ColumnBuilder::becomeText(std::size_t row) {
  isText_ = true;
  if (numberCount_ > 0 || holdsOthers_) rowsToReadAgain_ = row;
  numbers_ = {};
  texts_.reserve(expectedRows_);
  texts_.resize(row);
}

void ColumnBuilder::addUnusual(std::string_view text, const Cell& cell, CellPlace place) {
  if (cell.kind == CellMeaning::Text && !isText_) becomeText(place.row);
  if (cell.kind == CellMeaning::Text) {
    ++textCount_;
    if (firstTexts_.size() < kShownStrays) firstTexts_.push_back({place.row, place.line, std::string(text)});
  }
  if (cell.kind == CellMeaning::OutOfRange && !outOfRange_)
    outOfRange_ = StrayCell{place.row, place.line, std::string(text)};
  if (cell.kind == CellMeaning::OutOfRange || cell.kind == CellMeaning::NotFinite) holdsOthers_ = true;
  if (cell.kind == CellMeaning::Number || cell.kind == CellMeaning::OutOfRange) ++numberCount_;

  if (!isText_)
    numbers_.push_back(cell.number);
  else
    texts_.emplace_back(cell.kind == CellMeaning::Missing ? std::string_view() : text);
}

void ColumnBuilder::setText(std::size_t row, std::string_view text, const CellReader& reader) {
  if (row < rowsToReadAgain_ && reader.read(text).kind != CellMeaning::Missing) texts_[row] = text;
}

TableColumn ColumnBuilder::finished(const std::string& file, int position, std::vector<Remark>& remarks) && {
  if (!isText_ && outOfRange_) {
    const std::string cell = quotedCell(outOfRange_->text);
    throw BadTable(fmt::format("{}, line {}, column {}: {} is beyond the range of numbers.\n"
                               "Correct the cell, or --missing-as {} to treat it as missing.",
                               file, outOfRange_->line, position, cell, cell),
                   {.file = file, .line = outOfRange_->line, .column = position, .cell = outOfRange_->text});
  }
  TableColumn column;
  column.name = std::move(name_);
  column.kind = isText_ ? ColumnKind::Text : ColumnKind::Numeric;
  column.numbers = std::move(numbers_);
  column.texts = std::move(texts_);
  column.askedAsText = askedAsText_;
  if (isText_ && !askedAsText_ && almostNumeric(numberCount_, textCount_)) {
    column.strayCount = textCount_;
    column.strays = std::move(firstTexts_);
    remarks.push_back(
        {Severity::Warning,
         "almost-numeric",
         fmt::format("{} Correct {}, or --missing-as {} to treat it as missing.",
                     becauseOfStrays(column.name, position, column.strayCount, column.strays),
                     column.strayCount == 1 ? "the cell" : "the cells", quotedCell(column.strays.front().text)),
         {column.name}});
  }
  return column;
}

std::string becauseOfStrays(const std::string& name, int position, std::size_t strayCount,
                            const std::vector<StrayCell>& strays) {
  std::vector<std::string> places;
  places.reserve(strays.size());
  for (const StrayCell& stray : strays)
    places.push_back(fmt::format("line {}, column {}, {}", stray.line, position, quotedCell(stray.text)));
  const std::size_t unlisted = strayCount - strays.size();
  return fmt::format("column {} is text because of {}: {}{}.", quoted(name), counted(strayCount, "cell"),
                     fmt::join(places, "; "), unlisted > 0 ? fmt::format("; {} more", unlisted) : "");
}

std::vector<std::string> columnNames(const std::vector<std::string>& headings, std::vector<Remark>& remarks) {
  // Headings that stand for the first time keep their names; only then are the others named around them.
  UniqueNameGenerator generator;
  std::vector<std::string> names(headings.size()), renamed, numbered;
  std::vector<bool> named(headings.size(), false);
  std::unordered_set<std::string_view> seen;
  for (std::size_t j = 0; j < headings.size(); ++j) {
    named[j] = !headings[j].empty() && seen.insert(headings[j]).second;
    if (named[j]) names[j] = generator.UniqueName(headings[j]);
  }
  for (std::size_t j = 0; j < headings.size(); ++j) {
    if (named[j]) continue;
    const bool empty = headings[j].empty();
    names[j] = generator.UniqueName(empty ? fmt::format("column {}", j + 1) : headings[j]);
    (empty ? numbered : renamed).push_back(names[j]);
  }
  const auto remark = [&](const char* code, const char* one, const char* many, const std::vector<std::string>& which) {
    if (which.empty()) return;
    std::vector<std::string> shown;
    shown.reserve(which.size());
    for (const std::string& name : which) shown.push_back(quoted(name));
    remarks.push_back(
        {Severity::Warning, code,
         fmt::format("{}: {}.", which.size() == 1 ? one : fmt::format(fmt::runtime(many), which.size()), listed(shown)),
         which});
  };
  remark("duplicate-headings", "1 heading repeats an earlier one; its column is called",
         "{} headings repeat earlier ones; their columns are called", renamed);
  remark("empty-headings", "1 heading is empty; its column is called",
         "{} headings are empty; their columns are called", numbered);
  return names;
}

}  // namespace studystats
