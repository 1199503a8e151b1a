#include "host/report/predictions.h"

#include "host/report/chart_file.h"
#include "host/text.h"

#include <fmt/format.h>

namespace studystats {
namespace {

std::vector<std::string> seriesOf(const PredictedRows& predictions, bool withPredicted) {
  std::vector<std::string> list{"fitted"};
  if (predictions.heldOut) list.emplace_back("held out");
  if (withPredicted && predictions.known) list.emplace_back("kept out of the model");
  return list;
}

std::vector<std::string> suffixesOf(const PredictedRows& predictions) {
  const std::size_t count = predictions.responses.size();
  std::vector<std::string> suffixes;
  for (std::size_t k = 0; k < count; ++k) suffixes.push_back(fieldOf("", k, count));
  return suffixes;
}

// Smallest and largest value of each response, over all that is drawn.
std::vector<std::vector<double>> domainsOf(const PredictedRows& predictions) {
  std::vector<std::vector<double>> domains;
  for (const std::string& suffix : suffixesOf(predictions)) {
    const auto field = [&](const char* name) { return &column(*predictions.rows, name + suffix); };
    const Extent extent = extentOf({field("observed"), field("fitted"), field("held_out")});
    domains.push_back({extent.low, extent.high});
  }
  return domains;
}

std::string heldOutText(const PredictedRows& predictions) { return predictions.heldOut ? ", fitted and held out" : ""; }

}  // namespace

std::string fieldOf(const std::string& name, std::size_t response, std::size_t responses) {
  return responses == 1 ? name : fmt::format("{}{}", name, response);
}

std::string drawsText(std::size_t draws, std::size_t rows, std::size_t heldOut, std::size_t again,
                      const std::string& predicted) {
  std::string text =
      fmt::format(" {} held out {} of {} rows", counted(draws, "random draw", "random draws"), heldOut, rows);
  if (again > 0) text += fmt::format(", {} of them more than once: {}", again, predicted);
  return text + '.';
}

void chooseResponse(const std::vector<std::string>& responses, Json& chart) {
  Json numbers = Json::array();
  for (std::size_t k = 0; k < responses.size(); ++k) numbers.push_back(k);
  Json choice{{"name", "response"}, {"value", 0}};
  if (responses.size() > 1)
    choice["bind"] = {{"input", "select"}, {"options", numbers}, {"labels", responses}, {"name", "response "}};
  if (!chart.contains("params")) chart["params"] = Json::array();
  chart["params"].push_back(std::move(choice));
}

ReportFigure observedPredicted(const PredictedRows& predictions) {
  return {"observed-predicted", "Observed against predicted",
          fmt::format("Scatter plot of {} rows: observed {} against its prediction{}, with the line of equal values.",
                      predictions.rows->rows(), listed(predictions.responses, 4), heldOutText(predictions)),
          predictions.heldOut
              ? "On the line a prediction is right. Strong points were predicted by folds that had not seen "
                "the row; pale ones were fitted, and lie closer than a new row would." +
                    predictions.draws
              : "On the line a prediction is right. Fitted points lie closer than a new row would.",
          filledChart("observed-predicted", {{"response", 0, predictions.responses},
                                             {"responses", predictions.responses},
                                             {"suffixes", suffixesOf(predictions)},
                                             {"domains", domainsOf(predictions)},
                                             {"series", seriesOf(predictions, true)}})};
}

ReportFigure residuals(const PredictedRows& predictions) {
  return {"residuals", "Residuals",
          fmt::format("Scatter plot of residuals against predictions{}.", heldOutText(predictions)),
          "A band of even height around zero is as it should be; a bow or a funnel says that something is missing." +
              (predictions.heldOut ? predictions.draws : std::string()),
          filledChart("residuals", {{"response", 0, predictions.responses},
                                    {"responses", predictions.responses},
                                    {"suffixes", suffixesOf(predictions)},
                                    {"series", seriesOf(predictions, false)}})};
}

}  // namespace studystats
