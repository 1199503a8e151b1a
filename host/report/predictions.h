// Charts of predictions, fitted, held out and of rows kept out of the model, for one response or for one of several
// that is chosen on the page.
#pragma once

#include <studystats/host/report.h>
#include <studystats/host/validation.h>

#include "host/report/charts.h"

#include <string>
#include <vector>

namespace studystats {

struct PredictedRows {
  std::vector<std::string> responses;
  const Table* rows = nullptr;  // fields observed, fitted, heldOut, residual, heldOutError; see fieldOf
  bool heldOut = false;         // there are rows held out
  bool known = false;           // there are rows kept out of the model whose response is known
  std::string draws{};          // a sentence on random draws, see heldOutByDraws
};

// Random draws are no partition: how many of the model's rows they held out, and how many of those more than once. With
// a blank before it; empty for other folds. predicted: what a figure shows of a row that was held out more than once.
std::string drawsText(std::size_t draws, std::size_t rows, std::size_t heldOut, std::size_t again,
                      const std::string& predicted);

constexpr const char* kMeanOfPredictions = "their points are means";

template <class Row>
std::string heldOutByDraws(const FoldPlan& plan, const std::vector<Row>& rows, const std::string& predicted) {
  if (plan.kind != Folds::Kind::Random) return {};
  std::size_t model = 0, heldOut = 0, again = 0;
  for (const Row& row : rows) {
    model += row.role == Role::Model ? 1 : 0;
    heldOut += row.timesHeldOut > 0 ? 1 : 0;
    again += row.timesHeldOut > 1 ? 1 : 0;
  }
  return drawsText(plan.folds, model, heldOut, again, predicted);
}

// "observed" for the only response, else "observed0", "observed1", ...
std::string fieldOf(const std::string& name, std::size_t response, std::size_t responses);

ReportFigure observedPredicted(const PredictedRows& predictions);
ReportFigure residuals(const PredictedRows& predictions);

// A selector of one of several responses; nothing for one.
void chooseResponse(const std::vector<std::string>& responses, Json& chart);

}  // namespace studystats
