#include "host/report/selection.h"

#include "host/report/charts.h"

#include <fmt/format.h>

#include <algorithm>

namespace studystats {
namespace {

constexpr std::size_t kBars = 30;
constexpr int kBarStep = 19;

}  // namespace

Table selectionData(std::vector<Choice> choices) {
  std::stable_sort(choices.begin(), choices.end(), [](const Choice& a, const Choice& b) { return a.folds > b.folds; });
  ReportData data("selection");
  data.texts("key", choices, [](const Choice& one) { return "d:" + one.name; })
      .texts("descriptor", choices, [](const Choice& one) { return one.name; })
      .texts("model", choices, [](const Choice& one) { return one.inModel ? "in the model" : "not in the model"; })
      .numbers("folds", choices, [](const Choice& one) { return one.folds; });
  return data.take();
}

ReportFigure selectionFigure(const Table& selection, std::size_t folds, const std::string& open) {
  const std::size_t shown = std::min(selection.rows(), kBars);
  const Json colour{
      {"field", "model"},
      {"type", "nominal"},
      {"title", nullptr},
      {"scale", {{"domain", {"in the model", "not in the model"}}, {"range", {kStrong.light, kOther.light}}}}};
  const Json x =
      with(with(fromZero("folds", fmt::format("folds that chose it, of {}", folds)), "scale", {{"domain", {0, folds}}}),
           "axis", {{"tickMinStep", 1}, {"format", "d"}});
  // The second channel: bars of descriptors outside the model are outlines.
  const Json filled{{"condition", {{"test", "datum.model == 'in the model'"}, {"value", 1}}}, {"value", 0.15}};
  Json bars{{"mark", {{"type", "bar"}}},
            {"encoding",
             {{"y", with(named("descriptor", ""), "axis", {{"labelLimit", 180}})},
              {"x", x},
              {"color", colour},
              {"stroke", colour},
              {"fillOpacity", filled},
              {"tooltip", tips({{"descriptor", "descriptor", false}, {"folds", "folds"}, {"model", "", false}})}}}};
  Json chart = lines("selection", kBarStep, shown,
                     Json::array({std::move(bars), limitLine("x", static_cast<double>(folds) / 2)}));
  chart["transform"] = Json::array({{{"window", Json::array({{{"op", "row_number"}, {"as", "rank"}}})}},
                                    {{"filter", fmt::format("datum.rank <= {}", shown)}}});
  const std::string cut = selection.rows() > shown ? fmt::format(" The first {} of {}.", shown, selection.rows()) : "";
  return {"selection-frequency", "Selection frequency",
          fmt::format("Bars: in how many of {} folds each of {} descriptors was chosen.", folds, shown),
          "How often the folds' own selections chose a descriptor. Left of the dashed half, the choice is chance as "
          "much as "
          "anything; " +
              open + cut,
          finished(chart)};
}

ReportTable selectionTable(std::size_t folds) {
  return {"selection",
          "Selection frequency",
          "",
          "selection",
          {{"descriptor", "descriptor"},
           {"model", "model"},
           {"folds", "chosen", CellKind::Count, static_cast<int>(folds)}}};
}

}  // namespace studystats
