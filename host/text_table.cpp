// Tables: aligned for people, and as CSV for programs.
#include "host/text.h"

#include <algorithm>

namespace studystats {
namespace {

constexpr std::size_t kGap = 2;
constexpr std::size_t kWidestName = 40;  // of a first column that shares its line when there is no room for all

// Where a number's part before the decimal point ends: at the point, the exponent, a blank, or the end. Words, and the
// "-" of an absent figure, have no point: they stand at the right edge.
std::size_t pointOf(std::string_view cell) {
  const std::size_t digit = cell.find_first_of("0123456789");
  if (digit == std::string_view::npos || cell.find_first_not_of("+-<>.") != digit) return std::string_view::npos;
  return std::min(cell.find_first_not_of("+-<>0123456789"), cell.size());
}

// Line ends, tabs and other control characters would break the table; they are shown as a blank.
std::string onOneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, ' ');
  return text;
}

std::string blanks(std::size_t n) { return std::string(n, ' '); }

std::string alignedLeft(const std::string& cell, std::size_t width) {
  return cell + blanks(width - std::min(width, textWidth(cell)));
}

std::string alignedRight(const std::string& cell, std::size_t width) {
  return blanks(width - std::min(width, textWidth(cell))) + cell;
}

void endLine(std::string& text) {
  while (!text.empty() && text.back() == ' ') text.pop_back();
  text += '\n';
}

}  // namespace

void TextTable::column(std::string heading, Align align) {
  heading = onOneLine(std::move(heading));
  const std::size_t width = textWidth(heading);
  columns_.push_back({std::move(heading), align, width});
}

void TextTable::row(std::vector<std::string> cells) {
  cells.resize(columns_.size());
  for (std::size_t j = 0; j < cells.size(); ++j) {
    cells[j] = onOneLine(std::move(cells[j]));
    Column& column = columns_[j];
    const std::size_t point = column.align == Align::Point ? pointOf(cells[j]) : std::string_view::npos;
    if (point != std::string_view::npos) {
      column.before = std::max(column.before, point);
      column.after = std::max(column.after, cells[j].size() - point);
    }
    column.width = std::max({column.width, textWidth(cells[j]), column.before + column.after});
  }
  rows_.push_back({std::move(cells), false});
}

void TextTable::line(std::string text) { rows_.push_back({{onOneLine(std::move(text))}, true}); }

std::string TextTable::aligned(const Column& column, const std::string& cell, std::size_t width) {
  if (column.align == Align::Left) return alignedLeft(cell, width);
  const std::size_t point = column.align == Align::Point ? pointOf(cell) : std::string_view::npos;
  if (point == std::string_view::npos) return alignedRight(cell, width);
  return alignedRight(blanks(column.before - point) + cell + blanks(column.after - (cell.size() - point)), width);
}

// Heading and rows of the first column and of those from `from` to before `to`.
std::string TextTable::block(std::size_t from, std::size_t to, const Layout& layout) const {
  const auto [indent, nameWidth, gap] = layout;
  std::string text = blanks(indent) + aligned({"", columns_[0].align == Align::Left ? Align::Left : Align::Right},
                                              columns_[0].heading, nameWidth);
  for (std::size_t j = from; j < to; ++j) {
    const Align align = columns_[j].align == Align::Left ? Align::Left : Align::Right;
    text += blanks(gap);
    text += aligned({"", align}, columns_[j].heading, columns_[j].width);
  }
  endLine(text);

  for (const Row& row : rows_) {
    if (row.isLine) {
      text += blanks(indent) + row.cells[0];
      endLine(text);
      continue;
    }
    text += blanks(indent) + aligned(columns_[0], row.cells[0], nameWidth);
    if (textWidth(row.cells[0]) > nameWidth) {
      endLine(text);
      text += blanks(indent + nameWidth);
    }
    for (std::size_t j = from; j < to; ++j) {
      text += blanks(gap);
      text += aligned(columns_[j], row.cells[j], columns_[j].width);
    }
    endLine(text);
  }
  return text;
}

TextTable::Layout TextTable::layout(std::size_t indent) const {
  const std::size_t room = kTextWidth - std::min(indent, kTextWidth);
  const Column& names = columns_[0];
  const std::size_t gaps = columns_.size() - 1;
  std::size_t figures = 0;
  for (std::size_t j = 1; j < columns_.size(); ++j) figures += columns_[j].width;
  for (const std::size_t gap : {kGap, std::size_t{1}})
    if (names.width + gaps * gap + figures <= room) return {indent, names.width, gap};

  if (names.align != Align::Left) return {indent, names.width, kGap};
  const std::size_t heading = textWidth(names.heading);
  figures += gaps * kGap;
  const std::size_t share = heading + figures <= room ? room - figures : kWidestName;
  return {indent, std::max(heading, std::min(names.width, share)), kGap};
}

std::string TextTable::text(std::size_t indent) const {
  if (columns_.empty()) return {};
  const Layout chosen = layout(indent);
  std::string text;
  for (std::size_t from = 1; from < columns_.size() || text.empty();) {
    std::size_t to = from, used = indent + chosen.nameWidth;
    while (to < columns_.size() && (to == from || used + chosen.gap + columns_[to].width <= kTextWidth))
      used += chosen.gap + columns_[to++].width;
    if (!text.empty()) text += '\n';
    text += block(from, to, chosen);
    from = to;
  }
  return text;
}

void CsvText::row(const std::vector<std::string>& cells) {
  for (std::size_t j = 0; j < cells.size(); ++j) {
    if (j > 0) text_ += ',';
    const std::string& cell = cells[j];
    const bool outerBlank = !cell.empty() && (cell.front() == ' ' || cell.back() == ' ');
    if (cell.find_first_of(",\"\r\n") == std::string::npos && !outerBlank) {
      text_ += cell;
      continue;
    }
    text_ += '"';
    for (const char c : cell) text_.append(c == '"' ? 2 : 1, c);
    text_ += '"';
  }
  text_ += '\n';
}

}  // namespace studystats
