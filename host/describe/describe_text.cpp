// A description as a page of plain text: the figures of the columns.
#include "host/describe/describe_text.h"

#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>

namespace studystats {
namespace {

constexpr std::size_t kWide = 12;  // columns listed in full; of more, the first and the last few
constexpr std::size_t kEnds = 3;

using Summaries = std::vector<const ColumnSummary*>;

Summaries columnsOf(const Description& description, ColumnKind kind) {
  Summaries columns;
  for (const ColumnSummary& column : description.columns)
    if (column.kind == kind && column.name != description.idColumn) columns.push_back(&column);
  return columns;
}

std::string fileForm(char delimiter, char decimal) {
  if (delimiter == '\0') return {};
  const std::string name = delimiter == ','    ? "comma"
                           : delimiter == ';'  ? "semicolon"
                           : delimiter == '\t' ? "tab"
                           : delimiter == ' '  ? "blank"
                                               : fmt::format("\"{}\"", delimiter);
  return fmt::format("; {}, decimal {}", name, decimal == ',' ? "comma" : "point");
}

std::string headLine(const Description& description) {
  const auto numeric = std::count_if(description.columns.begin(), description.columns.end(),
                                     [](const ColumnSummary& column) { return column.kind == ColumnKind::Numeric; });
  const auto described = static_cast<std::ptrdiff_t>(description.columns.size());
  const std::string some = description.columns.size() == description.tableColumns
                               ? std::string()
                               : fmt::format(", {} of them described", described);
  return wrapped("", fmt::format("{}: {}, {}{} ({} numeric, {} text){}", description.table,
                                 counted(description.rows, "row"), counted(description.tableColumns, "column"), some,
                                 numeric, described - numeric, fileForm(description.delimiter, description.decimal)));
}

bool numericId(const Description& description) {
  return std::any_of(description.columns.begin(), description.columns.end(), [&](const ColumnSummary& column) {
    return column.name == description.idColumn && column.kind == ColumnKind::Numeric;
  });
}

// "Row names: compound (208 different texts)          Missing: none"
std::string rowNameLine(const Description& description) {
  std::string names, missing;
  if (!description.idColumn.empty())
    names =
        fmt::format("Row names: {} ({}{})", description.idColumn,
                    counted(description.idDifferent, numericId(description) ? "different number" : "different text"),
                    description.idDifferent < description.rows ? fmt::format(" in {} rows", description.rows) : "");
  const bool anywhere = std::any_of(description.columns.begin(), description.columns.end(),
                                    [](const ColumnSummary& column) { return column.missing > 0; });
  if (description.cellsMissing == 0 && description.rows > 0)
    missing = anywhere ? "Missing: none in numeric columns with values" : "Missing: none";
  if (names.empty() || missing.empty()) return names.empty() && missing.empty() ? "" : names + missing + "\n";
  const std::string oneLine = names + std::string(10, ' ') + missing;
  return (textWidth(oneLine) <= kTextWidth ? oneLine : names + "\n" + missing) + "\n";
}

// Calls `add` for the columns to be listed, and writes a line for those between that are not.
template <class Add>
void addColumns(TextTable& table, const Summaries& columns, const char* kind, bool all, Add add) {
  const bool cut = !all && columns.size() > kWide;
  for (std::size_t j = 0; j < columns.size(); ++j) {
    if (cut && j == kEnds) {
      const std::size_t more = columns.size() - 2 * kEnds;
      table.line(fmt::format("... {} more {} columns: --all lists them, --tables DIR writes them", more, kind));
      j += more;
    }
    add(*columns[j]);
  }
}

std::string missingCount(const ColumnSummary& column) {
  return column.missing == 0 ? "-" : std::to_string(column.missing);
}

std::string numericTable(const Summaries& columns, const TextOptions& options) {
  if (columns.empty()) return {};
  TextTable table;
  table.column("column", Align::Left);
  for (const char* heading : {"count", "missing"}) table.column(heading);
  for (const char* heading : {"mean", "sd", "min", "median", "max", "skewness", "kurtosis"})
    table.column(heading, Align::Point);
  addColumns(table, columns, "numeric", options.all, [&](const ColumnSummary& column) {
    const auto moment = [](const std::optional<double>& value) { return value ? fixed(*value, 3) : "-"; };
    table.row({column.name, std::to_string(column.count), missingCount(column),
               significant(column.mean, options.digits), significant(column.sd, options.digits),
               brief(column.minimum, options.digits), brief(column.median, options.digits),
               brief(column.maximum, options.digits), moment(column.skewness), moment(column.kurtosis)});
  });
  return table.text();
}

std::string textColumnTable(const Summaries& columns, const TextOptions& options) {
  if (columns.empty()) return {};
  TextTable table;
  table.column("text column", Align::Left);
  for (const char* heading : {"count", "missing", "different", "most common"}) table.column(heading);
  addColumns(table, columns, "text", options.all, [&](const ColumnSummary& column) {
    table.row({column.name, std::to_string(column.count), missingCount(column), std::to_string(column.different),
               column.mostCommon == 0 ? "-" : counted(column.mostCommon, "time")});
  });
  return table.text();
}

}  // namespace

std::string summary(const Description& description, const TextOptions& options) {
  const Summaries numeric = columnsOf(description, ColumnKind::Numeric);
  const Summaries texts = columnsOf(description, ColumnKind::Text);
  std::string text = headLine(description) + rowNameLine(description);
  const auto paragraph = [&text](const std::string& lines) {
    if (lines.empty()) return;
    text += '\n';
    text += lines;
  };
  paragraph(numericTable(numeric, options));
  paragraph(textColumnTable(texts, options));
  paragraph(missingText(description) + codesText(description));
  const std::string look = lookText(description, options);
  if (!look.empty()) paragraph("Look at these before modelling\n");
  text += look;
  if (!numeric.empty() && numeric.size() <= kWide)
    paragraph("sd with n - 1; skewness and excess kurtosis are moments over n, divided by sd^3 and sd^4.\n");
  return text;
}

}  // namespace studystats
