// Principal components as a page: what each explains, rows and descriptors on them, and unusual rows.
#include "host/report/biplot.h"
#include "host/report/components.h"
#include "host/report/data.h"
#include "host/report/page_parts.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

namespace studystats {
namespace {

constexpr std::size_t kShownComponents = 20;  // of the scree

std::size_t kept(const PrincipalComponents& result) { return static_cast<std::size_t>(result.kept); }

std::string keptText(const PrincipalComponents& result) { return counted(kept(result), "component", "components"); }

double explainedByKept(const PrincipalComponents& result) { return result.components[kept(result) - 1].cumulative; }

std::size_t beyond(const PrincipalComponents& result, double ComponentRow::*distance,
                   const std::optional<double>& limit) {
  return static_cast<std::size_t>(std::count_if(result.rows.begin(), result.rows.end(), [&](const ComponentRow& row) {
    return limit && row.role == Role::Model && row.*distance > *limit;
  }));
}

std::string answerOf(const PrincipalComponents& result) {
  std::string text = fmt::format("{} {} {} of the variance of {}", keptText(result),
                                 result.kept == 1 ? "holds" : "hold", percent(explainedByKept(result)),
                                 counted(result.used.descriptors.size(), "descriptor", "descriptors"));
  text +=
      result.aboveBrokenStick == 0 ? "; none explains more than a stick broken at random would."
      : result.aboveBrokenStick == 1
          ? "; only the first explains more than a stick broken at random would."
          : fmt::format("; the first {} explain more than a stick broken at random would.", result.aboveBrokenStick);
  return text;
}

ReportFrame frameOf(const PrincipalComponents& result) {
  ReportFrame frame{{"", "value"}, {{"variance explained by " + keptText(result), percent(explainedByKept(result))}}};
  if (result.aboveOne) frame.rows.push_back({"eigenvalues above 1", std::to_string(*result.aboveOne)});
  if (result.t2Limit)
    frame.rows.push_back(
        {fmt::format("rows beyond the {} limit of T² ({})", percent(result.level, 0), significant(*result.t2Limit, 3)),
         std::to_string(beyond(result, &ComponentRow::t2, result.t2Limit))});
  if (result.qLimit)
    frame.rows.push_back(
        {fmt::format("rows beyond the {} limit of Q ({})", percent(result.level, 0), significant(*result.qLimit, 3)),
         std::to_string(beyond(result, &ComponentRow::q, result.qLimit))});
  return frame;
}

Table componentsOf(const PrincipalComponents& result) {
  std::vector<std::size_t> numbers(result.components.size());
  std::iota(numbers.begin(), numbers.end(), std::size_t{0});
  ReportData data("components");
  data.numbers("component", numbers, [](std::size_t a) { return a + 1; })
      .numbers("eigenvalue", numbers, [&](std::size_t a) { return result.components[a].eigenvalue; })
      .numbers("explained", numbers, [&](std::size_t a) { return result.components[a].explained; })
      .numbers("cumulative", numbers, [&](std::size_t a) { return result.components[a].cumulative; })
      .texts("kept", numbers, [&](std::size_t a) { return a < kept(result) ? "kept" : "not kept"; });
  return data.take();
}

Table rowsOf(const PrincipalComponents& result, const ColouringColumns& colours) {
  using Row = const ComponentRow*;
  const auto rows = shown(result.rows);
  ReportData data = rowData(result.rows);
  if (!result.classColumn.empty()) data.texts("label", rows, [](Row row) { return row->label; });
  for (std::size_t a = 0; a < kept(result); ++a)
    data.numbers(fmt::format("PC{}", a + 1), rows, [a](Row row) { return row->scores[a]; });
  data.numbers("t2", rows, [](Row row) { return row->t2; }).numbers("q", rows, [](Row row) { return row->q; });
  Table table = data.take();
  table.columns.insert(table.columns.end(), colours.columns.begin(), colours.columns.end());
  return table;
}

std::vector<std::size_t> descriptorNumbers(const PrincipalComponents& result) {
  std::vector<std::size_t> numbers(result.used.descriptors.size());
  std::iota(numbers.begin(), numbers.end(), std::size_t{0});
  return numbers;
}

Table loadingsOf(const PrincipalComponents& result) {
  const std::vector<std::size_t> numbers = descriptorNumbers(result);
  const std::vector<std::string>& names = result.used.descriptors;
  ReportData data("loadings");
  data.texts("key", numbers, [&](std::size_t j) { return "d:" + names[j]; })
      .texts("descriptor", numbers, [&](std::size_t j) { return names[j]; });
  for (std::size_t a = 0; a < kept(result); ++a)
    data.numbers(fmt::format("PC{}", a + 1), numbers, [&result, a](std::size_t j) { return result.loadings(j, a); });
  data.numbers("explained", numbers, [&](std::size_t j) { return result.explained(j, kept(result) - 1); });
  const std::vector<double> positions = numbersInNames(names);
  if (!positions.empty()) data.numbers("position", numbers, [&](std::size_t j) { return positions[j]; });
  return data.take();
}

// One line a descriptor and component: what that component alone explains.
Table sharesOf(const PrincipalComponents& result) {
  struct Share {
    std::size_t descriptor, component;
  };
  std::vector<Share> all;
  for (std::size_t j = 0; j < result.used.descriptors.size(); ++j)
    for (std::size_t a = 0; a < kept(result); ++a) all.push_back({j, a});
  const std::vector<double> positions = numbersInNames(result.used.descriptors);
  ReportData data("shares");
  data.texts("key", all, [&](const Share& one) { return "d:" + result.used.descriptors[one.descriptor]; })
      .texts("descriptor", all, [&](const Share& one) { return result.used.descriptors[one.descriptor]; })
      .texts("component", all, [](const Share& one) { return fmt::format("PC{}", one.component + 1); })
      .numbers("number", all, [](const Share& one) { return one.component + 1; })
      .numbers("share", all,
               [&](const Share& one) {
                 const double before = one.component > 0 ? result.explained(one.descriptor, one.component - 1) : 0;
                 return result.explained(one.descriptor, one.component) - before;
               })
      .numbers("total", all, [&](const Share& one) { return result.explained(one.descriptor, kept(result) - 1); });
  if (!positions.empty()) data.numbers("position", all, [&](const Share& one) { return positions[one.descriptor]; });
  return data.take();
}

Json rowTips(const PrincipalComponents& result) {
  Json list = tips({{"name", "row", false}});
  if (!result.classColumn.empty())
    list.push_back({{"field", "label"}, {"type", "nominal"}, {"title", result.classColumn}});
  for (const Json& tip : tips({{"x", "across"}, {"y", "up"}, {"t2", "T²"}, {"q", "Q"}})) list.push_back(tip);
  return list;
}

ScorePlot scorePlot(const PrincipalComponents& result) {
  ScorePlot plot{.symbol = "PC", .predicted = !result.used.predictedRows.empty(), .tooltip = rowTips(result)};
  std::vector<double> variances;
  for (std::size_t a = 0; a < kept(result); ++a) {
    plot.titles.push_back(fmt::format("PC{} ({})", a + 1, percent(result.components[a].explained)));
    variances.push_back(result.components[a].eigenvalue);
  }
  plot.radii = ellipseRadii(variances, result.used.rows.size(), result.level);
  if (!result.classColumn.empty()) {
    plot.group = "label";
    for (const ComponentGroup& group : result.groups) plot.groups.push_back(group.label);
  }
  return plot;
}

ReportFigure scores(const PrincipalComponents& result) {
  const ScorePlot plot = scorePlot(result);
  return {"scores", "Scores",
          fmt::format("Scatter plot of the scores of {} rows on two components that can be chosen{}.",
                      result.rows.size(), plot.group.empty() ? "" : ", coloured by " + result.classColumn),
          fmt::format("Rows near each other are alike. Outside the dashed {} ellipse (Hotelling's T² of the two "
                      "components) a row is unusual.",
                      percent(result.level, 0)),
          finished(scoreChart(plot))};
}

ReportFigure scoresByColumn(const PrincipalComponents& result, const ColouringColumns& colours) {
  return {"scores-by-column", "Scores, coloured by a column",
          "Scatter plot of the scores of all rows on two components, coloured by the values of a column that can be "
          "chosen.",
          "A colour that runs in one direction tells what that direction means. Grey points have no value.",
          finished(scoreChartByColumn(scorePlot(result), colours.names))};
}

ReportFigure scree(const PrincipalComponents& result) {
  const std::size_t shownCount = std::min(result.components.size(), kShownComponents);
  const Json x = numbered("component", "component");
  const auto y = [&](const char* field) {
    return with(fromZero(field, "share of the variance"), "axis", {{"format", "%"}});
  };
  const Json tooltip = tips({{"component", "component"},
                             {"eigenvalue", "eigenvalue"},
                             {"explained", "explained"},
                             {"cumulative", "cumulative"}});
  Json bars{{"mark", {{"type", "bar"}}},
            {"encoding",
             {{"x", x},
              {"y", y("explained")},
              {"color",
               {{"field", "kept"},
                {"type", "nominal"},
                {"title", nullptr},
                {"scale", {{"domain", {"kept", "not kept"}}, {"range", {kStrong.light, kPale.light}}}}}},
              {"tooltip", tooltip}}}};
  Json line{{"mark",
             {{"type", "line"},
              {"color", kInk.light},
              {"strokeWidth", 1.2},
              {"point", {{"color", kInk.light}, {"size", 28}}}}},
            {"encoding", {{"x", x}, {"y", y("cumulative")}, {"tooltip", tooltip}}}};
  Json chart = layered("components", 300, Json::array({std::move(bars), std::move(line)}));
  chart["transform"] = Json::array({{{"filter", fmt::format("datum.component <= {}", shownCount)}}});
  return {"scree", "Explained variance",
          fmt::format("Bars: the share of the variance that each of the first {} components explains; line: their sum.",
                      shownCount),
          "Where the bars level off, what follows is mostly noise.", finished(chart)};
}

// Bars of the largest loadings on one component, or a curve over descriptors with an order of their own.
ReportFigure loadings(const PrincipalComponents& result) {
  Json options = Json::array();
  for (std::size_t a = 1; a <= kept(result); ++a) options.push_back(fmt::format("PC{}", a));
  const bool curve = !numbersInNames(result.used.descriptors).empty();
  const Json tooltip =
      tips({{"descriptor", "descriptor", false}, {"loading", "loading"}, {"explained", "explained by all kept"}});
  const Json title{{"title", {{"expr", "'loading on ' + component"}}}};
  Json chart;
  if (curve)
    chart = layered("loadings", 280,
                    Json::array({limitLine("y", 0),
                                 {{"mark", {{"type", "line"}, {"strokeWidth", 1.3}}},
                                  {"encoding",
                                   {{"x", positions(result.used.descriptors)},
                                    {"y", with(quantitative("loading", ""), "axis", title)},
                                    {"tooltip", tooltip}}}}}));
  else
    chart = lines(
        "loadings", 18, std::min(result.used.descriptors.size(), kNamedBars),
        Json::array(
            {{{"mark", {{"type", "bar"}}},
              {"encoding",
               {{"y", with(named("descriptor", ""), "axis", {{"labelLimit", 190}})},
                {"x", with(fromZero("loading", ""), "axis", title)},
                {"color",
                 {{"condition", {{"test", "datum.loading < 0"}, {"value", kOther.light}}}, {"value", kStrong.light}}},
                {"tooltip", tooltip}}}}}));
  chart["params"] = Json::array({{{"name", "component"},
                                  {"value", "PC1"},
                                  {"bind", {{"input", "select"}, {"options", options}, {"name", "loadings on "}}}}});
  chart["transform"] = Json::array({{{"calculate", "datum[component]"}, {"as", "loading"}}});
  std::string cut;
  if (!curve) {
    if (result.used.descriptors.size() > kNamedBars) {
      chart["transform"].push_back({{"calculate", "abs(datum.loading)"}, {"as", "size"}});
      chart["transform"].push_back({{"window", Json::array({{{"op", "row_number"}, {"as", "rank"}}})},
                                    {"sort", Json::array({{{"field", "size"}, {"order", "descending"}}})}});
      chart["transform"].push_back({{"filter", fmt::format("datum.rank <= {}", kNamedBars)}});
      cut = fmt::format(" The {} largest of {}.", kNamedBars, result.used.descriptors.size());
    }
  }
  return {"loadings",
          "Loadings",
          "The loadings of the descriptors on one component that can be chosen.",
          "How a descriptor runs along the component: a row with a high score is high in descriptors with a positive "
          "loading and low in those with a negative one." +
              cut,
          finished(chart),
          curve};
}

ReportFigure explainedShares(const PrincipalComponents& result) {
  Json names = Json::array(), colours = Json::array();
  for (std::size_t a = 0; a < kept(result); ++a) {
    names.push_back(fmt::format("PC{}", a + 1));
    colours.push_back(groupColour(a).light);
  }
  const Json colour{{"field", "component"},
                    {"type", "nominal"},
                    {"title", nullptr},
                    {"scale", {{"domain", names}, {"range", colours}}}};
  const Json tooltip = tips({{"descriptor", "descriptor", false},
                             {"component", "component", false},
                             {"share", "share"},
                             {"total", "all kept"}});
  const Json share = with(with(fromZero("share", "share explained"), "scale", {{"domain", {0, 1}}}), "axis",
                          {{"format", "%"}, {"tickCount", 5}});
  const bool curve = !numbersInNames(result.used.descriptors).empty();
  Json chart;
  std::string cut;
  if (curve) {
    chart = layered(
        "shares", 280,
        Json::array(
            {{{"mark", {{"type", "area"}}},
              {"encoding",
               {{"x", positions(result.used.descriptors)}, {"y", share}, {"color", colour}, {"tooltip", tooltip}}}}}));
  } else {
    chart = lines("shares", 18, std::min(result.used.descriptors.size(), kNamedBars),
                  Json::array({{{"mark", {{"type", "bar"}}},
                                {"encoding",
                                 {{"y", with(with(named("descriptor", ""), "axis", {{"labelLimit", 190}}), "sort",
                                             {{"field", "total"}, {"op", "max"}, {"order", "descending"}})},
                                  {"x", share},
                                  {"color", colour},
                                  {"order", {{"field", "number"}, {"type", "quantitative"}}},
                                  {"tooltip", tooltip}}}}}));
    if (result.used.descriptors.size() > kNamedBars) {
      chart["transform"] = Json::array({{{"window", Json::array({{{"op", "dense_rank"}, {"as", "rank"}}})},
                                         {"sort", Json::array({{{"field", "total"}, {"order", "ascending"}}})}},
                                        {{"filter", fmt::format("datum.rank <= {}", kNamedBars)}}});
      cut = fmt::format(" The {} least explained of {}.", kNamedBars, result.used.descriptors.size());
    }
  }
  return {"explained-shares",
          "Explained share of each descriptor",
          fmt::format("What part of each descriptor's variance the {} explain.", keptText(result)),
          std::string(curve ? "Where the sum is low" : "Where the bar is short") +
              ", a descriptor goes its own way: these components say little about it." + cut,
          finished(chart),
          curve};
}

ReportFigure distances(const PrincipalComponents& result) {
  return {"distances", "Distances within and from the model plane",
          fmt::format(
              "Scatter plot of Q, the squared distance from the model plane, against T², that within it, for {} rows.",
              result.rows.size()),
          fmt::format(
              "Right of the {} limit a row is extreme in what the components describe; above it, it holds something "
              "that they do not.",
              percent(result.level, 0)),
          finished(distanceChart(result.t2Limit, result.qLimit, !result.used.predictedRows.empty()))};
}

std::vector<ReportFigure> figuresOf(const PrincipalComponents& result, const ColouringColumns& colours,
                                    const Table& arrows) {
  std::vector<ReportFigure> figures;
  const bool plane = result.kept > 1;
  if (plane) figures.push_back(scores(result));
  figures.push_back(scree(result));
  if (plane) figures.push_back(biplot(result, arrows));
  figures.push_back(loadings(result));
  figures.push_back(explainedShares(result));
  if (result.t2Limit || result.qLimit) figures.push_back(distances(result));
  if (plane && !colours.names.empty()) figures.push_back(scoresByColumn(result, colours));
  return figures;
}

std::vector<ReportTable> tablesOf(const PrincipalComponents& result) {
  ReportTable components{"components",
                         "Components",
                         "",
                         "components",
                         {{"component", "component", CellKind::Whole},
                          {"eigenvalue", "eigenvalue", CellKind::Number, 5},
                          {"explained", "explained", CellKind::Share},
                          {"cumulative", "cumulative", CellKind::Share}}};
  // What is shared by all components stands first: many of them are wider than a page.
  ReportTable loadings{"loading-table",
                       "Loadings",
                       "",
                       "loadings",
                       {{"descriptor", "descriptor"}, {"explained", "explained", CellKind::Share}}};
  ReportTable rows{"rows", "Rows", samplingText(result.rows.size()), "rows", {{"name", rowHeading(result.used)}}};
  if (!result.used.predictedRows.empty()) rows.columns.push_back({"role", "role"});
  if (!result.classColumn.empty()) rows.columns.push_back({"label", result.classColumn});
  rows.columns.push_back({"t2", "T²", CellKind::Number, 3});
  rows.columns.push_back({"q", "Q", CellKind::Number, 3});
  for (std::size_t a = 1; a <= kept(result); ++a) {
    const std::string name = fmt::format("PC{}", a);
    loadings.columns.push_back({name, name, CellKind::Bar, 3});
    rows.columns.push_back({name, name, CellKind::Number, 4});
  }
  return {std::move(loadings), std::move(components), std::move(rows)};
}

std::vector<ReportEntry> readingOf(const PrincipalComponents& result) {
  return {{"component",
           "A direction in the space of the prepared descriptors; the first has the largest variance of the "
           "rows along it, each further one the largest that is left. Eigenvalues are these variances."},
          {"explained",
           "An eigenvalue's share of their sum; of a descriptor: Σ eigenvalue · loading² over the kept "
           "components, divided by the descriptor's variance."},
          {"scores, loadings",
           "score = Σ loading · prepared value. Loadings of a component have unit length. A component "
           "may be turned round as a whole, scores and loadings together."},
          {"broken stick",
           "The k-th component counts when it explains more than the expected k-th longest piece of a stick "
           "broken at random into as many pieces as there are components."},
          {"T²", fmt::format(
                     "Σ score² / eigenvalue over the kept components. Limit: k(n² − 1) / (n(n − k)) · F({}; k, n − k).",
                     brief(result.level, 4))},
          {"Q", fmt::format(
                    "The squared length of what the kept components leave of a row. Limit: g χ²({}; h), g and h from "
                    "mean and variance of the model's rows.",
                    brief(result.level, 4))}};
}

}  // namespace

ReportPage reportPage(const PrincipalComponents& result, const ReportContext& context) {
  std::vector<std::string> names;
  for (const ComponentRow* row : shown(result.rows)) names.push_back(row->name);
  const ColouringColumns colours = colouringColumns(context, result.used, names);
  ReportPage page;
  page.analysis = "pca";
  page.title = "Principal components of " + nameOfTable(result.used);
  page.subtitle = madeFrom(result.used);
  page.answer = answerOf(result);
  page.frame = frameOf(result);
  page.data = {componentsOf(result), rowsOf(result, colours), loadingsOf(result), sharesOf(result)};
  const Table arrows = result.kept > 1 ? arrowsOf(result) : Table{};
  if (result.kept > 1) page.data.push_back(arrows);
  page.figures = figuresOf(result, colours, arrows);
  page.tables = tablesOf(result);
  page.remarks = anchored(result.remarks, {{"outside-domain", "distances"}});
  remarkOnSampling(result.rows.size(), page);
  page.card =
      dataCard(result.used, {{"Components", fmt::format("{} kept of {}", result.kept, result.supported)}}, context);
  page.reading = readingOf(result);
  return page;
}

}  // namespace studystats
