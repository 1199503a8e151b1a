// One call of DisAnl: a table, the settings, and every output filled beforehand with values that nothing computes.
#pragma once

#include <studystats/analyses.h>
#include <studystats/frame.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/analyses/calls.h"

namespace studystats {

struct DaCall {
  using Routine = decltype(&DisAnl);
  static constexpr double kUntouched = -7.25;

  DaCall(std::int32_t samples, std::int32_t variables, std::int32_t classes) : n(samples), p(variables), g(classes) {
    data.assign(rows() * columns(), 0.0);
    classOf.assign(2 * rows(), 0);
    inModel.assign(rows(), 1);
  }

  double& cell(std::ptrdiff_t i, std::ptrdiff_t j) { return data[static_cast<std::size_t>(i + j * n)]; }

  void run(Routine routine = DisAnl) {
    clearOutputs();
    call(routine);
  }

  void clearOutputs() {
    for (auto* v : {&modelRows, &selected, &cvSelCount, &selectOrder, &confusion, &cvConfusion, &counts}) v->clear();
    modelRows.resize(rows(), -7);
    for (auto* v : {&selected, &cvSelCount, &selectOrder}) v->resize(columns(), -7);
    for (auto* v : {&confusion, &cvConfusion}) v->resize(classes() * classes(), -7);
    counts.resize(4, -7);
    canonVectors.assign(columns() * columns(), kUntouched);
    canonValues.assign(columns(), kUntouched);
    stepFraction.assign(columns(), -7.25F);
    stepClassFraction.assign(columns() * classes(), -7.25F);
    cvClassFraction.assign(classes(), -7.25F);
    distances.assign(rows() * classes(), -7.25F);
    cvFraction.assign(1, -7.25F);
  }

  void call(Routine routine) {
    routine(data.data(), classOf.data(), modelRows.data(), inModel.data(), n, p, g, selectMode, nSelect, method, groups,
            fraction, canonVectors.data(), canonValues.data(), stepFraction.data(), stepClassFraction.data(),
            cvFraction.data(), cvClassFraction.data(), distances.data(), selected.data(), cvSelCount.data(),
            selectOrder.data(), confusion.data(), cvConfusion.data(), &counts[0], &counts[1], &counts[2], monitor,
            &counts[3]);
  }

  std::int32_t nSteps() const { return counts[0]; }
  std::int32_t nCanonical() const { return counts[1]; }
  std::int32_t status() const { return counts[2]; }
  std::int32_t goesOn() const { return counts[3]; }

  std::int32_t n, p, g;
  std::vector<double> data;
  std::vector<std::int32_t> classOf, inModel;
  std::int32_t selectMode = 0, nSelect = 0, method = 1, groups = 0;
  float fraction = 1;
  ProgressMonitor* monitor = nullptr;

  std::vector<double> canonVectors, canonValues;
  std::vector<float> stepFraction, stepClassFraction, cvFraction, cvClassFraction, distances;
  std::vector<std::int32_t> modelRows, selected, cvSelCount, selectOrder, confusion, cvConfusion, counts;

 private:
  std::size_t rows() const { return static_cast<std::size_t>(std::max(n, 0)); }
  std::size_t columns() const { return static_cast<std::size_t>(std::max(p, 0)); }
  std::size_t classes() const { return static_cast<std::size_t>(std::max(g, 0)); }
};

// The outputs in which two calls differ, by name; empty when there are none.
inline std::string differences(const DaCall& a, const DaCall& b) {
  Differences found;
  found.compare("modelRows", a.modelRows, b.modelRows);
  found.compare("canonVectors", a.canonVectors, b.canonVectors);
  found.compare("canonValues", a.canonValues, b.canonValues);
  found.compare("stepFraction", a.stepFraction, b.stepFraction);
  found.compare("stepClassFraction", a.stepClassFraction, b.stepClassFraction);
  found.compare("cvFraction", a.cvFraction, b.cvFraction);
  found.compare("cvClassFraction", a.cvClassFraction, b.cvClassFraction);
  found.compare("distances", a.distances, b.distances);
  found.compare("selected", a.selected, b.selected);
  found.compare("cvSelCount", a.cvSelCount, b.cvSelCount);
  found.compare("selectOrder", a.selectOrder, b.selectOrder);
  found.compare("confusion", a.confusion, b.confusion);
  found.compare("cvConfusion", a.cvConfusion, b.cvConfusion);
  found.compare("counts", a.counts, b.counts);
  return found.names();
}

}  // namespace studystats
