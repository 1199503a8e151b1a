// Partial least squares as a page: what each component adds, fitted and cross-validated, and what the model rests on.
#include "host/folds.h"
#include "host/report/components.h"
#include "host/report/data.h"
#include "host/report/page_parts.h"
#include "host/report/predictions.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace studystats {
namespace {

using Pls = PartialLeastSquares;

std::size_t kept(const Pls& result) { return static_cast<std::size_t>(result.kept); }

std::string keptText(const Pls& result) { return counted(kept(result), "component", "components"); }

const PlsFigures& atKept(const Pls& result, const PlsResponse& response) {
  return response.components[kept(result) - 1];
}

std::vector<std::string> responseNames(const Pls& result) {
  std::vector<std::string> names;
  for (const PlsResponse& response : result.responses) names.push_back(response.name);
  return names;
}

std::string errorText(const Pls& result, const PlsResponse& response) {
  return significant(atKept(result, response).crossValidatedRmse, 3);
}

std::string answerOf(const Pls& result) {
  const PlsResponse& first = result.responses.front();
  if (result.responses.size() == 1) {
    const double q2 = atKept(result, first).q2;
    const std::string text =
        fmt::format("{} of rows left out is predicted with an error of about {} (cross-validated RMSE, {})", first.name,
                    errorText(result, first), keptText(result));
    return q2 <= 0 ? text + fmt::format(", no better than by the mean (q² = {}).", explainedText(q2))
                   : text + fmt::format("; the model explains {} of its variation there (q² = {}).", percent(q2, 0),
                                        explainedText(q2));
  }
  std::vector<std::string> parts;
  for (const PlsResponse& response : result.responses)
    parts.push_back(fmt::format("{} {} (q² = {})", response.name, errorText(result, response),
                                explainedText(atKept(result, response).q2)));
  return fmt::format("Rows left out are predicted with these errors (cross-validated RMSE, {}): {}.", keptText(result),
                     listed(parts, 4));
}

ReportFrame frameOf(const Pls& result) {
  const bool known = std::any_of(result.responses.begin(), result.responses.end(),
                                 [](const PlsResponse& response) { return response.predicted.has_value(); });
  ReportFrame frame{{"", "fitted", "cross-validated"}, {}};
  if (known) frame.headings.push_back("kept out");
  for (const PlsResponse& response : result.responses) {
    const PlsFigures& figures = atKept(result, response);
    const std::string whose = result.responses.size() > 1 ? response.name + ": " : std::string();
    frame.rows.push_back({whose + "R² | q²", explainedText(figures.r2), explainedText(figures.q2)});
    frame.rows.push_back({whose.empty() ? fmt::format("RMSE ({})", response.name) : whose + "RMSE",
                          significant(figures.rmse, 3), significant(figures.crossValidatedRmse, 3)});
    if (!known) continue;
    frame.rows.end()[-2].push_back("");
    frame.rows.back().push_back(response.predicted ? fmt::format("{} ({})", significant(response.predicted->rmse, 3),
                                                                 counted(response.predicted->rows, "row", "rows"))
                                                   : "");
  }
  return frame;
}

Table componentsOf(const Pls& result) {
  struct Entry {
    std::size_t response, component;
  };
  std::vector<Entry> all;
  for (std::size_t k = 0; k < result.responses.size(); ++k)
    for (std::size_t a = 0; a < result.responses[k].components.size(); ++a) all.push_back({k, a});
  const auto figures = [&](const Entry& one) -> const PlsFigures& {
    return result.responses[one.response].components[one.component];
  };
  using One = const Entry&;
  ReportData data("components");
  data.texts("response", all, [&](One one) { return result.responses[one.response].name; })
      .numbers("number", all, [](One one) { return one.response; })
      .numbers("component", all, [](One one) { return one.component + 1; })
      .texts("kept", all, [&](One one) { return one.component + 1 == kept(result) ? "chosen" : ""; })
      .numbers("explained", all,
               [&](One one) {
                 return one.component < result.explained.size() ? std::optional(result.explained[one.component])
                                                                : std::nullopt;
               })
      .numbers("r2", all, [&](One one) { return figures(one).r2; })
      .numbers("q2", all, [&](One one) { return figures(one).q2; })
      .numbers("rmse", all, [&](One one) { return figures(one).rmse; })
      .numbers("heldOutRmse", all, [&](One one) { return figures(one).crossValidatedRmse; })
      .numbers("press", all, [&](One one) { return figures(one).press; })
      .numbers("ratio", all, [&](One one) { return figures(one).ratio; });
  return data.take();
}

std::optional<double> heldOutOf(const Pls& result, const PlsRow& row, std::size_t response) {
  if (row.heldOut.size() <= response || row.heldOut[response].size() < kept(result)) return std::nullopt;
  return row.heldOut[response][kept(result) - 1];
}

Table rowsOf(const Pls& result, const ColouringColumns& colours) {
  using Row = const PlsRow*;
  const auto rows = shown(result.rows);
  ReportData data = rowData(result.rows);
  const std::size_t count = result.responses.size();
  for (std::size_t k = 0; k < count; ++k) {
    const auto less = [](const std::optional<double>& a, const std::optional<double>& b) {
      return a && b ? std::optional(*a - *b) : std::nullopt;
    };
    data.numbers(fieldOf("observed", k, count), rows, [k](Row row) { return row->observed[k]; })
        .numbers(fieldOf("heldOut", k, count), rows, [&, k](Row row) { return heldOutOf(result, *row, k); })
        .numbers(fieldOf("heldOutError", k, count), rows,
                 [&, k](Row row) { return less(row->observed[k], heldOutOf(result, *row, k)); })
        .numbers(fieldOf("fitted", k, count), rows, [k](Row row) { return row->fitted[k]; })
        .numbers(fieldOf("residual", k, count), rows,
                 [&, k](Row row) { return less(row->observed[k], row->fitted[k]); });
  }
  data.numbers("fold", rows,
               [](Row row) { return row->fold > 0 ? std::optional(static_cast<double>(row->fold)) : std::nullopt; });
  for (std::size_t a = 0; a < kept(result); ++a)
    data.numbers(fmt::format("score{}", a + 1), rows,
                 [a](Row row) { return a < row->scores.size() ? std::optional(row->scores[a]) : std::nullopt; });
  data.numbers("t2", rows, [](Row row) { return row->t2; }).numbers("q", rows, [](Row row) { return row->q; });
  Table table = data.take();
  table.columns.insert(table.columns.end(), colours.columns.begin(), colours.columns.end());
  return table;
}

// The jackknife error in the unit of the prepared coefficient.
std::optional<double> preparedError(const PlsResponse& response, std::size_t j) {
  if (response.coefficients[j] == 0) return std::nullopt;
  return std::abs(response.coefficientErrors[j] * response.preparedCoefficients[j] / response.coefficients[j]);
}

Table descriptorsOf(const Pls& result) {
  std::vector<std::size_t> numbers(result.used.descriptors.size());
  std::iota(numbers.begin(), numbers.end(), std::size_t{0});
  std::stable_sort(numbers.begin(), numbers.end(),
                   [&](std::size_t a, std::size_t b) { return result.vip[a] > result.vip[b]; });
  const std::vector<double> positions = numbersInNames(result.used.descriptors);
  const std::size_t count = result.responses.size();
  ReportData data("descriptors");
  data.texts("key", numbers, [&](std::size_t j) { return "d:" + result.used.descriptors[j]; })
      .texts("descriptor", numbers, [&](std::size_t j) { return result.used.descriptors[j]; })
      .numbers("vip", numbers, [&](std::size_t j) { return result.vip[j]; });
  for (std::size_t k = 0; k < count; ++k) {
    const PlsResponse& response = result.responses[k];
    const auto end = [&](std::size_t j, double sign) {
      const std::optional<double> error = preparedError(response, j);
      return error ? std::optional(response.preparedCoefficients[j] + sign * *error) : std::nullopt;
    };
    data.numbers(fieldOf("coefficient", k, count), numbers, [&](std::size_t j) { return response.coefficients[j]; })
        .numbers(fieldOf("error", k, count), numbers, [&](std::size_t j) { return response.coefficientErrors[j]; })
        .numbers(fieldOf("prepared", k, count), numbers,
                 [&](std::size_t j) { return response.preparedCoefficients[j]; })
        .numbers(fieldOf("low", k, count), numbers, [&](std::size_t j) { return end(j, -1); })
        .numbers(fieldOf("high", k, count), numbers, [&](std::size_t j) { return end(j, 1); });
  }
  if (!positions.empty()) data.numbers("position", numbers, [&](std::size_t j) { return positions[j]; });
  return data.take();
}

PredictedRows predictionsOf(const Pls& result, const Table& rows) {
  const auto any = [&](auto test) { return std::any_of(result.rows.begin(), result.rows.end(), test); };
  return {responseNames(result), &rows, any([](const PlsRow& row) { return !row.heldOut.empty(); }),
          any([](const PlsRow& row) {
            return row.role == Role::Predicted && std::any_of(row.observed.begin(), row.observed.end(),
                                                              [](const auto& value) { return value.has_value(); });
          })};
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
  plot.tooltip = tips({{"row", "row", false}, {"x", "across"}, {"y", "up"}, {"t2", "T²"}, {"q", "Q"}});
  return plot;
}

std::vector<ReportFigure> figuresOf(const Pls& result, const Table& rows, const ColouringColumns& colours) {
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

std::vector<ReportTable> tablesOf(const Pls& result) {
  const std::size_t count = result.responses.size();
  ReportTable components{"components", "Components", "", "components", {}};
  if (count > 1) components.columns.push_back({"response", "response"});
  const std::vector<ReportColumn> figures{{"component", "components", CellKind::Whole},
                                          {"kept", "choice"},
                                          {"q2", "q²", CellKind::Fixed, 4},
                                          {"r2", "R²", CellKind::Fixed, 4},
                                          {"heldOutRmse", "RMSE, cross-validated", CellKind::Number, 3},
                                          {"rmse", "RMSE, fitted", CellKind::Number, 3},
                                          {"ratio", "ratio", CellKind::Fixed, 3},
                                          {"explained", "X explained", CellKind::Share}};
  components.columns.insert(components.columns.end(), figures.begin(), figures.end());

  ReportTable descriptors{"descriptors",
                          "Descriptors",
                          "",
                          "descriptors",
                          {{"descriptor", "descriptor"}, {"vip", "VIP", CellKind::Fixed, 2}}};
  ReportTable rows{"rows", "Rows", samplingText(result.rows.size()), "rows", {{"row", rowHeading(result.used)}}};
  if (!result.used.predictedRows.empty()) rows.columns.push_back({"role", "role"});
  for (std::size_t k = 0; k < count; ++k) {
    const PlsResponse& response = result.responses[k];
    const std::string whose = count > 1 ? response.name + ", " : std::string();
    const int decimals = decimalsFor(response.sd);
    descriptors.columns.push_back({fieldOf("coefficient", k, count), whose + "coefficient", CellKind::Number, 6});
    descriptors.columns.push_back({fieldOf("error", k, count), whose + "jackknife error", CellKind::Number, 3});
    descriptors.columns.push_back({fieldOf("prepared", k, count), whose + "prepared", CellKind::Bar, 3});
    rows.columns.push_back({fieldOf("observed", k, count), whose + "observed", CellKind::Value, 8});
    rows.columns.push_back({fieldOf("heldOut", k, count), whose + "held out", CellKind::Fixed, decimals});
    rows.columns.push_back({fieldOf("heldOutError", k, count), whose + "error, held out", CellKind::Fixed, decimals});
    rows.columns.push_back({fieldOf("fitted", k, count), whose + "fitted", CellKind::Fixed, decimals});
  }
  rows.columns.push_back({"fold", "fold", CellKind::Whole});
  rows.columns.push_back({"t2", "T²", CellKind::Number, 3});
  rows.columns.push_back({"q", "Q", CellKind::Number, 3});
  return {std::move(components), std::move(descriptors), std::move(rows)};
}

std::string choiceText(const Pls& result) {
  switch (result.choice.kind) {
    case ComponentChoice::Kind::Ratio:
      return fmt::format("as long as √(PRESS(a) / RSS(a − 1)) is at most {}", brief(result.choice.limit, 4));
    case ComponentChoice::Kind::Minimum:
      return "where PRESS is least";
    case ComponentChoice::Kind::Number:
      return "as asked";
  }
  return {};
}

std::vector<ReportEntry> ownCard(const Pls& result) {
  std::vector<ReportEntry> card{
      {"Components", fmt::format("{} kept of {} computed, {}", result.kept, result.computed, choiceText(result))},
      {"Folds", describedFolds(result.plan) + ", refitted in each" +
                    (result.plan.kind == Folds::Kind::Random ? fmt::format("; seed {}", result.plan.seed) : "")}};
  for (const PlsResponse& response : result.responses)
    card.push_back(
        {response.name, fmt::format("mean {}, sd {}; constant of the equation {}", significant(response.mean, 6),
                                    significant(response.sd, 4), significant(response.constant, 6))});
  return card;
}

std::vector<ReportEntry> readingOf(const Pls& result) {
  return {
      {"q² and RMSE, cross-validated",
       "q² = 1 − PRESS / Σ(y − ȳ)², RMSE = √(PRESS / n), where PRESS = Σ(y − ŷ₋)² and "
       "ŷ₋ is the prediction of a row by the fold that left it out."},
      {"R²", "1 − RSS / Σ(y − ȳ)² of the fit. It rises with every component."},
      {"ratio",
       "√(PRESS(a) / RSS(a − 1)): the error of a components on rows left out against that of a − 1 on rows "
       "fitted. Below 1 a component may help."},
      {"coefficients",
       "Of the model as an equation of the descriptors, in the table's units; prepared: for the descriptors "
       "and the response as prepared, so that they can be compared. The jackknife error is their spread over "
       "the folds."},
      {"VIP",
       "√(p Σ SS(a) w(a)² / Σ SS(a)) over the kept components: SS(a) what component a explains of the responses, w "
       "the descriptor's weight in it, p descriptors."},
      {"T²",
       fmt::format("The squared distance within the model plane, Σ t² / variance of t. Limit at {}: Hotelling's, by F.",
                   percent(result.level, 0))},
      {"Q", fmt::format(
                "The squared length of what the components leave of a row. Limit at {}: a scaled χ² with the mean and "
                "variance of the model's rows.",
                percent(result.level, 0))}};
}

}  // namespace

ReportPage reportPage(const PartialLeastSquares& result, const ReportContext& context) {
  std::vector<std::string> names;
  for (const PlsRow* row : shown(result.rows)) names.push_back(row->name);
  const ColouringColumns colours = colouringColumns(context, result.used, names);
  ReportPage page;
  page.analysis = "pls";
  page.title = "Partial least squares of " + listed(responseNames(result), 4);
  page.subtitle = fmt::format("{}, {}", madeFrom(result.used), keptText(result));
  page.answer = answerOf(result);
  page.frame = frameOf(result);
  page.data = {componentsOf(result), rowsOf(result, colours), descriptorsOf(result)};
  page.figures = figuresOf(result, page.data[1], colours);
  page.tables = tablesOf(result);
  page.remarks = anchored(result.remarks, {{"not-predictive", "components"},
                                           {"components-exhausted", "components"},
                                           {"whole-table-centring", "reading"},
                                           {"never-held-out", "rows"},
                                           {"outside-domain", "distances"}});
  remarkOnSampling(result.rows.size(), page);
  page.card = dataCard(result.used, ownCard(result), context);
  page.reading = readingOf(result);
  return page;
}

}  // namespace studystats
