// A page as one HTML file: its sentences as markup, its data and charts as JSON, its scripts and styles as they are.
#include <studystats/host/report.h>

#include "host/json_writer.h"
#include "host/report/colours.h"
#include "host/report/page_files.h"

#include <fmt/format.h>

#include <map>

namespace studystats {
namespace {

// Text as it may stand between tags and in attributes; bytes that are no UTF-8 become U+FFFD.
std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : validUtf8(text)) switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      default:
        result += c;
    }
  return result;
}

// Numbers stay on the line of their sign: "97 %", "q² = 0.973".
std::string unbroken(std::string text) {
  for (const std::string_view held : {" %", " = "})
    for (std::size_t at = 0; (at = text.find(held, at)) != std::string::npos; at += 2) {
      text.replace(at, 1, "\xC2\xA0");
      if (held.size() == 3) text.replace(at + 3, 1, "\xC2\xA0");
    }
  return text;
}

// JSON that no HTML parser mistakes for the end of a script, and no script for the end of a line.
std::string escapedJson(const std::string& text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool separator = text.compare(i, 2, "\xE2\x80") == 0 && (text[i + 2] == '\xA8' || text[i + 2] == '\xA9');
    if (separator) {
      result += text[i + 2] == '\xA8' ? "\\u2028" : "\\u2029";
      i += 2;
    } else if (text[i] == '<') {
      result += "\\u003c";
    } else if (text[i] == '>') {
      result += "\\u003e";
    } else if (text[i] == '&') {
      result += "\\u0026";
    } else {
      result += text[i];
    }
  }
  return result;
}

// A script of somebody else, whose strings may speak of the end of scripts.
std::string asScript(std::string_view script) {
  std::string text(script);
  for (std::size_t at = 0; (at = text.find("</", at)) != std::string::npos; at += 3)
    if (text.compare(at + 2, 6, "script") == 0) text.insert(at + 1, 1, '\\');
  return text;
}

std::string remarkItem(const ReportRemark& entry) {
  const bool warning = entry.remark.severity == Severity::Warning;
  return fmt::format(
      "<li><b>{}</b> {}{}</li>\n", warning ? "Warning:" : "Note:", escaped(entry.remark.text),
      entry.anchor.empty() ? std::string() : fmt::format(" <a href=\"#{}\">see where</a>", escaped(entry.anchor)));
}

std::string remarkList(const ReportPage& page, Severity severity, const char* className) {
  std::string items;
  for (const ReportRemark& entry : page.remarks)
    if (entry.remark.severity == severity) items += remarkItem(entry);
  return items.empty() ? items : fmt::format("<ul class=\"{}\">\n{}</ul>", className, items);
}

std::string frameTable(const ReportFrame& frame) {
  if (frame.rows.empty()) return {};
  std::string head, body;
  for (const std::string& heading : frame.headings)
    head += heading.empty() ? "<td></td>" : fmt::format("<th scope=\"col\">{}</th>", escaped(heading));
  for (const auto& row : frame.rows) {
    std::string cells;
    for (std::size_t j = 1; j < row.size(); ++j)
      cells += fmt::format("<td{}>{}</td>", frame.headings[j] == "cross-validated" ? " class=\"validated\"" : "",
                           escaped(row[j]));
    body += fmt::format("<tr><th scope=\"row\">{}</th>{}</tr>\n", escaped(row[0]), cells);
  }
  return fmt::format("<table class=\"frame\">\n<thead><tr>{}</tr></thead>\n<tbody>\n{}</tbody>\n</table>", head, body);
}

std::string definitions(const std::vector<ReportEntry>& entries) {
  std::string items;
  for (const ReportEntry& entry : entries)
    items += fmt::format("<dt>{}</dt><dd>{}</dd>\n", escaped(entry.name), escaped(entry.text));
  return "<dl>\n" + items + "</dl>";
}

const char* nameOf(CellKind kind) {
  switch (kind) {
    case CellKind::Text:
    case CellKind::Flag:
      return "text";
    case CellKind::Whole:
      return "whole";
    case CellKind::Value:
      return "value";
    case CellKind::Number:
      return "number";
    case CellKind::Fixed:
      return "fixed";
    case CellKind::Explained:
      return "explained";
    case CellKind::Probability:
      return "probability";
    case CellKind::Share:
      return "share";
    case CellKind::Bar:
      return "bar";
    case CellKind::Count:
      return "count";
  }
  return "";
}

void writeFigure(const ReportFigure& figure, JsonWriter& json) {
  json.beginObject();
  json.key("name").text(figure.name).key("title").text(figure.title).key("alternative").text(figure.alternative);
  json.key("caption").text(figure.caption).key("wide").flag(figure.wide).key("chart").raw(figure.chart).endObject();
}

void writeTable(const ReportTable& table, JsonWriter& json) {
  json.beginObject().key("name").text(table.name).key("title").text(table.title).key("note").text(table.note);
  json.key("data").text(table.data).key("columns").beginList();
  for (const ReportColumn& column : table.columns) {
    json.beginObject().key("field").text(column.field).key("heading").text(column.heading);
    json.key("kind").text(nameOf(column.kind)).key("digits").whole(column.digits).endObject();
  }
  json.endList().endObject();
}

void writeData(const Table& data, JsonWriter& json) {
  json.beginObject().key("name").text(data.name).key("columns").beginList();
  for (const TableColumn& column : data.columns) {
    json.beginObject().key("field").text(column.name).key("values").beginList();
    for (const double number : column.numbers) json.number(number);
    for (const std::string& text : column.texts) json.text(text);
    json.endList().endObject();
  }
  json.endList().endObject();
}

std::string pageJson(const ReportPage& page) {
  JsonWriter json;
  json.beginObject(true).key("analysis").text(page.analysis);
  json.key("palette").raw(colourNames()).key("config").raw(page_files::config());
  json.key("figures").beginList(true);
  for (const ReportFigure& figure : page.figures) writeFigure(figure, json);
  json.endList().key("tables").beginList(true);
  for (const ReportTable& table : page.tables) writeTable(table, json);
  json.endList().key("data").beginList(true);
  for (const Table& data : page.data) writeData(data, json);
  return json.endList().endObject().take();
}

// The template with each {{name}} replaced, once: what is put in is not looked at again.
std::string filled(std::string_view text, const std::map<std::string_view, std::string>& parts) {
  std::string result;
  for (std::size_t from = 0;;) {
    const std::size_t open = text.find("{{", from), close = text.find("}}", open);
    if (open == std::string_view::npos) return result.append(text.substr(from));
    result.append(text.substr(from, open - from)).append(parts.at(text.substr(open + 2, close - open - 2)));
    from = close + 2;
  }
}

}  // namespace

std::string reportHtml(const ReportPage& page, const ReportScripts& scripts) {
  std::string notices(scripts.notices);  // a comment ends at its first "--"
  for (std::size_t at = 0; (at = notices.find("--", at)) != std::string::npos;) notices.replace(at, 2, "- ");
  return filled(
      page_files::page(),
      {{"title", escaped(page.title)},
       {"generator", escaped("studystats " + version())},
       {"subtitle", escaped(page.subtitle)},
       {"colours", colourRules()},
       {"style", std::string(page_files::style())},
       {"banner", page.banner.empty() ? std::string()
                                      : fmt::format("<p class=\"banner\" role=\"alert\">{}</p>", escaped(page.banner))},
       {"answer", escaped(unbroken(page.answer))},
       {"warnings", remarkList(page, Severity::Warning, "warnings")},
       {"notes", remarkList(page, Severity::Note, "notes")},
       {"frame", frameTable(page.frame)},
       {"card", definitions(page.card)},
       {"reading", definitions(page.reading)},
       {"data", escapedJson(pageJson(page))},
       {"vega", asScript(scripts.vega)},
       {"vegaLite", asScript(scripts.vegaLite)},
       {"vegaEmbed", asScript(scripts.vegaEmbed)},
       {"script", fmt::format("{}\n{}\n{}", page_files::tables(), page_files::figures(), page_files::script())},
       {"notices", notices}});
}

}  // namespace studystats
