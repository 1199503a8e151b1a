// Predictions as a page of plain text, as CSV rows and as JSON.
#include <studystats/host/predict.h>

#include "host/json.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>

namespace studystats {
namespace {

// Labels as wide as "Model   ".
std::string labelled(std::string_view label, const std::string& text) {
  return wrapped(std::string(label) + std::string(8 - std::min<std::size_t>(8, label.size()), ' '), text);
}

// A bias to the last place of the error it belongs to, three figures of which are shown.
std::string biasText(double bias, double rmse) {
  const std::string text = sized(bias, rmse, 3);
  return (text.find_first_of("123456789") != std::string::npos && bias > 0 ? "+" : "") + text;
}

// The half width of the first interval, which says how many decimals a response is worth; 0.1 without intervals.
double widthOf(const Predictions& result) {
  for (const PredictedRow& row : result.first)
    if (!row.prediction.halfWidths.empty() && row.prediction.halfWidths.front())
      return *row.prediction.halfWidths.front();
  return 0.1;
}

std::string domainText(const Prediction& prediction) {
  return prediction.inDomain() ? "inside" : "outside: " + prediction.outside;
}

std::string posteriorText(double posterior) { return posterior > 0.9995 ? ">0.999" : fixed(posterior, 3); }

std::size_t classIndex(const Model& model, const std::string& name) {
  const std::vector<std::string>& classes = model.classes();
  return static_cast<std::size_t>(std::find(classes.begin(), classes.end(), name) - classes.begin());
}

void addColumns(TextTable& table, const Predictions& result) {
  const Model& model = result.used;
  const bool named = !model.rowNameColumn().empty();
  table.column(named ? model.rowNameColumn() : "row", Align::Left);
  const std::string level = fmt::format("+-{}", percent(model.level(), 0));
  switch (model.kind()) {
    case Model::Kind::Regression:
    case Model::Kind::PartialLeastSquares:
      for (const std::string& response : model.responses()) {
        table.column(response, Align::Point);
        table.column(level, Align::Point);
      }
      if (model.kind() == Model::Kind::Regression) table.column("leverage");
      if (model.kind() == Model::Kind::PartialLeastSquares) {
        table.column("T2");
        table.column("Q");
      }
      if (!result.errors.empty() && model.responses().size() == 1) {
        table.column("observed", Align::Point);
        table.column("error", Align::Point);
      }
      break;
    case Model::Kind::Discriminant:
      for (const char* heading : {"class", "next"}) table.column(heading, Align::Left);
      for (const char* heading : {"d", "d next"}) table.column(heading, Align::Point);
      table.column("posterior");
      if (result.correct) table.column("known", Align::Left);
      break;
    case Model::Kind::PrincipalComponents:
      for (std::size_t k = 0; k < std::min<std::size_t>(model.scores(), 6); ++k)
        table.column(fmt::format("PC{}", k + 1), Align::Point);
      table.column("T2");
      table.column("Q");
      break;
  }
  table.column("domain", Align::Left);
}

std::vector<std::string> cellsOf(const Predictions& result, const PredictedRow& row, const TextOptions& options) {
  const Model& model = result.used;
  const Prediction& prediction = row.prediction;
  std::vector<std::string> cells{prediction.row};
  if (prediction.missing) {
    cells.push_back("-");
    return cells;
  }
  const double width = widthOf(result);
  if (model.kind() == Model::Kind::Discriminant) {
    const std::size_t nearest = classIndex(model, prediction.predictedClass);
    cells.insert(cells.end(), {prediction.predictedClass, prediction.nextClass, fixed(prediction.distances[nearest], 2),
                               fixed(prediction.distances[classIndex(model, prediction.nextClass)], 2),
                               posteriorText(prediction.posteriors[nearest])});
    if (result.correct) cells.push_back(row.known.empty() ? "-" : row.known);
  } else if (model.kind() == Model::Kind::PrincipalComponents) {
    for (std::size_t k = 0; k < std::min<std::size_t>(prediction.scores.size(), 6); ++k)
      cells.push_back(significant(prediction.scores[k], 4));
    cells.push_back(significant(prediction.t2, 3));
    cells.push_back(significant(prediction.q, 3));
  } else {
    for (std::size_t k = 0; k < prediction.values.size(); ++k) {
      cells.push_back(prediction.values.size() == 1 && prediction.halfWidths[k]
                          ? sized(prediction.values[k], width, 4)
                          : significant(prediction.values[k], options.digits));
      cells.push_back(significant(prediction.halfWidths[k], 3));
    }
    if (model.kind() == Model::Kind::Regression) {
      cells.push_back(fixed(*prediction.leverage, 3));
    } else {
      cells.push_back(significant(prediction.t2, 3));
      cells.push_back(significant(prediction.q, 3));
    }
    if (!result.errors.empty() && prediction.values.size() == 1) {
      cells.push_back(brief(row.observed[0], options.digits));
      const double error = row.observed[0] ? prediction.values[0] - *row.observed[0] : 0;
      cells.push_back(row.observed[0] ? (error > 0 ? "+" : "") + sized(error, width, 3) : "-");
    }
  }
  cells.push_back(domainText(prediction));
  return cells;
}

std::string knownText(const Predictions& result) {
  std::string text;
  for (const PredictionErrors& errors : result.errors) {
    std::string sentence = fmt::format(
        "{} is given in {}: RMSE of prediction {}", errors.response,
        errors.rows == result.rows ? fmt::format("all {} rows", result.rows) : counted(errors.rows, "row", "rows"),
        significant(errors.rmse, 3));
    if (errors.rmseInside && errors.rmseOutside)
      sentence += fmt::format(" (inside {}, outside {})", significant(*errors.rmseInside, 3),
                              significant(*errors.rmseOutside, 3));
    sentence += fmt::format(", bias {} (predicted - observed)", biasText(errors.bias, errors.rmse));
    if (errors.withinInterval)
      sentence += fmt::format("; {} of {} within their interval", *errors.withinInterval, errors.rows);
    text += labelled("Known", sentence);
  }
  if (result.correct)
    text += labelled(
        "Known",
        fmt::format("{} is given in {}: {} of them are put into it ({})", result.used.responses().front(),
                    counted(result.correct->second, "row", "rows"), result.correct->first,
                    percent(static_cast<double>(result.correct->first) / static_cast<double>(result.correct->second))));
  return text;
}

std::string intervalText(const Predictions& result) {
  std::string text = result.used.intervalText();
  if (text.empty()) return {};
  if (!result.errors.empty() && result.errors.front().withinFittedInterval)
    text += fmt::format(" With s it would have held {} of {}.", *result.errors.front().withinFittedInterval,
                        result.errors.front().rows);
  return "\n" + wrapped("", text);
}

std::string kindName(Model::Kind kind) {
  switch (kind) {
    case Model::Kind::PrincipalComponents:
      return "pca";
    case Model::Kind::Regression:
      return "mlr";
    case Model::Kind::PartialLeastSquares:
      return "pls";
    case Model::Kind::Discriminant:
      break;
  }
  return "da";
}

void append(std::string& csv, double value) {
  csv += ',';
  csv += exact(value);
}
void append(std::string& csv, const std::optional<double>& value) {
  csv += ',';
  if (value) csv += exact(*value);
}
void appendText(std::string& csv, const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) {
    csv += text;
    return;
  }
  CsvText quoted;
  quoted.row({text});
  csv += quoted.text().substr(0, quoted.text().find_last_not_of("\r\n") + 1);
}

}  // namespace

std::string predictionHeading(const Model& model) {
  std::vector<std::string> heading{"name"};
  if (model.kind() == Model::Kind::Discriminant) {
    heading.insert(heading.end(), {"known", "predicted", "next"});
    for (const char* what : {"distance_", "posterior_"})
      for (const std::string& name : model.classes()) heading.push_back(what + name);
  } else {
    for (const std::string& response : model.responses()) {
      const std::string suffix = model.responses().size() == 1 ? "" : "_" + response;
      for (const char* what : {"observed", "predicted", "half_width"}) heading.push_back(what + suffix);
    }
  }
  if (model.kind() == Model::Kind::Regression) heading.emplace_back("leverage");
  for (std::size_t k = 0; k < model.scores(); ++k) heading.push_back(fmt::format("score_{}", k + 1));
  if (model.kind() == Model::Kind::PartialLeastSquares || model.kind() == Model::Kind::PrincipalComponents)
    heading.insert(heading.end(), {"t2", "q"});
  heading.insert(heading.end(), {"domain", "outside_by", "missing"});
  CsvText csv;
  csv.row(heading);
  return csv.text();
}

void appendPrediction(const Model& model, const PredictedRow& row, std::string& csv) {
  const Prediction& prediction = row.prediction;
  appendText(csv, prediction.row);
  const bool done = !prediction.missing;
  const auto blanks = [&](std::size_t count) { csv.append(count, ','); };
  if (model.kind() == Model::Kind::Discriminant) {
    csv += ',';
    appendText(csv, row.known);
    csv += ',';
    appendText(csv, prediction.predictedClass);
    csv += ',';
    appendText(csv, prediction.nextClass);
    if (!done) blanks(2 * model.classes().size());
    for (const auto* figures : {&prediction.distances, &prediction.posteriors})
      for (const double figure : *figures) append(csv, figure);
  } else {
    for (std::size_t k = 0; k < model.responses().size(); ++k) {
      append(csv, row.observed[k]);
      append(csv, done ? std::optional(prediction.values[k]) : std::nullopt);
      append(csv, done ? prediction.halfWidths[k] : std::nullopt);
    }
  }
  if (model.kind() == Model::Kind::Regression) append(csv, prediction.leverage);
  if (!done) blanks(model.scores());
  for (const double score : prediction.scores) append(csv, score);
  if (model.kind() == Model::Kind::PartialLeastSquares || model.kind() == Model::Kind::PrincipalComponents) {
    append(csv, prediction.t2);
    append(csv, prediction.q);
  }
  csv += done ? (prediction.inDomain() ? ",inside," : ",outside,") : ",,";
  appendText(csv, prediction.outside);
  csv += ',';
  if (prediction.missing) appendText(csv, *prediction.missing);
  csv += '\n';
}

std::string summary(const Predictions& result, const TextOptions& options) {
  const Model& model = result.used;
  std::string text = labelled("Model", fmt::format("{}: {}", result.model, model.description()));
  if (const std::string honesty = model.honesty(); !honesty.empty()) text += labelled("", honesty);
  text += labelled(
      "Table",
      fmt::format("{}: {}; all {} found; {} not predicted", result.table, counted(result.rows, "row", "rows"),
                  counted(model.columns().size(), "column", "columns"), counted(result.missing, "row", "rows")));
  TextTable table;
  addColumns(table, result);
  for (const PredictedRow& row : result.first) table.row(cellsOf(result, row, options));
  if (result.rows > result.first.size()) table.line(fmt::format("... {} more rows", result.rows - result.first.size()));
  text += "\n" + table.text() + "\n";
  text += labelled(
      "Domain", fmt::format("{} inside, {} outside ({}){}", counted(result.inside, "row", "rows"), result.outside,
                            model.domainLimits(), result.outside > 0 ? ": their predictions are extrapolations" : ""));
  return text + knownText(result) + intervalText(result);
}

std::string toJson(const Predictions& result) {
  const Model& model = result.used;
  Json json{{"schema", "studystats.predict/1"}, {"version", version()}};
  json["model"] = {{"file", result.model},
                   {"kind", kindName(model.kind())},
                   {"description", model.description()},
                   {"validation", model.honesty()}};
  json["table"] = result.table;
  json["rows"] = result.rows;
  json["rows_with_missing_cells"] = result.missing;
  json["inside_domain"] = result.inside;
  json["outside_domain"] = result.outside;
  json["level"] = model.level();
  json["interval"] = model.intervalText();
  json["errors"] = Json::array();
  for (const PredictionErrors& errors : result.errors)
    json["errors"].push_back(
        {{"response", errors.response},
         {"rows", errors.rows},
         {"rmse", jsonNumber(errors.rmse)},
         {"bias", jsonNumber(errors.bias)},
         {"rmse_inside", jsonNumber(errors.rmseInside)},
         {"rmse_outside", jsonNumber(errors.rmseOutside)},
         {"within_interval", errors.withinInterval ? Json(*errors.withinInterval) : Json(nullptr)}});
  if (model.kind() == Model::Kind::Discriminant) {
    json["classes"] = Json::array();
    for (std::size_t c = 0; c < model.classes().size(); ++c)
      json["classes"].push_back({{"name", model.classes()[c]}, {"rows", result.classRows[c]}});
    json["correct"] =
        result.correct ? Json{{"rows", result.correct->second}, {"correct", result.correct->first}} : Json(nullptr);
  }
  json["remarks"] = jsonRemarks(result.remarks);
  return jsonText(json);
}

}  // namespace studystats
