// The figures of partial least squares.
#include "host/report/pls_page.h"
#include "host/report/predictions.h"

#include <fmt/format.h>

#include <algorithm>

namespace studystats {
namespace {

using Pls = PartialLeastSquares;

PredictedRows predictionsOf(const Pls& result, const Table& rows) {
  const auto any = [&](auto test) { return std::any_of(result.rows.begin(), result.rows.end(), test); };
  return {responseNames(result), &rows, any([](const PlsRow& row) { return !row.heldOut.empty(); }),
          any([](const PlsRow& row) {
            return row.role == Role::Predicted && std::any_of(row.observed.begin(), row.observed.end(),
                                                              [](const auto& value) { return value.has_value(); });
          }),
          heldOutByDraws(result.plan, result.rows, kMeanOfPredictions)};
}

ReportFigure componentFigures(const Pls& result) {
  const Series fitted{"R², fitted", &kPale, "square"}, heldOut{"q², cross-validated", &kStrong, "circle"};
  const std::vector<Series> all{fitted, heldOut};
  const Json x = numbered("component", "components");
  const Json tooltip = tips({{"component", "components"},
                             {"r2", "R²"},
                             {"q2", "q²"},
                             {"heldOutRmse", "RMSE, cross-validated"},
                             {"ratio", "ratio"}});
  Json layers = Json::array({{{"data", {{"values", Json::array({{{"component", result.kept}}})}}},
                              {"mark", {{"type", "rule"}, {"strokeDash", {5, 4}}}},
                              {"encoding", {{"x", x}}}}});
  for (const auto& [series, field] : {std::pair{fitted, "r2"}, std::pair{heldOut, "q2"}}) {
    Json marks = points(series, all, x, quantitative(field, "share of the variation explained"), tooltip);
    Json line = marks;
    line["mark"] = {{"type", "line"}};
    line["encoding"].erase("shape");
    line["encoding"].erase("tooltip");
    marks["mark"]["size"] = 60;
    layers.push_back(std::move(line));
    layers.push_back(std::move(marks));
  }
  Json chart = layered("components", 300, std::move(layers));
  chooseResponse(responseNames(result), chart);
  for (Json& layer : chart["layer"])
    if (!layer.contains("data")) layer = onlyWhere(std::move(layer), "datum.number == response");
  return {"components-figure", "What each component adds",
          fmt::format("R² and q² of models with 1 to {} components; {} were chosen.", result.computed, result.kept),
          "R² never falls. Where q² stops rising, further components fit noise. The dashed line is the model that was "
          "chosen.",
          finished(chart)};
}

// Coefficients or the like of the chosen response: a curve over descriptors with an order of their own, else the
// largest, one a line.
ReportFigure coefficients(const Pls& result) {
  const std::vector<std::string>& names = result.used.descriptors;
  const bool curve = !numbersInNames(names).empty();
  const Json tooltip = tips({{"descriptor", "descriptor", false},
                             {"prepared", "coefficient, prepared"},
                             {"coefficient", "coefficient"},
                             {"error", "jackknife error"},
                             {"vip", "VIP"}});
  const char* title = "coefficient ± jackknife error, prepared units";
  Json chart;
  std::string cut;
  if (curve) {
    const Json x = positions(names);
    chart = layered(
        "descriptors", 300,
        Json::array({limitLine("y", 0),
                     {{"mark", {{"type", "area"}, {"color", kPale.light}, {"opacity", 0.6}}},
                      {"encoding", {{"x", x}, {"y", quantitative("low", title)}, {"y2", {{"field", "high"}}}}}},
                     {{"mark", {{"type", "line"}, {"strokeWidth", 1.2}}},
                      {"encoding", {{"x", x}, {"y", quantitative("prepared", title)}, {"tooltip", tooltip}}}}}));
  } else {
    const Json y = with(named("descriptor", ""), "axis", {{"labelLimit", 190}});
    chart = lines("descriptors", 20, std::min(names.size(), kNamedBars),
                  Json::array({limitLine("x", 0),
                               {{"mark", {{"type", "rule"}, {"color", kStrong.light}, {"strokeWidth", 2}}},
                                {"encoding", {{"y", y}, {"x", fromZero("low", title)}, {"x2", {{"field", "high"}}}}}},
                               {{"mark", {{"type", "point"}, {"size", 60}, {"color", kStrong.light}}},
                                {"encoding", {{"y", y}, {"x", fromZero("prepared", title)}, {"tooltip", tooltip}}}}}));
    if (names.size() > kNamedBars) cut = fmt::format(" The {} with the largest VIP of {}.", kNamedBars, names.size());
  }
  chooseResponse(responseNames(result), chart);
  chart["transform"] = Json::array();
  if (!curve) {
    chart["transform"].push_back({{"window", Json::array({{{"op", "row_number"}, {"as", "rank"}}})}});
    chart["transform"].push_back({{"filter", fmt::format("datum.rank <= {}", kNamedBars)}});
  }
  if (result.responses.size() > 1)
    for (const char* field : {"coefficient", "error", "prepared", "low", "high"})
      chart["transform"].push_back({{"calculate", fmt::format("datum['{}' + response]", field)}, {"as", field}});
  return {"coefficients-figure",
          "Coefficients and their jackknife errors",
          fmt::format("Coefficients of {} descriptors with the spread over the folds.", names.size()),
          "Where the band or whisker crosses zero, the sign depends on which rows are there." + cut,
          finished(chart),
          curve};
}

ReportFigure importance(const Pls& result) {
  const std::vector<std::string>& names = result.used.descriptors;
  const bool curve = !numbersInNames(names).empty();
  const Json tooltip = tips({{"descriptor", "descriptor", false}, {"vip", "VIP"}});
  Json chart;
  std::string cut;
  if (curve) {
    chart = layered(
        "descriptors", 240,
        Json::array({limitLine("y", 1),
                     {{"mark", {{"type", "line"}, {"strokeWidth", 1.2}}},
                      {"encoding", {{"x", positions(names)}, {"y", fromZero("vip", "VIP")}, {"tooltip", tooltip}}}}}));
  } else {
    chart =
        lines("descriptors", 18, std::min(names.size(), kNamedBars),
              Json::array(
                  {{{"mark", {{"type", "bar"}}},
                    {"encoding",
                     {{"y", with(named("descriptor", ""), "axis", {{"labelLimit", 190}})},
                      {"x", fromZero("vip", "VIP")},
                      {"color",
                       {{"condition", {{"test", "datum.vip > 1"}, {"value", kStrong.light}}}, {"value", kPale.light}}},
                      {"tooltip", tooltip}}}},
                   limitLine("x", 1)}));
    chart["transform"] = Json::array({{{"window", Json::array({{{"op", "row_number"}, {"as", "rank"}}})}},
                                      {{"filter", fmt::format("datum.rank <= {}", kNamedBars)}}});
    if (names.size() > kNamedBars) cut = fmt::format(" The {} largest of {}.", kNamedBars, names.size());
  }
  return {"vip",
          "Variable importance (VIP)",
          fmt::format("The importance in the projection of {} descriptors.", names.size()),
          "The squares of all VIP average 1: above the dashed line a descriptor counts more than the average." + cut,
          finished(chart),
          curve};
}

std::vector<double> scoreVariances(const Pls& result) {
  std::vector<double> variances(kept(result), 0);
  double rows = 0;
  for (const PlsRow& row : result.rows) {
    if (row.role != Role::Model) continue;
    ++rows;
    for (std::size_t a = 0; a < std::min(variances.size(), row.scores.size()); ++a)
      variances[a] += row.scores[a] * row.scores[a];
  }
  for (double& variance : variances) variance /= std::max(rows - 1, 1.0);
  return variances;
}

ScorePlot scorePlot(const Pls& result) {
  ScorePlot plot{.symbol = "score", .predicted = !result.used.predictedRows.empty()};
  for (std::size_t a = 0; a < kept(result); ++a) {
    const double before = a > 0 ? result.explained[a - 1] : 0;
    plot.titles.push_back(fmt::format("t{} ({} of X)", a + 1, percent(result.explained[a] - before)));
  }
  plot.radii = ellipseRadii(scoreVariances(result), result.used.rows.size(), result.level);
  plot.tooltip = tips({{"name", "row", false}, {"x", "across"}, {"y", "up"}, {"t2", "T²"}, {"q", "Q"}});
  return plot;
}

}  // namespace

std::vector<ReportFigure> plsFigures(const Pls& result, const Table& rows, const ColouringColumns& colours) {
  std::vector<ReportFigure> figures{observedPredicted(predictionsOf(result, rows)), componentFigures(result)};
  figures.push_back(residuals(predictionsOf(result, rows)));
  figures.push_back(coefficients(result));
  figures.push_back(importance(result));
  if (result.kept > 1) {
    figures.push_back(
        {"scores", "Scores",
         fmt::format("Scatter plot of the scores of {} rows on two components that can be chosen.", rows.rows()),
         fmt::format("Rows near each other are alike in what predicts. Outside the dashed {} ellipse a row is "
                     "unusual.",
                     percent(result.level, 0)),
         finished(scoreChart(scorePlot(result)))});
    if (!colours.names.empty())
      figures.push_back({"scores-by-column", "Scores, coloured by a column",
                         "Scatter plot of the scores, coloured by the values of a column that can be chosen.",
                         "A colour that runs in one direction tells what that direction means.",
                         finished(scoreChartByColumn(scorePlot(result), colours.names))});
  }
  if (result.t2Limit || result.qLimit)
    figures.push_back(
        {"distances", "Distances within and from the model plane",
         fmt::format("Scatter plot of Q against T² for {} rows, with their limits.", rows.rows()),
         fmt::format("Right of the {} limit a row is extreme in what the components describe; above it, it holds "
                     "something that they do not.",
                     percent(result.level, 0)),
         finished(distanceChart(result.t2Limit, result.qLimit, !result.used.predictedRows.empty()))});
  return figures;
}

}  // namespace studystats
