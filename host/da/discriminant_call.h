// What discriminant analysis is given, and one call of its entry point: arrays sized and filled beforehand.
#pragma once

#include <studystats/host/discriminant.h>

#include "host/folds.h"
#include "host/preparation/preparation.h"

#include <cstdint>
#include <string>
#include <vector>

namespace studystats {

struct PreparedDiscriminant {
  Prepared data;
  std::vector<std::int32_t> classOf;    // of the model's rows, from 1
  std::vector<std::string> classNames;  // in their order
  std::vector<std::size_t> classSizes;
  RunFolds folds;

  std::size_t classes() const { return classNames.size(); }
};

PreparedDiscriminant prepareDiscriminant(const TableView& table, const DiscriminantOptions& options, Watch& watch);

// Rows of the matrix that an entry point is given: which, of what class (0: unknown), and whether the model has them.
struct ClassRows {
  Grid data;
  std::vector<std::int32_t> classOf, inModel;
};
ClassRows knownRows(const PreparedDiscriminant& prepared);           // all in the model
ClassRows allRows(const PreparedDiscriminant& prepared);             // those only classified behind them
ClassRows rowsOfFold(const ClassRows& known, const FoldRows& fold);  // its training rows, then the held-out ones

struct DiscriminantCall {
  std::vector<std::int32_t> modelRows, selected, cvSelCount, selectOrder, confusion, cvConfusion;
  std::vector<float> stepFraction, stepClassFraction, cvClassFraction, distances;
  std::vector<double> canonVectors, canonValues;
  float cvFractionCorrect = 0;  // not a number unless every fold ended
  std::int32_t nSteps = 0, nCanonical = 0, status = 0;
  std::int32_t foldsBegun = 0, foldsPlanned = 0;  // of the validation that was run last
  std::int32_t restartedAt = 0;  // the fold whose own selection failed: all is started over with one row a group

  bool validated() const { return cvFractionCorrect == cvFractionCorrect; }
  std::vector<std::size_t> chosen() const;
};

// How variables are selected and rows held out, as the entry point takes them.
struct CallSettings {
  std::int32_t selectMode = 0, nSelect = 0;
  FoldSettings folds{.method = 0, .groups = 0, .fraction = 0};  // one random fold, of rows outside the model
};
CallSettings settingsOf(const ClassSelection& selection);

// Progress goes from `from` to `to` percent. Throws Stopped and what the progress callback throws.
struct Span {
  std::string text;
  double from = 0, to = 0;
};
DiscriminantCall callDiscriminant(const ClassRows& rows, std::size_t classes, const CallSettings& settings,
                                  std::int32_t seed, Watch& watch, const Span& span);

}  // namespace studystats
