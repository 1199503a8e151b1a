// The figures of a page as Vega-Lite files that hold their own data; the date of a page.
#include <studystats/host/report.h>

#include "host/json.h"
#include "host/report/page_files.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <ctime>
#include <set>

namespace studystats {
namespace {

void collectNames(const Json& value, std::set<std::string>& names) {
  if (value.is_object() && value.contains("data") && value["data"].contains("name"))
    names.insert(value["data"]["name"].get<std::string>());
  for (const Json& part : value)
    if (part.is_structured()) collectNames(part, names);
}

// One object a row, as Vega-Lite reads data.
Json records(const Table& data) {
  Json list = Json::array();
  for (std::size_t i = 0; i < data.rows(); ++i) {
    Json record = Json::object();
    for (const TableColumn& column : data.columns)
      record[column.name] = column.kind == ColumnKind::Numeric ? jsonNumber(column.numbers[i]) : Json(column.texts[i]);
    list.push_back(std::move(record));
  }
  return list;
}

}  // namespace

std::vector<CsvFile> chartFiles(const ReportPage& page) {
  constexpr int kWidth = 560;
  std::vector<CsvFile> files;
  for (const ReportFigure& figure : page.figures) {
    Json chart{{"$schema", "https://vega.github.io/schema/vega-lite/v6.json"},
               {"title", figure.title},
               {"description", figure.alternative},
               {"background", "white"}};
    Json config = Json::parse(page_files::config());
    config.erase("background");
    chart["config"] = std::move(config);
    chart.update(Json::parse(figure.chart));
    if (chart.value("width", Json()) == "container") chart["width"] = kWidth;
    std::set<std::string> names;
    collectNames(chart, names);
    for (const Table& data : page.data)
      if (names.contains(data.name)) chart["datasets"][data.name] = records(data);
    files.push_back({fmt::format("figure-{}.vl.json", figure.name), jsonText(chart)});
  }
  return files;
}

std::string reportDate() {
  std::time_t now = std::time(nullptr);
  if (const char* epoch = std::getenv("SOURCE_DATE_EPOCH")) {
    const std::string_view text(epoch);
    std::int64_t seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    if (error == std::errc() && end == text.data() + text.size()) now = static_cast<std::time_t>(seconds);
  }
  return fmt::format("{:%Y-%m-%d}", fmt::gmtime(now));
}

}  // namespace studystats
