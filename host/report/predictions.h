// Charts of predictions, fitted, held out and of rows kept out of the model, for one response or for one of several
// that is chosen on the page.
#pragma once

#include <studystats/host/report.h>

#include "host/report/charts.h"

#include <string>
#include <vector>

namespace studystats {

struct PredictedRows {
  std::vector<std::string> responses;
  const Table* rows = nullptr;  // fields observed, fitted, heldOut, residual, heldOutError; see fieldOf
  bool heldOut = false;         // there are rows held out
  bool known = false;           // there are rows kept out of the model whose response is known
};

// "observed" for the only response, else "observed0", "observed1", ...
std::string fieldOf(const std::string& name, std::size_t response, std::size_t responses);

ReportFigure observedPredicted(const PredictedRows& predictions);
ReportFigure residuals(const PredictedRows& predictions);

// A selector of one of several responses; nothing for one.
void chooseResponse(const std::vector<std::string>& responses, Json& chart);

}  // namespace studystats
