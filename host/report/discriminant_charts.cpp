// The figures of a discriminant analysis.
#include "host/report/discriminant_page.h"
#include "host/report/predictions.h"
#include "host/report/selection.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace studystats {
namespace {

constexpr std::size_t kShortName = 8;  // of a class, which fits below its column

ReportFigure confusion(const Discriminant& result) {
  const std::size_t classes = result.classes.size();
  const int height = static_cast<int>(std::clamp<std::size_t>(classes * 44, 120, 460));
  std::size_t longest = 0;
  for (const DiscriminantClass& one : result.classes) longest = std::max(longest, one.name.size());
  const bool crowded = classes > 4 || longest > kShortName;
  const Json x = with(named("predicted", "put into"), "axis", {{"labelAngle", crowded ? -40 : 0}, {"labelLimit", 100}});
  const Json y = with(named("truth", "true class"), "axis", {{"labelLimit", 110}});
  const Json tooltip = tips({{"truth", "true class", false},
                             {"predicted", "put into", false},
                             {"rows", "rows"},
                             {"share", "share of the class"}});
  Json cells{{"mark", {{"type", "rect"}, {"stroke", kPaper.light}, {"strokeWidth", 2}}},
             {"encoding",
              {{"x", x},
               {"y", y},
               {"color",
                {{"field", "right"},
                 {"type", "nominal"},
                 {"title", nullptr},
                 {"scale", {{"domain", {"right", "wrong"}}, {"range", {kStrong.light, kOther.light}}}},
                 {"legend", nullptr}}},
               {"opacity",
                {{"field", "share"},
                 {"type", "quantitative"},
                 {"scale", {{"domain", {0, 1}}, {"range", {0.06, 0.85}}}},
                 {"legend", nullptr}}},
               {"tooltip", tooltip}}}};
  Json counts{{"mark", {{"type", "text"}, {"fontSize", classes > 8 ? 10 : 14}}},
              {"encoding",
               {{"x", x}, {"y", y}, {"text", {{"field", "rows"}, {"type", "quantitative"}}}, {"tooltip", tooltip}}}};
  counts["encoding"]["color"] = {{"condition", {{"test", "datum.share > 0.6"}, {"value", kPaper.light}}},
                                 {"value", kInk.light}};
  const int labels = static_cast<int>(std::min<std::size_t>(longest * 7, 110));
  Json views = Json::array();
  for (const char* kind : {kHeldOutRows, kFittedRows}) {
    if (kind == kHeldOutRows && !result.validation) continue;
    Json view{{"title", kind}, {"height", height}, {"layer", Json::array({cells, counts})}};
    views.push_back(onlyWhere(std::move(view), fmt::format("datum.kind == '{}'", kind)));
  }
  return {"confusion", "Confusion",
          fmt::format("Heat map of true against predicted class{}, for {} classes.",
                      result.validation ? ", cross-validated and by resubstitution" : ", by resubstitution", classes),
          "Each line is a true class, each cell the rows put into the class below. Cross-validated rows were left out; "
          "resubstitution has seen them." +
              (result.validation ? heldOutByDraws(result.plan, result.rows, "each time counts") : std::string()),
          finished(panels("confusion", std::move(views), 110, labels + 50))};
}

ScorePlot scorePlot(const Discriminant& result) {
  ScorePlot plot{.symbol = "score", .group = "group", .circles = "circles", .centres = "classes"};
  for (std::size_t k = 0; k < functionsOf(result); ++k)
    plot.titles.push_back(fmt::format("function {} ({})", k + 1, percent(result.functions[k].share)));
  for (const DiscriminantClass& one : result.classes) plot.groups.push_back(one.name);
  if (std::any_of(result.rows.begin(), result.rows.end(), [](const DiscriminantRow& row) { return row.known.empty(); }))
    plot.groups.push_back("unknown");
  plot.tooltip = tips({{"name", "row", false},
                       {"known", "class", false},
                       {"heldOutClass", "when left out", false},
                       {"predicted", "fitted", false},
                       {"posterior", "posterior"}});
  return plot;
}

// One function alone: a line a class.
Json scoreLines(const Discriminant& result) {
  const ScorePlot plot = scorePlot(result);
  Json names = Json::array(), colours = Json::array();
  for (std::size_t g = 0; g < plot.groups.size(); ++g) {
    names.push_back(plot.groups[g]);
    colours.push_back(groupColour(g).light);
  }
  const Json colour{
      {"field", "group"}, {"type", "nominal"}, {"scale", {{"domain", names}, {"range", colours}}}, {"legend", nullptr}};
  const Json x = quantitative("score1", plot.titles.front()), y = named("group", "");
  Json ticks{{"mark", {{"type", "tick"}, {"thickness", 2}, {"size", 30}}},
             {"encoding", {{"x", x}, {"y", y}, {"color", colour}, {"tooltip", plot.tooltip}}}};
  Json means{
      {"data", {{"name", "classes"}}},
      {"mark", {{"type", "point"}, {"size", 170}, {"stroke", kInk.light}, {"strokeWidth", 1.6}}},
      {"encoding",
       {{"x", x}, {"y", y}, {"color", colour}, {"tooltip", tips({{"group", "mean of", false}, {"score1", "score"}})}}}};
  return lines("rows", 48, plot.groups.size(), Json::array({std::move(ticks), std::move(means)}));
}

ReportFigure scores(const Discriminant& result) {
  const bool plane = functionsOf(result) > 1;
  return {
      "scores", "Canonical scores",
      fmt::format("The canonical scores of {} rows, their classes marked, with the class means.", result.rows.size()),
      plane ? fmt::format("The directions in which the classes differ most. Large marks are class means; a dashed "
                          "outline holds {} "
                          "of a normal class.",
                          percent(result.level, 0))
            : "The direction in which the classes differ most; a tick is a row, large marks are class means.",
      finished(plane ? scoreChart(scorePlot(result)) : scoreLines(result))};
}

ReportFigure stepsFigure(const Discriminant& result) {
  const Json x = with(named("label", "step"), "axis", {{"labelAngle", -35}, {"labelLimit", 120}});
  double least = result.validation ? result.validation->confusion.fraction() : 1;
  for (const DiscriminantStep& step : result.steps) least = std::min(least, step.fraction);
  const double low = std::max(std::floor(10 * least - 0.5) / 10, 0.0);  // the tenth below, with room for the point
  const Json y =
      with(with(fromZero("fraction", "correct"), "scale", {{"domain", {low, 1}}}), "axis", {{"format", "%"}});
  const Json tooltip =
      tips({{"descriptor", "descriptor", false}, {"fraction", "correct, fitted"}, {"distances", "sum of distances"}});
  Json layers = Json::array({{{"mark", {{"type", "line"}, {"color", kPale.light}}}, {"encoding", {{"x", x}, {"y", y}}}},
                             {{"mark", {{"type", "point"}, {"size", 70}, {"color", kPale.light}, {"opacity", 1}}},
                              {"encoding", {{"x", x}, {"y", y}, {"tooltip", tooltip}}}}});
  if (result.validation) {
    layers.push_back(limitLine("y", result.validation->confusion.fraction()));
    layers.back()["mark"]["color"] = kStrong.light;
    layers.back()["mark"]["strokeWidth"] = 1.8;
  }
  return {"steps-figure", "Fraction correct per step",
          fmt::format("Line: the fraction of fitted rows put into the right class after each of {} steps.",
                      result.steps.size()),
          result.validation
              ? "Pale: rows that the classifier has seen. The dashed line is the cross-validated fraction of the whole "
                "procedure."
              : "Rows that the classifier has seen.",
          finished(layered("steps", 280, std::move(layers)))};
}

ReportFigure distances(const Discriminant& result) {
  struct Verdict {
    const char* text;
    const Colour* colour;
    const char* shape;
  };
  const Verdict verdicts[] = {{"right when left out", &kPale, "circle"},
                              {"wrong when left out", &kOther, "cross"},
                              {"never left out", &kLine, "square"},
                              {"kept out", &kStrong, "triangle-up"}};
  Json names = Json::array(), colours = Json::array(), shapes = Json::array();
  for (const Verdict& verdict : verdicts)
    if (std::any_of(result.rows.begin(), result.rows.end(),
                    [&](const DiscriminantRow& row) { return verdictOf(row) == verdict.text; })) {
      names.push_back(verdict.text);
      colours.push_back(verdict.colour->light);
      shapes.push_back(verdict.shape);
    }
  const auto channel = [&](const Json& range) {
    return Json{{"field", "verdict"},
                {"type", "nominal"},
                {"title", nullptr},
                {"scale", {{"domain", names}, {"range", range}}}};
  };
  double most = 0;
  for (const DiscriminantRow& row : result.rows)
    if (std::isfinite(ownDistance(result, row))) most = std::max(most, ownDistance(result, row));
  Json equal{{"data", {{"values", Json::array({{{"d", 0}}, {{"d", most}}})}}},
             {"mark", {{"type", "line"}, {"strokeWidth", 1}, {"color", kLine.light}}},
             {"encoding",
              {{"x", {{"field", "d"}, {"type", "quantitative"}}}, {"y", {{"field", "d"}, {"type", "quantitative"}}}}}};
  Json marks{
      {"mark", {{"type", "point"}}},
      {"encoding",
       {{"x", fromZero("own", "distance to its own class")},
        {"y", fromZero("other", "distance to the nearest other class")},
        {"color", channel(colours)},
        {"shape", channel(shapes)},
        {"order", {{"condition", {{"test", "datum.verdict == 'wrong when left out'"}, {"value", 1}}}, {"value", 0}}},
        {"tooltip", tips({{"name", "row", false},
                          {"known", "class", false},
                          {"heldOutClass", "when left out", false},
                          {"own", "to its own class"},
                          {"other", "to the nearest other"}})}}}};
  return {
      "distances", "Distances to the classes",
      fmt::format("Scatter plot of the Mahalanobis distances of {} rows to their own and to the nearest other class.",
                  result.rows.size()),
      "Below the line a row lies nearer to another class. Rows without a class are shown for the one they are put "
      "into. "
      "Distances of rows left out are those of the folds that had not seen them, of others those of the final "
      "classifier.",
      finished(layered("rows", 320, Json::array({std::move(equal), std::move(marks)})))};
}

}  // namespace

std::vector<ReportFigure> discriminantFigures(const Discriminant& result, const Table& selection,
                                              const ColouringColumns& colours) {
  std::vector<ReportFigure> figures{confusion(result)};
  if (!result.functions.empty()) figures.push_back(scores(result));
  if (!result.steps.empty()) figures.push_back(stepsFigure(result));
  if (selects(result) && result.validation && selection.rows() > 0)
    figures.push_back(
        selectionFigure(selection, result.plan.folds, "open bars are descriptors that the classifier does not have."));
  figures.push_back(distances(result));
  if (functionsOf(result) > 1 && !colours.names.empty())
    figures.push_back({"scores-by-column", "Canonical scores, coloured by a column",
                       "Scatter plot of the canonical scores, coloured by the values of a column that can be chosen.",
                       "A colour that runs in one direction tells what that direction means.",
                       finished(scoreChartByColumn(scorePlot(result), colours.names))});
  return figures;
}

}  // namespace studystats
