// Results as JSON: numbers in their shortest exact form, not-a-number as null.
#pragma once

#include <studystats/host/data.h>
#include <studystats/host/validation.h>

#include <nlohmann/json.hpp>

#include <cmath>
#include <optional>
#include <span>

namespace studystats {

using Json = nlohmann::ordered_json;

inline Json jsonNumber(double value) { return std::isfinite(value) ? Json(value) : Json(nullptr); }
inline Json jsonNumber(const std::optional<double>& value) { return value ? jsonNumber(*value) : Json(nullptr); }
Json jsonNumbers(std::span<const double> values);
Json jsonGrid(const Grid& grid);  // a list of rows
Json jsonRemarks(const std::vector<Remark>& remarks);
Json jsonSame(const std::vector<SameInformation>& same);
Json jsonUsed(const UsedData& used);
Json jsonPlan(const FoldPlan& plan);
const char* nameOf(Role role);           // "model", "predicted"
std::string jsonText(const Json& json);  // indented, invalid UTF-8 replaced, a line end at the end

}  // namespace studystats
