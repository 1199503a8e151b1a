// Partial least squares by NIPALS, cross-validated for every number of components, as building blocks.
//
//   engine::PartialLeastSquares pls({.table = table, .responses = 1, .components = 10});
//   if (!pls) ...                                             // memory could not be had
//   engine::Status status = pls.fit(checkpoint);              // the components of all model rows
//   status = pls.validate(folds.source(), checkpoint, keepFold);
//
// validate is fold() and add() for one fold after the other. A program that has threads calls fold() on several of
// them, each with a place of its own, and add() for the folds in their order: the results have the same bits.
//
// Arrays lie with the first index fastest: element (j, a, k) of p x A x q numbers at j + p * (a + A * k), where j is a
// descriptor, a a component and k a response, all from 0. What is said of component a of a cumulative figure holds for
// the model with a + 1 components.
//
// Wold, Sjostrom & Eriksson (2001), Chemometrics and Intelligent Laboratory Systems 58, 109-130; Wold (1978),
// Technometrics 20, 397-405.
#pragma once

#include <studystats/engine/basics.h>
#include <studystats/engine/folds.h>
#include <studystats/engine/preparation.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace studystats::engine {

struct PartialLeastSquaresTask {
  Table table;                           // p descriptors, then q responses
  std::int32_t responses = 1;            // q
  std::int32_t components = 1;           // A
  std::span<const std::int32_t> rows{};  // of the model, from 0; empty: all of the table
  Preparation preparation{};             // by default the columns are taken as they stand, and should have mean 0
  bool scores = false;                   // fit keeps the scores of the model rows
  bool coefficients = false;             // fit gives the coefficients of every number of components
  bool coefficientErrors = false;        // every fold gives its coefficients, and validation the errors of fit's
};

// What the prepared columns are: prepared = (value - shift) / scale, a missing value being replaced by fill; p + q
// numbers each, all of them empty when nothing is prepared.
struct PreparedColumns {
  std::span<const double> fill, shift, scale;
};

// The model of all model rows. A row x prepared has the scores t = x * rotations and the prediction
// sum over b <= a of inner(b) * responseWeights(b, k) * t(b), in prepared units.
struct PartialLeastSquaresModel {
  std::int32_t components = 0;  // extracted; fewer than A when one did not converge, and the rest is without meaning
  std::int32_t rank = 0;        // leading components that are more than rounding: see PartialLeastSquaresFold
  std::span<const double> weights;          // p x A, of the length that their loadings had
  std::span<const double> loadings;         // p x A, of unit length
  std::span<const double> rotations;        // p x A
  std::span<const double> responseWeights;  // A x q, each component's of unit length
  std::span<const double> inner;            // A
  std::span<const double> scores;           // model rows x A; empty unless asked for
  std::span<const double> scoreSquares;     // A: their sums of squares
  std::span<const double> totalSquares;     // q: of each response about its mean; table units
  std::span<const double> residualSquares;  // A x q: left of it; table units
  std::span<const double> coefficients;     // p x A x q, table units; empty unless asked for
  std::span<const double> intercepts;       // A x q, with the coefficients; 0 when nothing is prepared
  PreparedColumns prepared;
};

// What one fold gave.
struct PartialLeastSquaresFold {
  Status status = Status::Done;  // NotConverged: of the rest rows, components and rank are there
  FoldRows rows;
  std::int32_t components = 0;  // extracted from the training rows
  // Leading components whose scores and whose share of some response are more than rounding. Predictions by more
  // components repeat those by so many, or rest on rounding.
  std::int32_t rank = 0;
  std::span<const double> scoreSquares;  // by component extracted
  std::span<const double> predictions;   // rows held out x A x q, table units
  std::span<const double> coefficients;  // p x A x q, table units; empty unless errors are asked for
  std::span<const double> intercepts;    // A x q, with the coefficients; 0 when nothing is prepared

  // Of response k for the i-th row held out, by a + 1 components.
  double prediction(std::size_t i, std::int32_t a, std::int32_t k) const {
    return predictions[i + rows.heldOut.size() * static_cast<std::size_t>(a + components * k)];
  }
};

// Sums over the folds, table units.
struct PartialLeastSquaresValidation {
  std::span<const double> press;              // A x q: weighted squared prediction errors
  std::span<const double> coefficientErrors;  // p x A x q: jackknife standard errors; empty unless asked for
};

// Sums of squares from which the number of components is chosen: A x q, and the total of each response.
struct ComponentErrors {
  std::int32_t components = 0;
  std::span<const double> press, residualSquares, totalSquares;
};

// The root of press by a + 1 components over the squares that a components left; 0 when they left nothing.
STUDYSTATS_API double pressRatio(const ComponentErrors& errors, std::int32_t a, std::int32_t k);

// The ratio rule: the leading components of which each has a ratio within the limit for some response; one at least.
STUDYSTATS_API std::int32_t componentsByRatio(const ComponentErrors& errors, double limit);

class STUDYSTATS_API PartialLeastSquares {
 public:
  // Obtains all memory, for so many places to run folds. What the task views must outlive the object.
  explicit PartialLeastSquares(const PartialLeastSquaresTask& task, std::int32_t places = 1);
  ~PartialLeastSquares();
  PartialLeastSquares(const PartialLeastSquares&) = delete;
  PartialLeastSquares& operator=(const PartialLeastSquares&) = delete;
  explicit operator bool() const;  // whether the memory was there

  // The model of all model rows; uses place 0. Done, NotConverged, Singular (no components), Stopped or NoMemory.
  Status fit(const Checkpoint& checkpoint = {});
  PartialLeastSquaresModel model() const;

  // Fold by fold, in order; ends at a fold that does not converge. Done, NotConverged or Stopped.
  template <class Keep>
  Status validate(const FoldSource& folds, const Checkpoint& checkpoint, Keep&& keep) {
    restart();
    for (std::int32_t f = 0; f < folds.count; ++f) {
      const PartialLeastSquaresFold one = fold(folds, f, checkpoint);
      if (one.status == Status::Stopped) return one.status;
      keep(one);
      if (one.status != Status::Done) return one.status;
      add(one, folds.weight);
    }
    return Status::Done;
  }
  Status validate(const FoldSource& folds, const Checkpoint& checkpoint = {}) {
    return validate(folds, checkpoint, [](const PartialLeastSquaresFold&) {});
  }

  // One fold; it does not need fit. Different places may be used at once; what is returned lasts until the place is
  // used again. The folds' rows are the table's, and no list is longer than the table.
  PartialLeastSquaresFold fold(const FoldSource& folds, std::int32_t number, const Checkpoint& checkpoint = {},
                               std::int32_t place = 0);
  void add(const PartialLeastSquaresFold& fold, double weight);  // in the order of the folds; those that are Done
  void restart();                                                // forgets those added, as validate does at first
  PartialLeastSquaresValidation validation();                    // of those added

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace studystats::engine
