// What the pages of principal components and of partial least squares share: charts over pairs of components, rows
// against their limits, and descriptors in an order of their own, such as wavelengths.
#pragma once

#include <studystats/host/report.h>

#include "host/report/charts.h"

#include <optional>
#include <string>
#include <vector>

namespace studystats {

constexpr std::size_t kNamedBars = 40;  // descriptors that a chart names, one a line

// "900  nm" ... "1700  nm": the numbers in the names when they ascend or descend and all else is equal; empty when the
// names are not of this kind, or few.
std::vector<double> numbersInNames(const std::vector<std::string>& names);

// The axis of those numbers, in the field "position", titled by what the names have in common beside them: "nm".
Json positions(const std::vector<std::string>& names);
std::string unitOfNames(const std::vector<std::string>& names);

// The scores of rows on two components chosen on the page, with the ellipse within which a row lies with probability
// `level`. `radii`: half axes, one a component. Colours by `group`, a field of the rows, unless it is empty.
struct ScorePlot {
  std::string symbol{};               // "PC": fields PC1, PC2, ...
  std::vector<std::string> titles{};  // "PC1 (36.2 %)"
  std::vector<double> radii{};        // empty: no ellipse
  std::string group{};                // a field
  std::vector<std::string> groups{};  // its values
  bool predicted = false;             // rows kept out are among them
  std::string circles{};              // data: circles, fields cos, sin (times their radius) and angle ...
  std::string centres{};              // ... and their middles; both with the group and the fields of the scores
  Json tooltip{};
};
Json scoreChart(const ScorePlot& plot);

// The same, coloured by the value of a column chosen on the page: fields c0, c1, ... called `columns`.
Json scoreChartByColumn(const ScorePlot& plot, const std::vector<std::string>& columns);

// Squared distance within the model plane against that from it, with their limits.
Json distanceChart(const std::optional<double>& t2Limit, const std::optional<double>& qLimit, bool predicted);

// The half axes of the ellipse of `level` for n rows whose scores have these variances; none for few rows.
std::vector<double> ellipseRadii(const std::vector<double>& variances, std::size_t n, double level);

// Values of the table's numeric columns for rows named `rows`, as fields c0, c1, ...: as many columns as stay within a
// number of cells that a page can hold.
struct ColouringColumns {
  std::vector<std::string> names;
  std::vector<TableColumn> columns;
};
ColouringColumns colouringColumns(const ReportContext& context, const UsedData& used,
                                  const std::vector<std::string>& rows);

}  // namespace studystats
