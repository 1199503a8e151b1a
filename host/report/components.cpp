#include "host/report/components.h"

#include "host/limits.h"
#include "host/preparation/block.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <numbers>
#include <unordered_map>
#include <unordered_set>

namespace studystats {
namespace {

constexpr std::size_t kFewNames = 20;  // below, bars with names are better than a curve
constexpr std::size_t kMostColourCells = 100000;
constexpr const char* kDigits = "0123456789";

// A name taken apart around its first number.
struct NumberedName {
  std::string before, after;
  double number = 0;
};

std::optional<NumberedName> takenApart(const std::string& name) {
  const std::size_t from = name.find_first_of(kDigits);
  if (from == std::string::npos) return std::nullopt;
  NumberedName result{name.substr(0, from), {}, 0};
  const auto [end, error] = std::from_chars(name.data() + from, name.data() + name.size(), result.number);
  if (error != std::errc() || !std::isfinite(result.number)) return std::nullopt;
  result.after.assign(end, name.data() + name.size());
  return result;
}

// Two selectors of a component each, and the rows' coordinates on them.
void chooseTwo(const ScorePlot& plot, Json& chart) {
  Json options = Json::array();
  for (std::size_t a = 1; a <= plot.titles.size(); ++a) options.push_back(fmt::format("{}{}", plot.symbol, a));
  const auto selector = [&](const char* name, std::size_t first, const char* label) {
    return Json{{"name", name},
                {"value", options[std::min(first, options.size() - 1)]},
                {"bind", {{"input", "select"}, {"options", options}, {"labels", plot.titles}, {"name", label}}}};
  };
  if (!chart.contains("params")) chart["params"] = Json::array();
  chart["params"].push_back(selector("across", 0, "across "));
  chart["params"].push_back(selector("up", 1, "up "));
  if (!chart.contains("transform")) chart["transform"] = Json::array();
  chart["transform"].push_back({{"calculate", "datum[across]"}, {"as", "x"}});
  chart["transform"].push_back({{"calculate", "datum[up]"}, {"as", "y"}});
}

// The title of the component that a selector holds.
Json chosenTitle(const ScorePlot& plot, const char* selector) {
  std::string expression = "{";
  for (std::size_t a = 0; a < plot.titles.size(); ++a)
    expression += fmt::format("{}{}{}: {}", a > 0 ? ", " : "", plot.symbol, a + 1, Json(plot.titles[a]).dump());
  return {{"title", {{"expr", expression + "}[" + selector + "]"}}}};
}

Json across(const ScorePlot& plot) { return with(quantitative("x", ""), "axis", chosenTitle(plot, "across")); }
Json up(const ScorePlot& plot) { return with(quantitative("y", ""), "axis", chosenTitle(plot, "up")); }

Json ellipse(const ScorePlot& plot) {
  constexpr double kStep = 2 * std::numbers::pi / 60;
  std::string radii = "{";
  for (std::size_t a = 0; a < plot.radii.size(); ++a)
    radii += fmt::format("{}{}{}: {}", a > 0 ? ", " : "", plot.symbol, a + 1, exact(plot.radii[a]));
  radii += "}";
  const auto point = [&](const char* selector, const char* wave) {
    return fmt::format("{}[{}] * {}(datum.angle)", radii, selector, wave);
  };
  return {
      {"data", {{"sequence", {{"start", 0}, {"stop", 6.3}, {"step", kStep}, {"as", "angle"}}}}},
      {"transform", Json::array({{{"calculate", point("across", "cos")}, {"as", "x"}},
                                 {{"calculate", point("up", "sin")}, {"as", "y"}}})},
      {"mark", {{"type", "line"}, {"color", kLine.light}, {"strokeWidth", 1}, {"strokeDash", {5, 4}}}},
      {"encoding", {{"x", across(plot)}, {"y", up(plot)}, {"order", {{"field", "angle"}, {"type", "quantitative"}}}}}};
}

Json axes() {
  return {{"data", {{"values", Json::array({{{"zero", 0}}})}}},
          {"layer", Json::array({{{"mark", {{"type", "rule"}, {"strokeWidth", 0.7}}},
                                  {"encoding", {{"x", {{"datum", 0}, {"type", "quantitative"}}}}}},
                                 {{"mark", {{"type", "rule"}, {"strokeWidth", 0.7}}},
                                  {"encoding", {{"y", {{"datum", 0}, {"type", "quantitative"}}}}}}})}};
}

// Colour and shape by the rows' group, or by their role.
void groupMarks(const ScorePlot& plot, Json& encoding) {
  Json names = Json::array(), colours = Json::array(), shapes = Json::array();
  if (!plot.group.empty())
    for (std::size_t g = 0; g < plot.groups.size(); ++g) {
      names.push_back(plot.groups[g]);
      colours.push_back(groupColour(g).light);
      shapes.push_back(groupShape(g));
    }
  else if (plot.predicted) {
    names = {"model", "predicted"};
    colours = {kStrong.light, kOther.light};
    shapes = {"circle", "triangle-up"};
  } else {
    encoding["color"] = {{"value", kStrong.light}};
    return;
  }
  const std::string field = plot.group.empty() ? "role" : plot.group;
  const auto channel = [&](const Json& range) {
    return Json{
        {"field", field}, {"type", "nominal"}, {"title", nullptr}, {"scale", {{"domain", names}, {"range", range}}}};
  };
  encoding["color"] = channel(colours);
  encoding["shape"] = channel(shapes);
}

Json circles(const ScorePlot& plot, const Json& colour) {
  return {{"data", {{"name", plot.circles}}},
          {"transform", Json::array({{{"calculate", "datum[across] + datum.cos"}, {"as", "x"}},
                                     {{"calculate", "datum[up] + datum.sin"}, {"as", "y"}}})},
          {"mark", {{"type", "line"}, {"strokeWidth", 1}, {"strokeDash", {5, 4}}}},
          {"encoding",
           {{"x", across(plot)},
            {"y", up(plot)},
            {"color", colour},
            {"order", {{"field", "angle"}, {"type", "quantitative"}}}}}};
}

// The groups' means, as larger marks with an outline.
Json centres(const ScorePlot& plot, Json encoding) {
  encoding["tooltip"] = tips({{plot.group, "mean of", false}});
  return {{"data", {{"name", plot.centres}}},
          {"transform",
           Json::array({{{"calculate", "datum[across]"}, {"as", "x"}}, {{"calculate", "datum[up]"}, {"as", "y"}}})},
          {"mark", {{"type", "point"}, {"size", 190}, {"stroke", kInk.light}, {"strokeWidth", 1.6}, {"opacity", 1}}},
          {"encoding", std::move(encoding)}};
}

}  // namespace

std::vector<double> numbersInNames(const std::vector<std::string>& names) {
  if (names.size() < kFewNames) return {};
  const std::optional<NumberedName> first = takenApart(names.front());
  std::vector<double> numbers;
  for (const std::string& name : names) {
    const std::optional<NumberedName> one = takenApart(name);
    if (!one || one->before != first->before || one->after != first->after) return {};
    numbers.push_back(one->number);
  }
  const bool ordered = std::adjacent_find(numbers.begin(), numbers.end(), std::greater_equal<>()) == numbers.end() ||
                       std::adjacent_find(numbers.begin(), numbers.end(), std::less_equal<>()) == numbers.end();
  return ordered ? numbers : std::vector<double>();
}

std::string unitOfNames(const std::vector<std::string>& names) {
  const std::optional<NumberedName> first = takenApart(names.front());
  std::string unit = first ? first->before + " " + first->after : std::string();
  unit.erase(0, unit.find_first_not_of(" ._("));
  unit.erase(std::min(unit.find_last_not_of(" ._)") + 1, unit.size()));
  return unit;
}

Json positions(const std::vector<std::string>& names) {
  return with(quantitative("position", unitOfNames(names)), "axis", {{"format", "~r"}});  // 1500, not 1,500
}

Json scoreChart(const ScorePlot& plot) {
  Json marks{{"mark", {{"type", "point"}, {"fillOpacity", 0.85}}},
             {"encoding", {{"x", across(plot)}, {"y", up(plot)}, {"tooltip", plot.tooltip}}}};
  groupMarks(plot, marks["encoding"]);
  Json layers = Json::array({axes()});
  if (!plot.radii.empty()) layers.push_back(ellipse(plot));
  if (!plot.circles.empty()) layers.push_back(circles(plot, marks["encoding"]["color"]));
  layers.push_back(marks);
  if (!plot.centres.empty()) layers.push_back(centres(plot, marks["encoding"]));
  Json chart = layered("rows", 360, std::move(layers));
  chooseTwo(plot, chart);
  return chart;
}

Json scoreChartByColumn(const ScorePlot& plot, const std::vector<std::string>& columns) {
  Json fields = Json::array();
  for (std::size_t j = 0; j < columns.size(); ++j) fields.push_back(fmt::format("c{}", j));
  Json marks{{"mark", {{"type", "point"}, {"fillOpacity", 0.95}, {"stroke", kLine.light}, {"strokeWidth", 0.4}}},
             {"encoding",
              {{"x", across(plot)},
               {"y", up(plot)},
               {"color",
                {{"field", "shade"},
                 {"type", "quantitative"},
                 {"title", nullptr},
                 {"scale", {{"scheme", {{"name", "viridis"}, {"extent", {0.15, 1}}}}, {"reverse", true}}}}},
               {"tooltip", plot.tooltip}}}};
  marks["encoding"]["tooltip"].push_back(
      {{"field", "shade"}, {"type", "quantitative"}, {"title", "value"}, {"format", ".4~g"}});
  Json chart = layered("rows", 360, Json::array({axes(), std::move(marks)}));
  chart["params"] = Json::array(
      {{{"name", "column"},
        {"value", "c0"},
        {"bind", {{"input", "select"}, {"options", fields}, {"labels", columns}, {"name", "colour by "}}}}});
  chart["transform"] = Json::array({{{"calculate", "datum[column]"}, {"as", "shade"}}});
  chooseTwo(plot, chart);
  return chart;
}

Json distanceChart(const std::optional<double>& t2Limit, const std::optional<double>& qLimit, bool predicted) {
  const Series model{"model", &kStrong, "circle"}, out{"predicted", &kOther, "triangle-up"};
  std::vector<Series> all{model};
  if (predicted) all.push_back(out);
  const Json tooltip = tips({{"name", "row", false}, {"t2", "T²"}, {"q", "Q"}});
  const Json x = fromZero("t2", "T², within the model plane"), y = fromZero("q", "Q, from the model plane");
  Json layers = Json::array();
  if (t2Limit) layers.push_back(limitLine("x", *t2Limit));
  if (qLimit) layers.push_back(limitLine("y", *qLimit));
  for (const Series& series : all) {
    layers.push_back(onlyWhere(points(series, all, x, y, tooltip), fmt::format("datum.role == '{}'", series.label)));
  }
  return layered("rows", 320, std::move(layers));
}

std::vector<double> ellipseRadii(const std::vector<double>& variances, std::size_t n, double level) {
  const std::optional<double> limit = t2LimitOf(2, static_cast<double>(n), level);
  std::vector<double> radii;
  if (limit)
    for (const double variance : variances) radii.push_back(std::sqrt(*limit * variance));
  return radii;
}

ColouringColumns colouringColumns(const ReportContext& context, const UsedData& used,
                                  const std::vector<std::string>& rows) {
  ColouringColumns result;
  if (context.table == nullptr || rows.empty()) return result;
  const TableView& table = *context.table;
  const TableView::Column* id = used.idColumn.empty() ? nullptr : table.find(used.idColumn);
  std::vector<Remark> ignored;
  const std::vector<std::string> names = rowNames(table, id, ignored);
  std::unordered_map<std::string_view, std::size_t> rowOf;
  for (std::size_t i = 0; i < names.size(); ++i) rowOf.emplace(names[i], i);

  // Responses and the like first: they are what the plane is asked about.
  std::vector<const TableView::Column*> columns;
  std::unordered_set<std::string_view> descriptors(used.descriptors.begin(), used.descriptors.end());
  for (const SameInformation& repeat : used.setAside) descriptors.insert(repeat.setAside);
  for (const bool descriptor : {false, true})
    for (const TableView::Column& column : table.columns())
      if (column.kind == ColumnKind::Numeric && column.name != used.idColumn &&
          descriptors.contains(column.name) == descriptor)
        columns.push_back(&column);
  columns.resize(std::min(columns.size(), std::max<std::size_t>(1, kMostColourCells / rows.size())));

  for (const TableView::Column* column : columns) {
    TableColumn values{.name = fmt::format("c{}", result.names.size())};
    for (const std::string& row : rows) {
      const auto found = rowOf.find(row);
      values.numbers.push_back(found == rowOf.end() ? std::numeric_limits<double>::quiet_NaN()
                                                    : column->numbers[found->second]);
    }
    result.names.push_back(column->name);
    result.columns.push_back(std::move(values));
  }
  return result;
}

}  // namespace studystats
