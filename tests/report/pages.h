// Pages for the tests of this folder.
#pragma once

#include <studystats/host.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace studystats::test {

inline Table example(const std::string& name) {
  return readTable(std::string(STUDYSTATS_SOURCE_DIR) + "/examples/" + name);
}

// A page of every analysis, of an example table, and of every kind that looks different.
inline std::vector<std::pair<std::string, ReportPage>> pagesOfEveryAnalysis() {
  std::vector<std::pair<std::string, ReportPage>> pages;
  const Table wine = example("wine.csv"), brain = example("bloodbrain.csv"), air = example("airquality.csv");
  const Table petrol = example("gasoline.csv"), people = example("linnerud.csv"), iris = example("iris.csv");
  const TableView wineView(wine), airView(air), petrolView(petrol), irisView(iris);
  const DataOptions plain;
  const auto add = [&](const std::string& what, const auto& result, const ReportContext& context) {
    pages.emplace_back(what, reportPage(result, context));
  };
  add("describe", describe(air), {.table = &airView});
  add("describe, no table", describe(air), {});
  add("pca", principalComponents(wine, {.classColumn = "cultivar"}), {.table = &wineView});
  add("pca, spectra", principalComponents(petrol, {.responses = {"octane"}}), {.table = &petrolView});
  add("pca, one component", principalComponents(wine, {.components = 1}), {});
  add("mlr", regress(brain, {.response = "logBBB", .maxSteps = 8}), {});
  add("mlr, all",
      regress(people, {.response = "Weight", .selection = Selection::All, .data = {.test = {.rows = {3, 4}}}}), {});
  add("pls", partialLeastSquares(petrol, {.responses = {"octane"}, .data = {.test = {.rows = {50, 51}}}}),
      {.table = &petrolView});
  add("pls, three responses", partialLeastSquares(people, {.responses = {"Weight", "Waist", "Pulse"}}), {});
  add("da", discriminate(wine, {.classColumn = "cultivar"}), {.table = &wineView});
  Table two = iris;
  for (std::string& cell : two.columns.back().texts)
    if (cell != "setosa") cell = "other";
  add("da, two classes", discriminate(two, {.classColumn = "Species"}), {});
  add("cluster", cluster(iris, {.clusters = 3, .classColumn = "Species"}), {.table = &irisView, .preparation = &plain});
  add("cluster, no cut", cluster(iris, {}), {});
  add("cluster, k-means", cluster(iris, {.method = ClusterMethod::KMeans, .clusters = 3}), {});
  add("cluster, neighbours", cluster(iris, {.method = ClusterMethod::Neighbours, .neighbours = 3}), {});
  return pages;
}

}  // namespace studystats::test
