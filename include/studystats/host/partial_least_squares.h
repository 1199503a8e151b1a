// Partial least squares: one or several responses on a few components of many descriptors.
#pragma once

#include <studystats/host/data.h>
#include <studystats/host/model.h>
#include <studystats/host/output.h>
#include <studystats/host/validation.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace studystats {

// How many of the computed components are kept.
struct ComponentChoice {
  enum class Kind {
    Ratio,    // as long as the root of PRESS(a) / RSS(a - 1) is at most `limit` for some response
    Minimum,  // where PRESS, as a share of each response's sum of squares and summed over them, is least
    Number,
  };
  Kind kind = Kind::Ratio;
  double limit = 0.95;  // of Ratio
  int number = 0;       // of Number
};

struct PartialLeastSquaresOptions {
  std::vector<std::string> responses{};
  int components = 0;  // computed; 0: 10, or what rows and columns allow
  ComponentChoice choice{};
  Folds folds{};
  double level = 0.95;  // of limits
  DataOptions data{};
  ProgressCallback progress{};
  StopSignal stop{};
};

// What a number of components is worth for one response. Sums of squares and errors are in the response's unit.
struct PlsFigures {
  double r2 = 0;
  double q2 = 0;
  double rmse = 0;                // root of RSS / rows
  double crossValidatedRmse = 0;  // root of PRESS / rows
  double rss = 0;
  double press = 0;
  double ratio = 0;  // root of PRESS(a) / RSS(a - 1); RSS(0) is the sum of squares about the mean
};

// How well the rows kept out, whose response is known, are predicted.
struct PlsPredicted {
  std::size_t rows = 0;
  double rmse = 0;
  double bias = 0;  // mean of predicted - observed
};

struct PlsResponse {
  std::string name;
  double mean = 0;
  double sd = 0;
  std::vector<PlsFigures> components;        // of models with 1, 2, ... components
  double constant = 0;                       // of the model kept, table units
  std::vector<double> coefficients;          // one a descriptor, table units
  std::vector<double> coefficientErrors;     // jackknife over the folds, table units
  std::vector<double> preparedCoefficients;  // for prepared descriptors and the prepared response
  std::optional<PlsPredicted> predicted;
  std::optional<double> centredInsideQ2;  // with every fold centred on its own training rows
};

struct PlsRow {
  std::string name;
  Role role = Role::Model;
  std::vector<std::optional<double>> observed;  // one a response
  std::vector<double> fitted;                   // one a response, by the model kept
  std::vector<std::vector<double>> heldOut;     // response, number of components - 1: the mean of the predictions while
                                                // held out; empty for rows never held out
  std::size_t heldOutRank = 0;  // components that the training rows of every such fold hold: predictions by more repeat
                                // those by so many, or rest on rounding
  std::size_t timesHeldOut = 0;
  std::size_t fold = 0;        // from 1, when held out once
  std::vector<double> scores;  // one a kept component
  double t2 = 0;               // squared distance within the model plane, in units of the scores' variances
  double q = 0;                // squared distance from the model plane, prepared units
};

struct PartialLeastSquares {
  UsedData used;
  std::vector<PlsResponse> responses;
  int computed = 0;
  int kept = 0;
  ComponentChoice choice;
  std::vector<double> explained;  // cumulative share of the descriptors' sum of squares, one a computed component
  Grid weights;                   // descriptors x kept: unit length, orthogonal
  Grid loadings;                  // descriptors x kept: projection of the prepared descriptors on the scores
  Grid responseLoadings;          // responses x kept
  std::vector<double> vip;        // one a descriptor; their squares sum to the number of descriptors
  std::vector<std::size_t> foldsWithout;  // folds whose training rows hold no such component, one a computed component
  std::vector<PlsRow> rows;               // the model's in table order, then those only predicted
  FoldPlan plan;
  double level = 0.95;
  std::optional<double> t2Limit;  // as for principal components
  std::optional<double> qLimit;
  Model model;  // predicts new rows; can be saved
  std::vector<Remark> remarks;
};

// NIPALS partial least squares, cross-validated. Every fold uses the centring and scaling of all the model's rows. Rows
// that miss a response are predicted.
STUDYSTATS_API PartialLeastSquares partialLeastSquares(const TableView& table,
                                                       const PartialLeastSquaresOptions& options);
STUDYSTATS_API std::string explain(const TableView& table, const PartialLeastSquaresOptions& options);

// The command's text: plain ASCII, at most 100 columns, without the remarks.
STUDYSTATS_API std::string summary(const PartialLeastSquares& result, const TextOptions& options = {});

// Everything at full precision; "schema" names the form. Not-a-number is null.
STUDYSTATS_API std::string toJson(const PartialLeastSquares& result);

// The same as CSV files, one a table.
STUDYSTATS_API std::vector<CsvFile> toTables(const PartialLeastSquares& result);

// One line a row: name, role, and for each response observed, fitted and held out.
STUDYSTATS_API std::string rowsAsCsv(const PartialLeastSquares& result);

}  // namespace studystats
