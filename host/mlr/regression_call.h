// One call of the regression's entry point: its arrays sized and filled beforehand, its folds set up, its monitor ours.
#pragma once

#include <studystats/host/regression.h>

#include "host/folds.h"
#include "host/preparation/preparation.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace studystats {

struct PreparedRegression {
  Prepared data;
  std::vector<double> response;    // of the model's rows
  std::vector<std::size_t> start;  // descriptors in the model at the start
  std::int32_t maxSteps = 0;
  RunFolds folds;
};

PreparedRegression prepareRegression(const TableView& table, const RegressionOptions& options, Watch& watch);

// The response of a row, absent when its cell is missing or its table has no such column.
std::optional<double> responseOf(const BlockRow& row, const std::string& response);

// The responses of the model's rows. Throws NotComputed when they, or those known of other rows, are too large or too
// small to calculate with.
std::vector<double> responsesOf(const Prepared& data, const std::string& response);

double sampleSd(std::span<const double> values);

struct RegressionCall {
  std::vector<double> fitted, resid, rawCoef, coef, cvCoefSd, coefSe, tValue, tProb, sumSq, stepS;
  std::vector<float> stepPartialF, stepF;
  std::vector<std::int32_t> flags, rowIds, df, inList, cvSelCount, stepAction, stepVar;
  double rawIntercept = 0, intercept = 0, multR = 0, fValue = 0, sValue = 0, fProb = 0, q2 = 0, press = 0;
  std::optional<double> fixedSetQ2;  // of folds by a column, whose refits are at hand
  double cvInterceptSd = -1;         // never negative when it was written
  std::int32_t nIn = 0, nSteps = 0, maxSteps = 0, status = 0;
  std::int64_t reports = 0;  // folds begun
  std::int32_t foldsPlanned = 0;
  std::vector<std::size_t> chosen;  // descriptors of the model, from 0

  bool abandoned() const { return cvInterceptSd == -1; }
};

// Runs the analysis; progress goes from `from` to `to` percent. Throws Stopped and what the progress callback throws.
RegressionCall callRegression(const PreparedRegression& prepared, const RegressionOptions& options, Watch& watch,
                              double from, double to);

// Folds by a column exist by running each of them alone: fills in what the analysis's own validation would have given.
void validateByColumn(RegressionCall& call, const PreparedRegression& prepared, const RegressionOptions& options,
                      Watch& watch, double from, double to);

// q2 of the chosen descriptors alone, all of them kept in every fold; absent when that validation was abandoned.
std::optional<double> fixedSetQ2(const PreparedRegression& prepared, const std::vector<std::size_t>& chosen,
                                 Watch& watch, double from, double to);

// The fold that spoils a validation: the one at which the analysis abandoned it, or one in whose training rows two
// descriptors of the model say the same. The analysis sees only a pivot that is exactly 0; scaled copies leave rounding
// noise there, and with it an inverse without meaning. Random folds, and tables too large to compare, are taken at the
// analysis's word.
struct SingularFold {
  std::int64_t fold = 0;
  std::string culprits;  // "x3, x7 identical in its rows"; empty when none were found
};
std::optional<SingularFold> singularFold(const RegressionCall& call, const PreparedRegression& prepared);

// What every fold said of the rows that it held out: the folds run again, each with its own selection.
struct HeldOutPrediction {
  std::size_t fold = 0;  // from 1
  double value = 0;
};
std::vector<std::vector<HeldOutPrediction>> heldOutPredictions(const PreparedRegression& prepared,
                                                               const RegressionOptions& options,
                                                               const RegressionCall& call, const FoldPlan& plan,
                                                               Watch& watch, double from, double to);

}  // namespace studystats
