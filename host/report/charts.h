// The pieces of which the charts are put together: Vega-Lite channels, marks and scales.
#pragma once

#include <studystats/host/report.h>

#include "host/json.h"
#include "host/report/colours.h"

#include <initializer_list>
#include <span>
#include <string>
#include <vector>

namespace studystats {

Json quantitative(const std::string& field, const std::string& title);  // its scale need not begin at zero
Json fromZero(const std::string& field, const std::string& title);
Json named(const std::string& field, const std::string& title);     // names in the order of the data
Json numbered(const std::string& field, const std::string& title);  // whole numbers, a place each
Json with(Json channel, const std::string& key, Json value);        // the channel with one more property

// A line of the text that appears over a mark.
struct Tip {
  std::string field;
  std::string title;
  bool number = true;
};
Json tips(std::initializer_list<Tip> lines);

// Marks that belong together, named in the legend.
struct Series {
  std::string label;
  const Colour* colour;
  const char* shape;
};

// Points of one series; `all` are those of the whole chart, so that its layers share one legend.
Json points(const Series& series, std::span<const Series> all, Json x, Json y, Json tooltip);

// A dashed line right across the chart, where x or y has this value.
Json limitLine(const char* axis, double value);

// The layer with only those data for which the expression holds.
Json onlyWhere(Json layer, const std::string& test);

// Layers over the data called `data`, as wide as the page has room.
Json layered(const std::string& data, int height, Json layers);

// The same with so many names on the vertical axis, each a line of `step` pixels.
Json lines(const std::string& data, int step, std::size_t names, Json layers);

// Charts beside each other, each at least so wide and with so much room for its axes; the page chooses how many a line.
Json panels(const std::string& data, Json views, int least, int gap);

std::string finished(const Json& chart);

// The smallest and the largest of the numbers that are numbers, and a margin of one in thirty to both sides.
struct Extent {
  double low = 0, high = 1;
  Json domain() const { return Json::array({low, high}); }
};
Extent extentOf(std::initializer_list<const TableColumn*> columns);

const TableColumn& column(const Table& data, const std::string& name);

}  // namespace studystats
