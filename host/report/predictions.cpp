#include "host/report/predictions.h"

#include "host/text.h"

#include <fmt/format.h>

namespace studystats {
namespace {

const Series kFittedRows{"fitted", &kPale, "square"};
const Series kHeldOutRows{"held out", &kStrong, "circle"};
const Series kPredictedRows{"kept out of the model", &kOther, "triangle-up"};

const char* const kFields[] = {"observed", "fitted", "heldOut", "residual", "heldOutError"};

std::vector<Series> seriesOf(const PredictedRows& predictions, bool withPredicted) {
  std::vector<Series> list{kFittedRows};
  if (predictions.heldOut) list.push_back(kHeldOutRows);
  if (withPredicted && predictions.known) list.push_back(kPredictedRows);
  return list;
}

Json onlyRole(Json layer, const char* role) {
  return onlyWhere(std::move(layer), fmt::format("datum.role == '{}'", role));
}

Json rowTips(const PredictedRows& predictions) {
  if (!predictions.heldOut) return tips({{"row", "row", false}, {"observed", "observed"}, {"fitted", "fitted"}});
  return tips({{"row", "row", false},
               {"observed", "observed"},
               {"heldOut", "held out"},
               {"fitted", "fitted"},
               {"fold", "fold"}});
}

// For several responses: the fields of the one chosen take the names that those of a single one have.
void takeChosen(const PredictedRows& predictions, Json& chart) {
  chooseResponse(predictions.responses, chart);
  if (predictions.responses.size() < 2) return;
  Json transforms = Json::array();
  for (const char* field : kFields)
    if (predictions.rows->find(fieldOf(field, 0, predictions.responses.size())))
      transforms.push_back({{"calculate", fmt::format("datum['{}' + response]", field)}, {"as", field}});
  chart["transform"] = std::move(transforms);
}

Json titleOf(const PredictedRows& predictions, const std::string& what) {
  if (predictions.responses.size() == 1) return predictions.responses.front() + ", " + what;
  return {{"expr", fmt::format("{}[response] + {}", Json(predictions.responses).dump(), Json(", " + what).dump())}};
}

Json axisOf(const std::string& field, Json title) {
  return with(quantitative(field, ""), "axis", {{"title", std::move(title)}});
}

// Smallest and largest value of each response, over all that is drawn.
Json domainsOf(const PredictedRows& predictions) {
  const std::size_t count = predictions.responses.size();
  Json domains = Json::array();
  for (std::size_t k = 0; k < count; ++k) {
    const auto field = [&](const char* name) { return &column(*predictions.rows, fieldOf(name, k, count)); };
    domains.push_back(extentOf({field("observed"), field("fitted"), field("heldOut")}).domain());
  }
  return domains;
}

Json diagonal(const Json& domains) {
  return {
      {"data", {{"values", Json::array({{{"end", 0}}, {{"end", 1}}})}}},
      {"transform",
       Json::array({{{"calculate", fmt::format("{}[response][datum.end]", domains.dump())}, {"as", "equal"}}})},
      {"mark", {{"type", "line"}, {"strokeWidth", 1}, {"color", kLine.light}}},
      {"encoding",
       {{"x", {{"field", "equal"}, {"type", "quantitative"}}}, {"y", {{"field", "equal"}, {"type", "quantitative"}}}}}};
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
  const Json domains = domainsOf(predictions);
  const auto axis = [&](const char* field, const char* what) {
    return with(axisOf(field, titleOf(predictions, what)), "scale",
                {{"domain", {{"expr", domains.dump() + "[response]"}}}, {"nice", false}, {"zero", false}});
  };
  const Json y = axis("observed", "observed");
  const std::vector<Series> all = seriesOf(predictions, true);
  const auto layer = [&](const Series& series, const char* x) {
    return points(series, all, axis(x, "predicted"), y, rowTips(predictions));
  };
  Json layers = Json::array({diagonal(domains), onlyRole(layer(kFittedRows, "fitted"), "model")});
  if (predictions.heldOut) layers.push_back(layer(kHeldOutRows, "heldOut"));
  if (predictions.known) {
    layers.push_back(onlyRole(layer(kPredictedRows, "fitted"), "predicted"));
    layers.back()["mark"]["size"] = 70;
  }
  Json chart = layered("rows", 350, std::move(layers));
  takeChosen(predictions, chart);
  return {"observed-predicted", "Observed against predicted",
          fmt::format("Scatter plot of {} rows: observed {} against its prediction{}, with the line of equal values.",
                      predictions.rows->rows(), listed(predictions.responses, 4), heldOutText(predictions)),
          predictions.heldOut
              ? "On the line a prediction is right. Strong points were predicted by folds that had not seen "
                "the row; pale ones were fitted, and lie closer than a new row would." +
                    predictions.draws
              : "On the line a prediction is right. Fitted points lie closer than a new row would.",
          finished(chart)};
}

ReportFigure residuals(const PredictedRows& predictions) {
  const std::vector<Series> all = seriesOf(predictions, false);
  const auto layer = [&](const Series& series, const char* x, const char* y) {
    return points(series, all, axisOf(x, titleOf(predictions, "predicted")), quantitative(y, "observed − predicted"),
                  rowTips(predictions));
  };
  Json layers = Json::array({limitLine("y", 0), onlyRole(layer(kFittedRows, "fitted", "residual"), "model")});
  if (predictions.heldOut) layers.push_back(layer(kHeldOutRows, "heldOut", "heldOutError"));
  Json chart = layered("rows", 300, std::move(layers));
  takeChosen(predictions, chart);
  return {"residuals", "Residuals",
          fmt::format("Scatter plot of residuals against predictions{}.", heldOutText(predictions)),
          "A band of even height around zero is as it should be; a bow or a funnel says that something is missing." +
              (predictions.heldOut ? predictions.draws : std::string()),
          finished(chart)};
}

}  // namespace studystats
