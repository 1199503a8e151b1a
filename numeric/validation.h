// Cross-validation: how many folds, and which rows each of them trains on and holds out.
//
// An analysis validates in this order:
//   1. it stores cvMethod, cvGroups and cvFraction; planValidation tells it how much storage the folds will need;
//   2. the set-up of the validation order runs VldPln for the n rows;
//   3. for g = 1 ... cvFolds: VldGrp code 5 builds the training subset, the model is fitted on it, VldGrp code 6
//      builds the held-out subset, its rows are predicted and their errors weighted by cvPressWeight.
//
// The settings and the plan are process-wide and unguarded. Rows, positions and groups count from 1 in every argument.
#pragma once

#include <cstdint>

namespace studystats::core {

enum ValidationMethod : std::int32_t { kSystematicGroups = 1 };  // any other value: random subsets

struct ValidationSettings {
  std::int32_t method;  // kSystematicGroups: groups dealt along the validation order
  std::int32_t groups;  // groups asked for; below 1: one row a group
  float fraction;       // multiplier for the number of random folds; negative or not a number counts as 0
};

struct ValidationPlan {
  std::int32_t folds;
  std::int32_t leaveOut;  // rows that a random fold holds out; with systematic groups informative only
  double pressWeight;     // brings the summed prediction errors back to one prediction a row
};

// Stored by each analysis from its own arguments.
extern std::int32_t cvMethod;
extern std::int32_t cvGroups;
extern float cvFraction;

// Written by VldPln.
extern std::int32_t cvFolds;
extern std::int32_t cvLeaveOut;
extern double cvPressWeight;

// The plan for n rows. Systematic: min(n, groups) folds, weight 1. Random: groups * fraction folds, at least 2, or
// n * fraction, at least 1, when the groups asked for are not between 1 and n - 1; weight n / (folds * leaveOut).
// Products and quotients are 32-bit floats, cut to integers. No rows: no folds, nothing left out, weight 1.
ValidationPlan planValidation(const ValidationSettings& settings, std::int32_t n);

// Stores the plan that cvMethod, cvGroups and cvFraction give for n rows.
void VldPln(const std::int32_t* n);

// One subset of a fold: code 5 runs VldTrn, code 6 runs VldOut, any other code touches nothing.
//
//   source      n x m     all rows                   sourceTags  n      a number for each row, carried along
//   subset      n x m     out: the chosen rows from  subsetTags  n x 2  out: their tags in column 1; the rest zero
//                         row 1 down, the rest zero
//   order       n         order[i - 1] is the row at position i of the validation order
//   heldOut     n         1: held out, 0: training; written by code 5, read by code 6
//   usable      n         marks of the rows that may be trained on
//   count       out       rows chosen                columnsOut  out: m from code 6, untouched by code 5
//   group       the current fold, 1 ... cvFolds; order, usable and group are not read by code 6
void VldGrp(const double* source, const std::int32_t* sourceTags, double* subset, std::int32_t* subsetTags,
            const std::int32_t* order, std::int32_t* heldOut, const std::int32_t* usable, const std::int32_t* n,
            const std::int32_t* m, std::int32_t* count, std::int32_t* columnsOut, const std::int32_t* group,
            const std::int32_t* code);

// The training rows of a fold.
// Systematic: all rows at the positions of other groups, in increasing row number; a position i belongs to group
// (i - 1) mod cvFolds + 1, and only positions with usable[i - 1] = 1 are trained on (the mark is read by position).
// Entries of order that name no row are passed over. Random: n - cvLeaveOut rows in the order in which Nmrand(0) draws
// them, never one with usable[row - 1] = 0 (the mark is read by row). A draw outside the rows is drawn again. Ends
// early when all usable rows are taken, or when so many draws in succession found no row that there can be none left to
// find (from some ten million rows on, 32-bit numbers miss some).
void VldTrn(const double* source, const std::int32_t* sourceTags, double* subset, std::int32_t* subsetTags,
            const std::int32_t* order, std::int32_t* heldOut, const std::int32_t* usable, const std::int32_t* n,
            const std::int32_t* m, std::int32_t* count, const std::int32_t* group);

// The rows that VldTrn left marked as held out, in increasing row number; rows that are not usable are among them.
void VldOut(const double* source, const std::int32_t* sourceTags, double* subset, std::int32_t* subsetTags,
            const std::int32_t* heldOut, const std::int32_t* n, const std::int32_t* m, std::int32_t* count,
            std::int32_t* columnsOut);

}  // namespace studystats::core
