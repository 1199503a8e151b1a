// The figures of a regression's page.
#include "host/report/charts.h"
#include "host/report/predictions.h"
#include "host/report/regression_page.h"
#include "host/report/selection.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>

namespace studystats {
namespace {

constexpr std::size_t kNamedSteps = 24;  // of a longer path, steps are only numbered

struct Parts {
  const Regression& result;
  const std::vector<Table>& data;
  const Table& table(const std::string& name) const {
    return *std::find_if(data.begin(), data.end(), [&](const Table& one) { return one.name == name; });
  }
  PredictedRows predictions() const {
    const auto any = [&](auto test) { return std::any_of(result.rows.begin(), result.rows.end(), test); };
    return {{result.response},
            &table("rows"),
            result.validation && any([](const RegressionRow& row) { return row.heldOut.has_value(); }),
            any([](const RegressionRow& row) { return row.role == Role::Predicted && row.observed; }),
            heldOutByDraws(result.plan, result.rows, kMeanOfPredictions)};
  }
};

ReportFigure coefficientSpread(const Parts& parts) {
  const bool spread = static_cast<bool>(parts.result.validation);
  const Json y = with(named("term", ""), "axis", {{"labelLimit", 180}});
  const char* title = spread ? "effect per sd ± fold spread" : "effect per sd";
  Json layers = Json::array({limitLine("x", 0)});
  if (spread)
    layers.push_back({{"mark", {{"type", "rule"}, {"color", kStrong.light}, {"strokeWidth", 2}}},
                      {"encoding", {{"y", y}, {"x", fromZero("low", title)}, {"x2", {{"field", "high"}}}}}});
  layers.push_back({{"mark", {{"type", "point"}, {"size", 70}, {"color", kStrong.light}}},
                    {"encoding",
                     {{"y", y},
                      {"x", fromZero("perSd", title)},
                      {"tooltip", tips({{"term", "term", false},
                                        {"perSd", "effect per sd"},
                                        {"foldSpread", "fold spread"},
                                        {"coefficient", "coefficient"}})}}}});
  const std::size_t count = parts.result.terms.size() - 1;
  Json chart = lines("coefficients", 24, count, std::move(layers));
  chart["transform"] = Json::array({{{"filter", "isValid(datum.perSd)"}}});
  return {"coefficient-spread", spread ? "Coefficients and their spread over folds" : "Coefficients",
          fmt::format("The effect of {} per standard deviation{}.", counted(count, "descriptor", "descriptors"),
                      spread ? ", with the spread over the folds" : ""),
          spread ? "A whisker that crosses zero belongs to a descriptor whose sign depends on which rows are there."
                 : "What the response changes by when a descriptor changes by one standard deviation.",
          finished(chart)};
}

ReportFigure selectionPath(const Parts& parts) {
  Json show{
      {"name", "show"},
      {"value", "r2"},
      {"bind", {{"input", "radio"}, {"options", {"r2", "s", "f"}}, {"labels", {"R²", "s", "F"}}, {"name", "show "}}}};
  const bool few = parts.result.steps.size() <= kNamedSteps;
  const Json x =
      few ? with(named("label", "step"), "axis", {{"labelAngle", -35}, {"labelLimit", 120}}) : numbered("step", "step");
  const auto scaled = parts.result.steps.size() > 1 ? quantitative : fromZero;  // one value makes no scale
  const Json y = with(scaled("shown", ""), "axis", {{"title", {{"expr", "{r2: 'R²', s: 's', f: 'F'}[show]"}}}});
  Json chart = layered(
      "steps", 280,
      Json::array(
          {{{"mark", {{"type", "line"}}}, {"encoding", {{"x", x}, {"y", y}}}},
           {{"mark", {{"type", "point"}, {"size", 70}}},
            {"encoding",
             {{"x", x},
              {"y", y},
              {"shape",
               {{"condition", {{"test", "indexof(datum.change, '+') == 0"}, {"value", "circle"}}},
                {"value", "triangle-down"}}},
              {"tooltip",
               tips(
                   {{"change", "step", false}, {"partialF", "partial F"}, {"r2", "R²"}, {"s", "s"}, {"f", "F"}})}}}}}));
  chart["params"] = Json::array({std::move(show)});
  chart["transform"] = Json::array({{{"calculate", "datum[show]"}, {"as", "shown"}}});
  return {
      "selection-path", "Selection path",
      fmt::format("Line over {} steps of the selection; R², s or F of the fit after each.", parts.result.steps.size()),
      "Fitted figures after each step. Circles entered, triangles left. A fit always seems to gain by a step.",
      finished(chart)};
}

ReportFigure williams(const Parts& parts) {
  const Series model{"model", &kStrong, "circle"};
  const Series predicted{"kept out: leverage alone", &kOther, "triangle-up"};
  const bool any = !parts.result.used.predictedRows.empty();
  const std::vector<Series> all = any ? std::vector{model, predicted} : std::vector{model};
  const Json x = fromZero("leverage", "leverage");
  const Json tooltip =
      tips({{"row", "row", false}, {"leverage", "leverage"}, {"standardised", "standardised residual"}});
  Json layers = Json::array(
      {limitLine("x", parts.result.leverageLimit), limitLine("y", 3), limitLine("y", -3),
       points(model, all, x,
              with(quantitative("standardised", "standardised residual"), "scale", {{"zero", false}, {"padding", 12}}),
              tooltip)});
  if (any) layers.push_back(onlyWhere(points(predicted, all, x, {{"datum", 0}}, tooltip), "datum.role == 'predicted'"));
  return {"williams", "Leverage against standardised residual",
          "Scatter plot of standardised residual against leverage of each row, with the limits of both.",
          fmt::format("Right of {} rows are unlike the others; beyond ±3 they do not follow the equation.",
                      significant(parts.result.leverageLimit, 3)),
          finished(layered("rows", 300, std::move(layers)))};
}

}  // namespace

std::vector<ReportFigure> regressionFigures(const Regression& result, const std::vector<Table>& data) {
  const Parts parts{result, data};
  std::vector<ReportFigure> figures{observedPredicted(parts.predictions())};
  if (result.terms.size() > 1) figures.push_back(coefficientSpread(parts));
  if (result.selection == Selection::Stepwise && result.validation && parts.table("selection").rows() > 0)
    figures.push_back(selectionFigure(parts.table("selection"), result.plan.folds,
                                      "open bars are runners-up that the equation does not have."));
  if (!result.steps.empty()) figures.push_back(selectionPath(parts));
  figures.push_back(residuals(parts.predictions()));
  figures.push_back(williams(parts));
  return figures;
}

}  // namespace studystats
