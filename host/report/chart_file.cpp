#include "host/report/chart_file.h"

#include "host/json_writer.h"
#include "host/report/page_files.h"
#include "host/result/write.h"

#include <fmt/format.h>

#include <numeric>
#include <stdexcept>

namespace studystats {
namespace {

// Behind the end of the JSON object that begins at `from`.
std::size_t endOfObject(std::string_view json, std::size_t from) {
  int depth = 0;
  bool quoted = false;
  for (std::size_t i = from; i < json.size(); ++i) {
    const char c = json[i];
    if (quoted && c == '\\') ++i;
    if (c == '"') quoted = !quoted;
    if (quoted) continue;
    depth += c == '{' ? 1 : c == '}' ? -1 : 0;
    if (c == '}' && depth == 0) return i + 1;
  }
  return json.size();
}

std::string paramText(const ChartParam& param) {
  JsonWriter json;
  json.beginObject().key("name").text(param.name).key("value");
  writeCell(param.value, json);
  if (param.choices.size() > 1) {
    std::vector<std::size_t> numbers(param.choices.size());
    std::iota(numbers.begin(), numbers.end(), std::size_t{0});
    json.key("bind").beginObject().key("input").text("select").key("options");
    writeCell(numbers, json);
    json.key("labels");
    writeCell(param.choices, json);
    json.key("name").text(std::string(param.name) + " ").endObject();
  }
  return json.endObject().take();
}

void fillParam(const ChartParam& param, std::string& chart) {
  const std::size_t at = chart.find(fmt::format("\"name\": \"{}\"", param.name));
  if (at == std::string::npos) throw std::logic_error(fmt::format("a chart has no param {}", param.name));
  const std::size_t from = chart.rfind('{', at);
  chart.replace(from, endOfObject(chart, from) - from, paramText(param));
}

}  // namespace

std::string filledChart(std::string_view name, std::initializer_list<ChartParam> params) {
  std::string chart(chart_files::named(name));
  for (const ChartParam& param : params) fillParam(param, chart);
  const std::size_t samples = chart.find("\"datasets\": {");
  if (samples == std::string::npos) return chart;
  return chart.erase(samples, endOfObject(chart, chart.find('{', samples)) + 1 - samples);  // with the comma behind
}

}  // namespace studystats
