// Discriminant analysis, the whole selection of variables repeated in every fold, as building blocks.
//
//   engine::Discriminant analysis({.table = table, .classOf = classOf, .classes = 3, .rules = rules});
//   if (!analysis) ...                                              // memory could not be had
//   engine::Status status = analysis.fit(checkpoint);               // the selection on the rows of the model
//   status = analysis.validate(folds.source(), checkpoint, keepFold);  // the same in every fold
//
// validate is fold() and add() for one fold after the other. A program that has threads calls fold() on several of
// them, each with a place of its own, and add() for the folds in their order: the results have the same bits.
//
// A row goes to the class whose mean is nearest in Mahalanobis distance under the pooled within-class covariance of the
// variables chosen; of equal distances to the lower class. McLachlan, Discriminant Analysis and Statistical Pattern
// Recognition (1992); Hastie, Tibshirani & Friedman, The Elements of Statistical Learning, 2nd ed. (2009), section
// 7.10.2.
#pragma once

#include <studystats/engine/basics.h>
#include <studystats/engine/folds.h>

#include <cstdint>
#include <memory>
#include <span>

namespace studystats::engine {

// How variables come into the classifier. Step by step the best candidate enters: with two classes the one that
// classifies most rows of the fit correctly, with more the one with the largest sum of distances between class means;
// within 1e-5 the other score decides, and then the lower variable.
enum class VariableChoice : std::int32_t {
  Automatic,   // while the fraction correct grows, or stands still and the sum of distances grows by 5 %; to 0.999999
  Number,      // so many steps, as long as a candidate tells the classes apart
  Everything,  // all variables at once
  EveryStep,   // steps as long as a candidate tells the classes apart
};

struct DiscriminantRules {
  VariableChoice choice = VariableChoice::Automatic;
  std::int32_t number = 1;         // of steps, for Number
  std::int32_t mostVariables = 0;  // at which steps end in any case; below 1: as many as the table has rows
};

struct DiscriminantTask {
  Table table;                              // variables
  std::span<const std::int32_t> classOf{};  // of every row of the table: 0 ... classes - 1; any other number: unknown
  std::int32_t classes = 0;
  std::span<const std::int32_t> rows{};  // of the model, from 0, each once, all of known class; empty: all rows
  DiscriminantRules rules{};
};

struct DiscriminantStep {
  std::int32_t variable;                  // from 0; -1: all of them at once
  float fraction;                         // of the rows of the fit that are nearest to their own class, after the step
  float distances;                        // sum of the distances between class means
  std::span<const float> classFractions;  // the same fraction by class; not a number for a class without rows
};

// The model of the rows of the task. Numbers in it are of the variables chosen, m of them, unless it says otherwise.
struct DiscriminantModel {
  std::span<const DiscriminantStep> steps;
  const DiscriminantStep* refused = nullptr;  // the step at which an automatic choice ended, or null
  std::span<const std::int32_t> variables;    // chosen, from 0, ascending
  std::span<const std::int32_t> classSizes;   // rows of the model in each class
  Table means;                                // m x classes; a class without rows has mean 0
  Table inverse;                              // m x m, of the pooled within-class covariance (see below)
  std::span<const std::int32_t> confusion;    // true class + predicted class * classes: rows of the model
};

// Directions in which the class means spread most, in units of the spread within classes.
struct CanonicalModel {
  Table withinScatter;                  // m x m: the pooled covariance times (rows - classes)
  Table betweenScatter;                 // m x m: the total scatter less that within
  Table whitening;                      // m x m: its rows times deviations have an identity for withinScatter
  std::span<const double> eigenvalues;  // min(m, classes - 1), of betweenScatter in whitened coordinates, largest first
  Table vectors;                        // m x as many, each of length 1, in whitened coordinates
};

// What one fold gave.
struct DiscriminantFold {
  Status status = Status::Done;  // Singular, NotConverged (no variable taken), Stopped: of the rest only rows is there
  FoldRows rows;
  std::span<const std::int32_t> variables;  // chosen by the fold's own selection, ascending
  std::span<const std::int32_t> predicted;  // nearest class of each row held out
  Table distances;                          // rows held out x classes
};

// Sums over the folds. A row held out whose class is unknown is not counted.
struct DiscriminantValidation {
  std::span<const std::int32_t> timesChosen;  // by variable of the table: folds whose selection chose it
  std::span<const std::int32_t> confusion;    // true class + predicted class * classes
  std::span<const std::int32_t> validated;    // by class: rows held out, once for every fold that did
  std::span<const std::int32_t> correct;      // and of these, those predicted into it
};

// Selection. One subset whose covariance is singular ends it with Singular; nothing chosen ends it with NotConverged.
//
// Distances are Mahalanobis'. A variance of exactly 0 counts as 1 among several variables. With one variable they are
// differences in units of its standard deviation within classes, or plain ones when that is 0; its inverse is then
// 1 / 0, infinite.
//
// Memory. Steps take a copy of the rows of the fit and a column of the covariance for every variable that enters, not
// the whole matrix. What mostVariables leaves room for is reserved, and costs nothing until it is used.
class STUDYSTATS_API Discriminant {
 public:
  // Obtains all memory, for so many places to run folds. What the task views must outlive the object.
  explicit Discriminant(const DiscriminantTask& task, std::int32_t places = 1);
  ~Discriminant();
  Discriminant(const Discriminant&) = delete;
  Discriminant& operator=(const Discriminant&) = delete;
  explicit operator bool() const;  // whether the memory was there

  // Selects on the rows of the model. Done, Singular (fewer rows than classes + 1, or a row of unknown class, too),
  // NotConverged, Stopped or NoMemory. After Singular and NotConverged the steps up to there are in the model.
  Status fit(const Checkpoint& checkpoint = {});
  const DiscriminantModel& model() const;

  // The canonical functions of the model, in memory obtained here; the views last until the next call or fit. Of m
  // variables they take m^4 / 2 multiplications. Done; NotConverged (both scatters are there); Singular without a
  // model; Stopped; NoMemory.
  Status canonical(CanonicalModel& canonical, const Checkpoint& checkpoint = {});

  // Distances of rows of any table with the same columns to the class means of the model, and their nearest classes.
  // rows empty: all of them. distances has as many rows as are asked for, ld at least, and a column a class; predicted
  // as many numbers, or none. Done; Singular without a model; Stopped.
  Status place(const Table& table, std::span<const std::int32_t> rows, double* distances, std::int32_t ld,
               std::span<std::int32_t> predicted, const Checkpoint& checkpoint = {});

  // Fold by fold, in order; ends at a fold whose selection fails. Done, Singular, NotConverged or Stopped.
  template <class Keep>
  Status validate(const FoldSource& folds, const Checkpoint& checkpoint, Keep&& keep) {
    restart();
    for (std::int32_t f = 0; f < folds.count; ++f) {
      const DiscriminantFold one = fold(folds, f, checkpoint);
      if (one.status == Status::Stopped) return one.status;
      keep(one);
      add(one);
      if (one.status != Status::Done) return one.status;
    }
    return Status::Done;
  }
  Status validate(const FoldSource& folds, const Checkpoint& checkpoint = {}) {
    return validate(folds, checkpoint, [](const DiscriminantFold&) {});
  }

  // One fold; no fit is needed. Different places may be used at once; what is returned lasts until the place is used
  // again.
  DiscriminantFold fold(const FoldSource& folds, std::int32_t number, const Checkpoint& checkpoint = {},
                        std::int32_t place = 0);
  void add(const DiscriminantFold& fold);     // in the order of the folds; one that failed counts nothing
  void restart();                             // forgets those added, as validate does at first
  DiscriminantValidation validation() const;  // of those added

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace studystats::engine
