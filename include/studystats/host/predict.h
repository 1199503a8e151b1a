// A model applied to a table that is read row by row: a million rows take no more memory than a thousand.
#pragma once

#include <studystats/host/model.h>
#include <studystats/host/output.h>
#include <studystats/host/table.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace studystats {

struct PredictOptions {
  std::string observed{};  // a column with the known response or class; empty: the model's own, where the table has it
  std::string id{};        // the column that names the rows; empty: as in training, else the first text column
  ReadOptions read{};
  std::size_t shown = 12;  // rows that are kept for the summary
};

// A row with what the table knows of it.
struct PredictedRow {
  Prediction prediction;
  std::vector<std::optional<double>> observed;  // one a response
  std::string known;                            // its class; empty when the table has none
};

// Errors of rows whose response is known.
struct PredictionErrors {
  std::string response;
  std::size_t rows = 0;
  double rmse = 0;
  double bias = 0;                                // mean of predicted - observed
  std::optional<double> rmseInside, rmseOutside;  // of rows inside and outside the domain
  std::optional<std::size_t> withinInterval;
  std::optional<std::size_t> withinFittedInterval;  // of intervals by the fitted error; regression only
};

struct Predictions {
  std::string model;  // the file
  std::string table;
  Model used;
  std::size_t rows = 0;
  std::size_t missing = 0;  // rows that could not be predicted
  std::size_t inside = 0, outside = 0;
  std::vector<PredictedRow> first;
  std::vector<PredictionErrors> errors;                        // one a response that is known in some row
  std::vector<std::size_t> classRows;                          // rows put into each class
  std::optional<std::pair<std::size_t, std::size_t>> correct;  // rows in their known class, of those with one
  std::vector<Remark> remarks;
};

// Reads the table ("-" is standard input) and hands every row to `each`, in order. Throws BadTable for a column that is
// not there and for a cell that is no number, BadOptions, Stopped.
STUDYSTATS_API Predictions predictFile(const Model& model, const std::string& modelName, const std::string& path,
                                       const PredictOptions& options,
                                       const std::function<void(const PredictedRow&)>& each = {});

// The heading of the rows as CSV, and one of them; both end with a line end.
STUDYSTATS_API std::string predictionHeading(const Model& model);
STUDYSTATS_API void appendPrediction(const Model& model, const PredictedRow& row, std::string& csv);

STUDYSTATS_API std::string summary(const Predictions& result, const TextOptions& options = {});
STUDYSTATS_API std::string toJson(const Predictions& result);

}  // namespace studystats
