#include "host/report/charts.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace studystats {

Json quantitative(const std::string& field, const std::string& title) {
  return {{"field", field}, {"type", "quantitative"}, {"title", title}, {"scale", {{"zero", false}}}};
}

Json fromZero(const std::string& field, const std::string& title) {
  return {{"field", field}, {"type", "quantitative"}, {"title", title}};
}

Json named(const std::string& field, const std::string& title) {
  return {
      {"field", field}, {"type", "nominal"}, {"title", title.empty() ? Json(nullptr) : Json(title)}, {"sort", nullptr}};
}

Json numbered(const std::string& field, const std::string& title) {
  return {{"field", field}, {"type", "ordinal"}, {"title", title}, {"axis", {{"labelAngle", 0}}}};
}

Json with(Json channel, const std::string& key, Json value) {
  channel[key] = std::move(value);
  return channel;
}

Json tips(std::initializer_list<Tip> lines) {
  Json list = Json::array();
  for (const Tip& line : lines) {
    Json tip{{"field", line.field}, {"type", line.number ? "quantitative" : "nominal"}, {"title", line.title}};
    if (line.number) tip["format"] = ".4~g";
    list.push_back(std::move(tip));
  }
  return list;
}

Json points(const Series& series, std::span<const Series> all, Json x, Json y, Json tooltip) {
  Json labels = Json::array(), colours = Json::array(), shapes = Json::array();
  for (const Series& one : all) {
    labels.push_back(one.label);
    colours.push_back(one.colour->light);
    shapes.push_back(one.shape);
  }
  const auto channel = [&](const Json& range) {  // of one field, so that colour and shape share a legend
    Json json{{"field", "series"},
              {"type", "nominal"},
              {"title", nullptr},
              {"scale", {{"domain", labels}, {"range", range}}}};
    if (all.size() == 1) json["legend"] = nullptr;
    return json;
  };
  return {{"transform", Json::array({{{"calculate", Json(series.label).dump()}, {"as", "series"}}})},
          {"mark", {{"type", "point"}}},
          {"encoding",
           {{"x", std::move(x)},
            {"y", std::move(y)},
            {"color", channel(colours)},
            {"shape", channel(shapes)},
            {"tooltip", std::move(tooltip)}}}};
}

Json limitLine(const char* axis, double value) {
  return {{"data", {{"values", Json::array({{{"limit", value}}})}}},
          {"mark", {{"type", "rule"}, {"strokeDash", {5, 4}}}},
          {"encoding", {{axis, {{"field", "limit"}, {"type", "quantitative"}}}}}};
}

Json onlyWhere(Json layer, const std::string& test) {
  if (!layer.contains("transform")) layer["transform"] = Json::array();
  layer["transform"].push_back({{"filter", test}});
  return layer;
}

Json layered(const std::string& data, int height, Json layers) {
  return {{"data", {{"name", data}}}, {"width", "container"}, {"height", height}, {"layer", std::move(layers)}};
}

Json lines(const std::string& data, int step, std::size_t names, Json layers) {
  return layered(data, step * static_cast<int>(std::max<std::size_t>(names, 2)), std::move(layers));
}

Json panels(const std::string& data, Json views, int least, int gap) {
  constexpr int kBeside = 3;
  for (Json& view : views) view["width"] = std::max(least, 140);
  return {{"data", {{"name", data}}},
          {"concat", std::move(views)},
          {"columns", kBeside},
          {"spacing", 12},
          {"usermeta", {{"least", least}, {"gap", gap}}}};
}

std::string finished(const Json& chart) { return chart.dump(-1, ' ', false, Json::error_handler_t::replace); }

Extent extentOf(std::initializer_list<const TableColumn*> columns) {
  double low = std::numeric_limits<double>::infinity(), high = -low;
  for (const TableColumn* column : columns)
    for (const double value : column->numbers)
      if (std::isfinite(value)) {
        low = std::min(low, value);
        high = std::max(high, value);
      }
  if (low > high) return {};
  const double margin = high > low ? (high - low) / 30 : std::max(std::abs(high) / 30, 0.5);
  return {low - margin, high + margin};
}

const TableColumn& column(const Table& data, const std::string& name) { return *data.find(name); }

}  // namespace studystats
