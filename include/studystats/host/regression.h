// Stepwise multiple linear regression, the whole selection repeated in every fold.
#pragma once

#include <studystats/host/data.h>
#include <studystats/host/model.h>
#include <studystats/host/output.h>
#include <studystats/host/validation.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace studystats {

enum class Selection {
  Stepwise,  // forward selection with backward elimination
  All,       // every descriptor that the correlation limit leaves
};

struct RegressionOptions {
  std::string response{};
  Selection selection = Selection::Stepwise;
  double fEnter = 4.0;               // F-to-enter
  double fRemove = 3.9;              // F-to-remove
  double corrLimit = 0.99;           // largest absolute correlation between descriptors of the model
  int maxSteps = -1;                 // most selection steps; -1: the larger of 10 and a fifth of the rows
  std::vector<std::string> start{};  // patterns: descriptors that are in the model at the start
  Folds folds{};
  double level = 0.95;  // of intervals and limits

  DataOptions data{};
  ProgressCallback progress{};
  StopSignal stop{};
};

// An equation: response = constant + sum of coefficient * name.
struct STUDYSTATS_API Equation {
  struct Term {
    std::string name;
    double coefficient = 0;
  };
  std::string response;
  double constant = 0;
  std::vector<Term> terms;

  // Nine decimals, or the scientific form with 17 digits as soon as a term would keep fewer than six significant
  // digits.
  std::string text() const;
  std::string exact() const;                              // the scientific form: read back, it gives the same numbers
  double evaluate(std::span<const double> values) const;  // values of the terms' descriptors, in their order
};

struct RegressionTerm {
  std::string name;                     // "(constant)" for the first
  double coefficient = 0;               // table units
  double preparedCoefficient = 0;       // of the prepared descriptors
  std::optional<double> standardError;  // of the coefficient, table units
  std::optional<double> halfWidth;  // of its interval at the options' level, Student's t; too narrow where descriptors
                                    // were chosen on the same rows
  std::optional<double> t;
  std::optional<double> p;           // two-sided; absent when it could not be computed
  std::optional<double> foldSpread;  // jackknife spread over the folds, table units
  std::optional<double> perSd;       // response per standard deviation of the descriptor
  std::optional<double> vif;         // variance inflation
  std::size_t foldsChosen = 0;       // folds whose own selection chose it
  std::vector<std::string> sameAs;   // descriptors set aside because they carry the same information
};

struct SelectionStep {
  std::string descriptor;
  bool entered = true;             // else removed
  std::optional<double> partialF;  // absent for an entry at the step limit, which was not tested
  double f = 0;                    // of the model after the step
  double s = 0;                    // its standard error of estimate
};

struct RegressionFit {
  double r2 = 0, adjustedR2 = 0, multipleR = 0;
  double s = 0;     // standard error of estimate, in the response's unit
  double rmse = 0;  // root of the residual sum of squares over the rows
  double f = 0;
  std::optional<double> fProbability;
  int dfModel = 0, dfResidual = 0;
  double sumSqModel = 0, sumSqResidual = 0, sumSqTotal = 0;
};

struct RegressionValidation {
  double q2 = 0;
  double press = 0;
  double rmse = 0;                     // root of press over the rows
  double constantSpread = 0;           // jackknife spread of the constant
  std::optional<double> fixedSetQ2{};  // with the chosen descriptors kept in every fold, as other tools print it
};

struct RegressionRow {
  std::string name{};
  Role role = Role::Model;
  std::optional<double> observed{};
  double fitted = 0;
  std::optional<double> residual{};
  std::optional<double> standardised{};  // residual over s * root(1 - leverage)
  double leverage = 0;
  std::optional<double> heldOut{};  // mean of the predictions while held out, by the folds' own selections
  std::size_t timesHeldOut = 0;
  std::size_t fold = 0;  // from 1, when held out once
};

struct SelectedDescriptor {
  std::string name;
  std::size_t folds = 0;
};

struct Regression {
  UsedData used;
  std::string response;
  double responseMean = 0, responseSd = 0;
  Selection selection = Selection::Stepwise;
  double fEnter = 0, fRemove = 0, corrLimit = 0;
  int maxSteps = 0;
  RegressionFit fit;
  FoldPlan plan;
  Result<RegressionValidation> validation;
  std::vector<RegressionTerm> terms;  // the constant first
  std::vector<SelectionStep> steps;
  std::string stopReason;                     // why the selection ended
  std::vector<SelectedDescriptor> runnersUp;  // not in the model, chosen in at least one fold; the most often first
  std::optional<double> conditionNumber;  // root of the ratio of extreme eigenvalues of the descriptors' correlations
  Equation equation;                      // table units
  Equation preparedEquation;              // of the prepared descriptors
  std::vector<RegressionRow> rows;        // the model's in table order, then those only predicted
  double level = 0.95;
  double leverageLimit = 0;  // 3 (k + 1) / n
  Model model;               // predicts new rows; can be saved
  std::vector<Remark> remarks;
};

// Stepwise multiple linear regression, the whole selection repeated in every fold. Rows without a response are
// predicted.
STUDYSTATS_API Regression regress(const TableView& table, const RegressionOptions& options);
STUDYSTATS_API std::string explain(const TableView& table, const RegressionOptions& options);

// The command's text: plain ASCII, at most 100 columns, without the remarks.
STUDYSTATS_API std::string summary(const Regression& result, const TextOptions& options = {});

// Everything at full precision; "schema" names the form. Not-a-number is null.
STUDYSTATS_API std::string toJson(const Regression& result);

// The same as CSV files, one a table.
STUDYSTATS_API std::vector<CsvFile> toTables(const Regression& result);

// One line a row: name, role, and what the analysis says of it.
STUDYSTATS_API std::string rowsAsCsv(const Regression& result);

}  // namespace studystats
