// A prepared discriminant analysis run by the engine: the selection on all rows of known class, and the same in every
// fold.
#pragma once

#include <studystats/host/discriminant.h>

#include "host/da/preparation.h"
#include "host/held_out.h"
#include "host/watch.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace studystats {

struct TakenStep {
  std::size_t descriptor = 0;
  double fraction = 0;  // of the rows that are nearest to their own class
  std::vector<double> classFractions;
};

// The classifier of all rows of known class.
struct FittedClassifier {
  std::vector<std::size_t> chosen;
  std::vector<TakenStep> steps;      // none when every descriptor is taken at once
  std::optional<TakenStep> refused;  // the step at which an automatic selection ended
  Confusion confusion;
  Grid distances;           // model rows x classes
  Grid predictedDistances;  // rows only classified x classes
};

// Training rows whose selection failed.
struct FailedFold {
  std::size_t fold = 0;  // from 1
  std::size_t folds = 0;
  std::vector<std::size_t> training;
};

// What the folds gave. A failing fold starts the validation over, once, with one row a fold.
struct FoldedDiscriminant {
  std::optional<FailedFold> restartedAt;
  std::optional<FailedFold> failed;  // the fold that ended the validation
  FoldPlan plan;
  Confusion confusion;
  std::vector<std::size_t> timesChosen;   // by descriptor
  std::vector<std::size_t> foldsWithout;  // by class: folds that held out no row of it
  std::vector<std::size_t> notTrained;    // by class: folds whose training rows had none of it
  HeldOutRows heldOut;                    // distances, not-a-number to a class without training rows
};

// Throws NotComputed when no classifier can be built. Progress goes from `from` to `to` percent.
FittedClassifier fitClassifier(const PreparedDiscriminant& prepared, const ClassSelection& selection, Watch& watch,
                               double from, double to);

FoldedDiscriminant foldClassifier(const PreparedDiscriminant& prepared, const ClassSelection& selection, Watch& watch,
                                  const std::string& stage, double from, double to);

}  // namespace studystats
