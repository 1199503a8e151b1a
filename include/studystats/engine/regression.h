// Stepwise multiple linear regression, the whole selection repeated in every fold, as building blocks.
//
//   engine::Regression regression({.table = table, .rules = rules}, folds.count());
//   if (!regression) ...                                            // memory could not be had
//   engine::Status status = regression.fit(checkpoint);             // the selection on all rows
//   regression.validate(folds.source(), checkpoint, keepFold);      // the same in every fold
//
// validate is fold() and add() for one fold after the other. A program that has threads calls fold() on several of
// them, each with a place of its own, and add() for the folds in their order: the results have the same bits.
//
// Draper & Smith, Applied Regression Analysis, 3rd ed. (1998), chapter 15; Hastie, Tibshirani & Friedman, The Elements
// of Statistical Learning, 2nd ed. (2009), section 7.10.2.
#pragma once

#include <studystats/engine/basics.h>
#include <studystats/engine/folds.h>
#include <studystats/engine/preparation.h>

#include <cstdint>
#include <memory>
#include <span>

namespace studystats::engine {

struct SelectionRules {
  float fEnter = 4.0F;      // a descriptor stays when its partial F is this large at least
  float fRemove = 3.9F;     // the weakest descriptor leaves when its partial F is smaller
  float corrLimit = 0.99F;  // largest absolute correlation between descriptors of the model; 1: no limit
  std::int32_t maxSteps = 10;
};

struct RegressionTask {
  Table table;  // descriptors x in columns 0 ... m - 1, the response in column m
  SelectionRules rules{};
  std::span<const std::int32_t> start{};  // descriptors in the model at the start, from 0, each once
  std::span<const double> scale{};        // by descriptor: x = (raw - shift) / scale, when x has been transformed, ...
  std::span<const double> shift{};        // ... so that intercepts can be told in raw units; empty: it has not
  Preparation preparation{};              // selections and fits see what comes of it; what is told is in table units
};

// response = intercept + sum of coefficient * descriptor.
struct LinearModel {
  std::span<const std::int32_t> descriptors;  // from 0, ascending
  std::span<const double> coefficients;       // of those
  double intercept = 0;
};

struct SelectionStep {
  std::int32_t descriptor;
  bool entered;    // else removed
  float partialF;  // not-a-number for an entry at the step limit, which was not tested
  float f, s;      // F and standard error of estimate after the step
};

// The model of all rows.
struct RegressionModel {
  LinearModel equation;
  std::span<const SelectionStep> steps;     // of the selection
  std::span<const SelectionStep> tried;     // the same and, behind them, steps that were taken back
  double totalSquares = 0;                  // of the response about its mean
  double residualSquares = 0;               // left of it
  std::span<const double> inverseDiagonal;  // of the descriptors' cross-products, by position in the model
};

// What is said of the model of all rows besides. Probabilities that cannot be computed are -1; without degrees of
// freedom, and with residuals that are all 0, statistics are infinite or not numbers.
struct RegressionStatistics {
  std::span<const double> fitted, residuals;  // by row; not numbers where the table misses a cell
  double modelSquares = 0, residualSquares = 0, totalSquares = 0;
  std::int32_t modelDf = 0, residualDf = 0;
  double multipleR = 0;
  double s = 0;  // standard error of estimate
  double f = 0, fProbability = 0;
  std::span<const double> standardErrors, t, tProbabilities;  // of the coefficients, by position in the model
};

// What one fold gave.
struct RegressionFold {
  Status status = Status::Done;  // Singular: of the rest only rows is there, and own where selected is true
  bool selected = false;         // the fold's own selection ended well
  FoldRows rows;
  LinearModel own;                      // by its own selection
  std::span<const double> predictions;  // of the rows held out, by that model
  LinearModel refit;                    // the model of all rows, fitted to the fold's training rows
  double rawIntercept = 0;              // of refit, in raw units
};

// Sums over the folds.
struct RegressionValidation {
  bool abandoned = false;                     // a fold was singular: the figures below are without meaning
  double press = 0;                           // weighted squared prediction errors
  std::span<const std::int32_t> timesChosen;  // by descriptor: folds whose own selection chose it
  std::span<const double> spreads;            // jackknife spreads of the coefficients, by position in the model
  double interceptSpread = 0;                 // of the intercept, raw units
};

class STUDYSTATS_API Regression {
 public:
  // Obtains all memory, for so many folds and so many places to run them. What the task views must outlive the object.
  explicit Regression(const RegressionTask& task, std::int32_t folds = 0, std::int32_t places = 1);
  ~Regression();
  Regression(const Regression&) = delete;
  Regression& operator=(const Regression&) = delete;
  explicit operator bool() const;  // whether the memory was there

  // Selects on all rows. Done, Singular, Stopped or NoMemory.
  Status fit(const Checkpoint& checkpoint = {});
  RegressionModel model() const;
  RegressionStatistics statistics();  // after a fit that is Done

  // Fold by fold, in order; ends at a fold that is singular. Done or Stopped.
  template <class Keep>
  Status validate(const FoldSource& folds, const Checkpoint& checkpoint, Keep&& keep) {
    restart();
    for (std::int32_t f = 0; f < folds.count; ++f) {
      const RegressionFold one = fold(folds, f, checkpoint);
      if (one.status == Status::Stopped) return one.status;
      keep(one);
      add(one, folds.weight);
      if (one.status != Status::Done) break;
    }
    return Status::Done;
  }
  Status validate(const FoldSource& folds, const Checkpoint& checkpoint = {}) {
    return validate(folds, checkpoint, [](const RegressionFold&) {});
  }

  // One fold, after fit. Different places may be used at once; what is returned lasts until the place is used again.
  RegressionFold fold(const FoldSource& folds, std::int32_t number, const Checkpoint& checkpoint = {},
                      std::int32_t place = 0);
  void add(const RegressionFold& fold, double weight);  // in the order of the folds
  void restart();                                       // forgets those added, as validate does at first
  RegressionValidation validation();                    // of those added

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace studystats::engine
