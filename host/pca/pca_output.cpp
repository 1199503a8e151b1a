// The principal components as JSON and as CSV files.
#include <studystats/host/principal_components.h>

#include "host/json.h"
#include "host/text.h"

#include <fmt/format.h>

namespace studystats {
namespace {

std::vector<std::string> componentNames(std::size_t count) {
  std::vector<std::string> names;
  for (std::size_t k = 0; k < count; ++k) names.push_back(fmt::format("PC{}", k + 1));
  return names;
}

Json jsonRow(const ComponentRow& row, bool labelled) {
  Json json{{"name", row.name}, {"role", nameOf(row.role)}};
  if (labelled) json["class"] = row.label;
  json["scores"] = jsonNumbers(row.scores);
  json["t2"] = jsonNumber(row.t2);
  json["q"] = jsonNumber(row.q);
  return json;
}

std::string gridCsv(const std::string& corner, const std::vector<std::string>& names, const Grid& grid) {
  CsvText csv;
  std::vector<std::string> heading = componentNames(grid.columns);
  heading.insert(heading.begin(), corner);
  csv.row(heading);
  for (std::size_t i = 0; i < grid.rows; ++i) {
    std::vector<std::string> cells{names[i]};
    for (std::size_t k = 0; k < grid.columns; ++k) cells.push_back(exact(grid(i, k)));
    csv.row(cells);
  }
  return csv.text();
}

std::string componentsCsv(const PrincipalComponents& result) {
  CsvText csv;
  csv.row({"component", "eigenvalue", "explained", "cumulative"});
  for (std::size_t k = 0; k < result.components.size(); ++k) {
    const Component& c = result.components[k];
    csv.row({std::to_string(k + 1), exact(c.eigenvalue), exact(c.explained), exact(c.cumulative)});
  }
  return csv.text();
}

std::string preparationCsv(const UsedData& used) {
  CsvText csv;
  csv.row({"descriptor", "shift", "scale"});
  for (std::size_t j = 0; j < used.descriptors.size(); ++j)
    csv.row({used.descriptors[j], exact(used.shift[j]), exact(used.scale[j])});
  return csv.text();
}

}  // namespace

std::string toJson(const PrincipalComponents& result) {
  Json json{{"schema", "studystats.pca/1"}, {"version", version()}, {"used", jsonUsed(result.used)}};
  json["supported_components"] = result.supported;
  json["kept_components"] = result.kept;
  std::vector<double> eigenvalues, explained, cumulative;
  for (const Component& c : result.components) {
    eigenvalues.push_back(c.eigenvalue);
    explained.push_back(c.explained);
    cumulative.push_back(c.cumulative);
  }
  json["eigenvalues"] = jsonNumbers(eigenvalues);
  json["explained"] = jsonNumbers(explained);
  json["cumulative"] = jsonNumbers(cumulative);
  if (result.aboveOne) json["eigenvalues_above_one"] = *result.aboveOne;
  json["above_broken_stick"] = result.aboveBrokenStick;
  json["loadings"] = jsonGrid(result.loadings);
  json["explained_by_descriptor"] = jsonGrid(result.explained);
  json["level"] = result.level;
  json["t2_limit"] = jsonNumber(result.t2Limit);
  if (!result.t2Limit) json["t2_limit_reason"] = "as many components as rows";
  json["q_limit"] = jsonNumber(result.qLimit);
  if (!result.qLimit) json["q_limit_reason"] = "the components leave no residuals";
  if (!result.classColumn.empty()) {
    json["class"] = result.classColumn;
    json["groups"] = Json::array();
    for (const ComponentGroup& group : result.groups)
      json["groups"].push_back(
          {{"class", group.label}, {"rows", group.rows}, {"mean_scores", jsonNumbers(group.meanScores)}});
  }
  json["rows"] = Json::array();
  for (const ComponentRow& row : result.rows) json["rows"].push_back(jsonRow(row, !result.classColumn.empty()));
  json["remarks"] = jsonRemarks(result.remarks);
  return jsonText(json);
}

std::vector<CsvFile> toTables(const PrincipalComponents& result) {
  return {{"components.csv", componentsCsv(result)},
          {"loadings.csv", gridCsv("descriptor", result.used.descriptors, result.loadings)},
          {"explained.csv", gridCsv("descriptor", result.used.descriptors, result.explained)},
          {"preparation.csv", preparationCsv(result.used)},
          {"rows.csv", rowsAsCsv(result)}};
}

std::string rowsAsCsv(const PrincipalComponents& result) {
  CsvText csv;
  std::vector<std::string> heading = componentNames(static_cast<std::size_t>(result.kept));
  heading.insert(heading.begin(), {"name", "role"});
  if (!result.classColumn.empty()) heading.insert(heading.begin() + 2, result.classColumn);
  heading.insert(heading.end(), {"T2", "Q"});
  csv.row(heading);
  for (const ComponentRow& row : result.rows) {
    std::vector<std::string> cells{row.name, nameOf(row.role)};
    if (!result.classColumn.empty()) cells.push_back(row.label);
    for (const double score : row.scores) cells.push_back(exact(score));
    cells.push_back(exact(row.t2));
    cells.push_back(exact(row.q));
    csv.row(cells);
  }
  return csv.text();
}

}  // namespace studystats
