// A discriminant analysis as JSON and as CSV files.
#include "host/da/discriminant.h"
#include "host/json.h"
#include "host/text.h"

#include <fmt/format.h>

#include <limits>

namespace studystats {
namespace {

Json jsonConfusion(const Confusion& confusion) {
  Json rows = Json::array();
  for (std::size_t t = 0; t < confusion.classes; ++t) {
    Json row = Json::array();
    for (std::size_t q = 0; q < confusion.classes; ++q) row.push_back(confusion(t, q));
    rows.push_back(std::move(row));
  }
  return {{"correct", confusion.correct()},
          {"total", confusion.total()},
          {"fraction", jsonNumber(confusion.fraction())},
          {"true_by_predicted", std::move(rows)}};
}

Json jsonValidation(const Discriminant& result) {
  Json json = jsonPlan(result.plan);
  if (result.validation) {
    json["confusion"] = jsonConfusion(result.validation->confusion);
    json["folds_without_class"] = result.validation->foldsWithout;
    json["all_descriptors"] = result.allDescriptors ? jsonConfusion(*result.allDescriptors) : Json(nullptr);
  } else {
    json["confusion"] = nullptr;
    json["reason"] = "not validated: " + result.validation.error();
  }
  return json;
}

Json jsonClass(const DiscriminantClass& entry) {
  return {{"name", entry.name},
          {"rows", entry.rows},
          {"prior", jsonNumber(entry.prior)},
          {"fitted_correct", entry.fittedCorrect},
          {"held_out", entry.heldOut},
          {"held_out_correct", entry.heldOutCorrect},
          {"means", jsonNumbers(entry.means)},
          {"canonical_means", jsonNumbers(entry.scores)}};
}

Json jsonStep(const DiscriminantStep& step) {
  return {{"descriptor", step.descriptor},
          {"fraction_correct", jsonNumber(step.fraction)},
          {"class_fractions", jsonNumbers(step.classFractions)},
          {"sum_of_distances", jsonNumber(step.distances)}};
}

Json jsonFunction(const CanonicalFunction& function) {
  return {{"eigenvalue", jsonNumber(function.eigenvalue)},
          {"share", jsonNumber(function.share)},
          {"constant", jsonNumber(function.constant)},
          {"coefficients", jsonNumbers(function.coefficients)}};
}

Json orNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

Json jsonRow(const DiscriminantRow& row) {
  return {{"name", row.name},
          {"role", nameOf(row.role)},
          {"known", orNull(row.known)},
          {"predicted", row.predicted},
          {"next", row.next},
          {"distances", jsonNumbers(row.distances)},
          {"posteriors", jsonNumbers(row.posteriors)},
          {"scores", jsonNumbers(row.scores)},
          {"held_out_class", orNull(row.heldOutClass)},
          {"held_out_distances", row.heldOutDistances.empty() ? Json(nullptr) : jsonNumbers(row.heldOutDistances)},
          {"times_held_out", row.timesHeldOut},
          {"fold", row.fold == 0 ? Json(nullptr) : Json(row.fold)}};
}

const char* nameOf(ClassSelection::Kind kind) {
  switch (kind) {
    case ClassSelection::Kind::Auto:
      return "auto";
    case ClassSelection::Kind::All:
      return "all";
    case ClassSelection::Kind::Number:
      break;
  }
  return "number";
}

std::string confusionCsv(const Discriminant& result) {
  CsvText csv;
  csv.row({"validation", "true", "predicted", "rows"});
  const auto add = [&](const std::string& name, const Confusion& confusion) {
    for (std::size_t t = 0; t < confusion.classes; ++t)
      for (std::size_t q = 0; q < confusion.classes; ++q)
        csv.row({name, result.classes[t].name, result.classes[q].name, std::to_string(confusion(t, q))});
  };
  if (result.validation) add("cross-validated", result.validation->confusion);
  add("resubstitution", result.fitted);
  if (result.allDescriptors) add("all descriptors, cross-validated", *result.allDescriptors);
  return csv.text();
}

std::string stepsCsv(const Discriminant& result) {
  CsvText csv;
  std::vector<std::string> heading{"step", "descriptor", "fraction_correct", "sum_of_distances"};
  for (const DiscriminantClass& entry : result.classes) heading.push_back("fraction_correct_" + entry.name);
  csv.row(heading);
  for (std::size_t k = 0; k < result.steps.size(); ++k) {
    const DiscriminantStep& step = result.steps[k];
    std::vector<std::string> cells{std::to_string(k + 1), step.descriptor, exact(step.fraction), exact(step.distances)};
    for (const double fraction : step.classFractions) cells.push_back(exact(fraction));
    csv.row(cells);
  }
  return csv.text();
}

std::string selectionCsv(const Discriminant& result) {
  CsvText csv;
  csv.row({"descriptor", "in_classifier", "folds_chosen", "folds"});
  for (const ChosenDescriptor& descriptor : result.descriptors)
    csv.row({descriptor.name, descriptor.chosen ? "yes" : "no",
             result.validation ? std::to_string(descriptor.foldsChosen) : std::string(),
             std::to_string(result.plan.folds)});
  return csv.text();
}

std::string functionsCsv(const Discriminant& result) {
  CsvText csv;
  std::vector<std::string> heading{"term"};
  for (std::size_t k = 0; k < result.functions.size(); ++k) heading.push_back(fmt::format("function_{}", k + 1));
  csv.row(heading);
  const auto add = [&](const std::string& name, auto value) {
    std::vector<std::string> cells{name};
    for (const CanonicalFunction& function : result.functions) cells.push_back(exact(value(function)));
    csv.row(cells);
  };
  add("(eigenvalue)", [](const CanonicalFunction& f) { return f.eigenvalue; });
  add("(share)", [](const CanonicalFunction& f) { return f.share; });
  add("(constant)", [](const CanonicalFunction& f) { return f.constant; });
  for (std::size_t a = 0; a < result.chosen.size(); ++a)
    add(result.chosen[a], [a](const CanonicalFunction& f) { return f.coefficients[a]; });
  return csv.text();
}

std::string classesCsv(const Discriminant& result) {
  CsvText csv;
  std::vector<std::string> heading{"class", "rows", "prior", "fitted_correct", "held_out", "held_out_correct"};
  for (const std::string& name : result.chosen) heading.push_back("mean_" + name);
  for (std::size_t k = 0; k < result.functions.size(); ++k) heading.push_back(fmt::format("score_{}", k + 1));
  csv.row(heading);
  for (const DiscriminantClass& entry : result.classes) {
    std::vector<std::string> cells{entry.name,
                                   std::to_string(entry.rows),
                                   exact(entry.prior),
                                   std::to_string(entry.fittedCorrect),
                                   result.validation ? std::to_string(entry.heldOut) : std::string(),
                                   result.validation ? std::to_string(entry.heldOutCorrect) : std::string()};
    for (const double mean : entry.means) cells.push_back(exact(mean));
    for (const double score : entry.scores) cells.push_back(exact(score));
    csv.row(cells);
  }
  return csv.text();
}

}  // namespace

std::string toJson(const Discriminant& result) {
  Json json{{"schema", "studystats.da/1"}, {"version", version()}, {"used", jsonUsed(result.used)}};
  json["class_column"] = result.classColumn;
  json["selection"] = {
      {"method", nameOf(result.selection.kind)},
      {"number", result.selection.kind == ClassSelection::Kind::Number ? Json(result.selection.number) : Json(nullptr)},
      {"stop_reason", result.stopReason}};
  json["validation"] = jsonValidation(result);
  json["resubstitution"] = jsonConfusion(result.fitted);
  json["classes"] = Json::array();
  for (const DiscriminantClass& entry : result.classes) json["classes"].push_back(jsonClass(entry));
  json["chosen"] = result.chosen;
  json["steps"] = Json::array();
  for (const DiscriminantStep& step : result.steps) json["steps"].push_back(jsonStep(step));
  json["descriptors"] = Json::array();
  for (const ChosenDescriptor& descriptor : result.descriptors)
    json["descriptors"].push_back({{"name", descriptor.name},
                                   {"chosen", descriptor.chosen},
                                   {"folds_chosen", result.validation ? Json(descriptor.foldsChosen) : Json(nullptr)}});
  json["canonical_functions"] = Json::array();
  for (const CanonicalFunction& function : result.functions)
    json["canonical_functions"].push_back(jsonFunction(function));
  json["level"] = result.level;
  json["rows"] = Json::array();
  for (const DiscriminantRow& row : result.rows) json["rows"].push_back(jsonRow(row));
  json["remarks"] = jsonRemarks(result.remarks);
  return jsonText(json);
}

std::vector<CsvFile> toTables(const Discriminant& result) {
  return {{"confusion.csv", confusionCsv(result)}, {"steps.csv", stepsCsv(result)},
          {"selection.csv", selectionCsv(result)}, {"functions.csv", functionsCsv(result)},
          {"classes.csv", classesCsv(result)},     {"rows.csv", rowsAsCsv(result)}};
}

std::string rowsAsCsv(const Discriminant& result) {
  CsvText csv;
  std::vector<std::string> heading{"name", "role",           "known",          "predicted",
                                   "next", "held_out_class", "times_held_out", "fold"};
  for (const char* figure : {"held_out_distance_", "distance_", "posterior_"})
    for (const DiscriminantClass& entry : result.classes) heading.push_back(figure + entry.name);
  for (std::size_t k = 0; k < result.functions.size(); ++k) heading.push_back(fmt::format("score_{}", k + 1));
  csv.row(heading);
  const std::vector<double> absent(result.classes.size(), std::numeric_limits<double>::quiet_NaN());  // empty cells
  for (const DiscriminantRow& row : result.rows) {
    std::vector<std::string> cells{row.name,
                                   nameOf(row.role),
                                   row.known,
                                   row.predicted,
                                   row.next,
                                   row.heldOutClass,
                                   row.timesHeldOut == 0 ? std::string() : std::to_string(row.timesHeldOut),
                                   row.fold == 0 ? std::string() : std::to_string(row.fold)};
    const std::vector<double> heldOut = row.heldOutDistances.empty() ? absent : row.heldOutDistances;
    for (const auto* figures : {&heldOut, &row.distances, &row.posteriors, &row.scores})
      for (const double figure : *figures) cells.push_back(exact(figure));
    csv.row(cells);
  }
  return csv.text();
}

}  // namespace studystats
