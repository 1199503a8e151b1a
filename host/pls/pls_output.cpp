// A partial least squares model as JSON and as CSV files.
#include "host/json.h"
#include "host/pls/pls.h"
#include "host/text.h"

#include <fmt/format.h>

namespace studystats {
namespace {

Json jsonFigures(const PlsFigures& figures) {
  return {{"r2", jsonNumber(figures.r2)},
          {"q2", jsonNumber(figures.q2)},
          {"rmse", jsonNumber(figures.rmse)},
          {"rmse_cross_validated", jsonNumber(figures.crossValidatedRmse)},
          {"rss", jsonNumber(figures.rss)},
          {"press", jsonNumber(figures.press)},
          {"press_ratio", jsonNumber(figures.ratio)}};
}

Json jsonResponse(const PlsResponse& response) {
  Json json{{"name", response.name}, {"mean", jsonNumber(response.mean)}, {"sd", jsonNumber(response.sd)}};
  json["components"] = Json::array();
  for (const PlsFigures& figures : response.components) json["components"].push_back(jsonFigures(figures));
  json["constant"] = jsonNumber(response.constant);
  json["coefficients"] = jsonNumbers(response.coefficients);
  json["coefficient_errors"] = jsonNumbers(response.coefficientErrors);
  json["prepared_coefficients"] = jsonNumbers(response.preparedCoefficients);
  json["q2_centred_inside_folds"] = jsonNumber(response.centredInsideQ2);
  json["kept_out"] = response.predicted ? Json{{"rows", response.predicted->rows},
                                               {"rmse", jsonNumber(response.predicted->rmse)},
                                               {"bias", jsonNumber(response.predicted->bias)}}
                                        : Json(nullptr);
  return json;
}

Json jsonRow(const PlsRow& row) {
  Json json{{"name", row.name}, {"role", nameOf(row.role)}};
  json["observed"] = Json::array();
  for (const auto& observed : row.observed) json["observed"].push_back(jsonNumber(observed));
  json["fitted"] = jsonNumbers(row.fitted);
  json["held_out"] = Json::array();
  for (const std::vector<double>& predictions : row.heldOut) json["held_out"].push_back(jsonNumbers(predictions));
  json["held_out_rank"] = row.heldOut.empty() ? Json(nullptr) : Json(row.heldOutRank);
  json["times_held_out"] = row.timesHeldOut;
  json["fold"] = row.fold == 0 ? Json(nullptr) : Json(row.fold);
  json["scores"] = jsonNumbers(row.scores);
  json["t2"] = jsonNumber(row.t2);
  json["q"] = jsonNumber(row.q);
  return json;
}

const char* nameOf(ComponentChoice::Kind kind) {
  switch (kind) {
    case ComponentChoice::Kind::Ratio:
      return "ratio";
    case ComponentChoice::Kind::Minimum:
      return "min";
    case ComponentChoice::Kind::Number:
      break;
  }
  return "number";
}

std::string exactOr(const std::optional<double>& value) { return value ? exact(*value) : std::string(); }

std::string componentsCsv(const PartialLeastSquares& result) {
  CsvText csv;
  csv.row({"response", "components", "x_explained", "r2", "q2", "rmse", "rmse_cross_validated", "rss", "press",
           "press_ratio", "kept", "folds_without"});
  for (const PlsResponse& response : result.responses)
    for (std::size_t a = 0; a < response.components.size(); ++a) {
      const PlsFigures& figures = response.components[a];
      csv.row({response.name, std::to_string(a + 1), a < result.explained.size() ? exact(result.explained[a]) : "",
               exact(figures.r2), exact(figures.q2), exact(figures.rmse), exact(figures.crossValidatedRmse),
               exact(figures.rss), exact(figures.press), exact(figures.ratio),
               a + 1 == static_cast<std::size_t>(result.kept) ? "yes" : "no",
               result.foldsWithout.empty() ? std::string() : std::to_string(result.foldsWithout[a])});
    }
  return csv.text();
}

std::string coefficientsCsv(const PartialLeastSquares& result) {
  CsvText csv;
  csv.row({"response", "term", "coefficient", "jackknife_error", "prepared_coefficient", "vip"});
  for (const PlsResponse& response : result.responses) {
    csv.row({response.name, "(constant)", exact(response.constant), "", "", ""});
    for (std::size_t j = 0; j < response.coefficients.size(); ++j)
      csv.row({response.name, result.used.descriptors[j], exact(response.coefficients[j]),
               exact(response.coefficientErrors[j]), exact(response.preparedCoefficients[j]), exact(result.vip[j])});
  }
  return csv.text();
}

std::string loadingsCsv(const PartialLeastSquares& result) {
  CsvText csv;
  std::vector<std::string> heading{"column", "use"};
  for (const char* what : {"weight", "loading"})
    for (std::size_t a = 0; a < result.weights.columns; ++a) heading.push_back(fmt::format("{}_{}", what, a + 1));
  csv.row(heading);
  for (std::size_t j = 0; j < result.weights.rows; ++j) {
    std::vector<std::string> cells{result.used.descriptors[j], "descriptor"};
    for (const Grid* grid : {&result.weights, &result.loadings})
      for (std::size_t a = 0; a < grid->columns; ++a) cells.push_back(exact((*grid)(j, a)));
    csv.row(cells);
  }
  for (std::size_t k = 0; k < result.responses.size(); ++k) {
    std::vector<std::string> cells{result.responses[k].name, "response"};
    cells.resize(2 + result.weights.columns);
    for (std::size_t a = 0; a < result.responseLoadings.columns; ++a)
      cells.push_back(exact(result.responseLoadings(k, a)));
    csv.row(cells);
  }
  return csv.text();
}

// Held-out rows by every number of components. Beyond the rank of a row's training rows a prediction repeats those
// before it, or rests on rounding.
std::string heldOutCsv(const PartialLeastSquares& result) {
  CsvText csv;
  csv.row({"name", "response", "components", "observed", "held_out", "times_held_out", "beyond_rank"});
  for (const PlsRow& row : result.rows)
    for (std::size_t k = 0; k < row.heldOut.size(); ++k)
      for (std::size_t a = 0; a < row.heldOut[k].size(); ++a)
        csv.row({row.name, result.responses[k].name, std::to_string(a + 1), exactOr(row.observed[k]),
                 exact(row.heldOut[k][a]), std::to_string(row.timesHeldOut), a < row.heldOutRank ? "no" : "yes"});
  return csv.text();
}

}  // namespace

std::string toJson(const PartialLeastSquares& result) {
  Json json{{"schema", "studystats.pls/1"}, {"version", version()}, {"used", jsonUsed(result.used)}};
  json["components"] = {
      {"computed", result.computed},
      {"kept", result.kept},
      {"rule", nameOf(result.choice.kind)},
      {"ratio_limit", result.choice.kind == ComponentChoice::Kind::Ratio ? Json(result.choice.limit) : Json(nullptr)},
      {"x_explained", jsonNumbers(result.explained)},
      {"folds_without", result.foldsWithout.empty() ? Json(nullptr) : Json(result.foldsWithout)}};
  json["validation"] = jsonPlan(result.plan);
  json["responses"] = Json::array();
  for (const PlsResponse& response : result.responses) json["responses"].push_back(jsonResponse(response));
  json["weights"] = jsonGrid(result.weights);
  json["loadings"] = jsonGrid(result.loadings);
  json["response_loadings"] = jsonGrid(result.responseLoadings);
  json["vip"] = jsonNumbers(result.vip);
  json["level"] = result.level;
  json["t2_limit"] = jsonNumber(result.t2Limit);
  json["q_limit"] = jsonNumber(result.qLimit);
  json["rows"] = Json::array();
  for (const PlsRow& row : result.rows) json["rows"].push_back(jsonRow(row));
  json["remarks"] = jsonRemarks(result.remarks);
  return jsonText(json);
}

std::vector<CsvFile> toTables(const PartialLeastSquares& result) {
  return {{"components.csv", componentsCsv(result)},
          {"coefficients.csv", coefficientsCsv(result)},
          {"loadings.csv", loadingsCsv(result)},
          {"held_out.csv", heldOutCsv(result)},
          {"rows.csv", rowsAsCsv(result)}};
}

std::string rowsAsCsv(const PartialLeastSquares& result) {
  CsvText csv;
  std::vector<std::string> heading{"name", "role"};
  for (const PlsResponse& response : result.responses) {
    const std::string suffix = result.responses.size() == 1 ? "" : "_" + response.name;
    for (const char* what : {"observed", "fitted", "held_out"}) heading.push_back(what + suffix);
  }
  for (const char* what : {"times_held_out", "fold", "t2", "q", "domain"}) heading.emplace_back(what);
  for (std::size_t a = 0; a < result.weights.columns; ++a) heading.push_back(fmt::format("score_{}", a + 1));
  csv.row(heading);
  const auto last = static_cast<std::size_t>(result.kept - 1);
  for (const PlsRow& row : result.rows) {
    std::vector<std::string> cells{row.name, nameOf(row.role)};
    for (std::size_t k = 0; k < result.responses.size(); ++k) {
      cells.push_back(exactOr(row.observed[k]));
      cells.push_back(exact(row.fitted[k]));
      cells.push_back(row.heldOut.empty() ? std::string() : exact(row.heldOut[k][last]));
    }
    cells.push_back(row.timesHeldOut == 0 ? std::string() : std::to_string(row.timesHeldOut));
    cells.push_back(row.fold == 0 ? std::string() : std::to_string(row.fold));
    cells.push_back(exact(row.t2));
    cells.push_back(exact(row.q));
    cells.emplace_back(outsideDomain(result, row) ? "outside" : "inside");
    for (const double score : row.scores) cells.push_back(exact(score));
    csv.row(cells);
  }
  return csv.text();
}

}  // namespace studystats
