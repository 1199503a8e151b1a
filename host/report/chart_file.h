// Charts as they lie in report/charts/: Vega-Lite files that open in Vega's editor with sample data. A page gives
// values to their params, and its own data by name; nothing else of a chart is changed.
#pragma once

#include "host/result/part.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace studystats {

struct ChartParam {
  const char* name;
  Cell value;
  std::vector<std::string> choices{};  // what a selector offers by number; fewer than two: there is no selector
};

// The chart of report/charts/NAME.vl.json with these values in place of its samples. Each must be one of its params.
std::string filledChart(std::string_view name, std::initializer_list<ChartParam> params);

}  // namespace studystats
