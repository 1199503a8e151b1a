// The parts of a discriminant analysis that its steps, summary and files share.
#pragma once

#include <studystats/host/discriminant.h>

#include "host/da/discriminant_call.h"

#include <optional>
#include <string>
#include <vector>

namespace studystats {

// What every fold said of the rows that it held out.
struct HeldOut {
  struct Prediction {
    std::size_t fold = 0;  // from 1
    std::size_t predicted = 0;
    std::vector<double> distances;  // to every class mean of the fold's own classifier
  };
  std::vector<std::vector<Prediction>> rows;  // of each model row: none, one, or several with random draws
  std::vector<std::size_t> foldsWithout;      // by class: folds that held out no row of it
  std::vector<std::size_t> notTrained;        // by class: folds whose training rows had none of it
};

// Runs every fold again and keeps what the analysis only counts; absent when the counts are not the analysis's own.
std::optional<HeldOut> heldOutRows(const PreparedDiscriminant& prepared, const DiscriminantOptions& options,
                                   const DiscriminantCall& call, const FoldPlan& plan, Watch& watch, const Span& span);

// Folds by a column exist by running each of them alone: fills in what the analysis's own validation would have given.
void validateByColumn(DiscriminantCall& call, const PreparedDiscriminant& prepared, const ClassSelection& selection,
                      const StopSignal& stop, Watch& watch, const Span& span);

// The nearest class, from 0. Distances as the analysis gives them, in 32 bits; where the smallest are equal there, the
// class whose distance is smaller in `precise`, and of equal ones the first.
std::size_t nearestClass(std::span<const double> distances, std::span<const double> precise);

std::vector<std::size_t> classesWithFewRows(const Discriminant& result);  // fewer than folds that could test them

void remarkOnDiscriminant(Discriminant& result, const std::optional<HeldOut>& heldOut);

}  // namespace studystats
