// The internal routines of the discriminant analysis, every argument by address: the whole analysis, the selection of
// variables and its parts. Those that classify are in classification.h.
//
// Classes are numbered 1 ... g, g being the shared setting nClasses; variables and rows count from 1 in every argument.
// Data have leading dimension ldData, matrices by variable leading dimension ldVar. Fewer than no variables count as
// none.
//
//   classOf   n          class of each sample       classSize  g            samples of each class
//   selected  p          1 = in the subset          means      ldVar x g    class means
//   within    p x p      pooled within-class        winv       p x p        its inverse on the subset, at the
//                        covariance                                         variables' own positions
//   work      p x p      scratch
//
// status: 0; 1 the covariance of a subset is singular, a class number lies outside 1 ... g, or n <= g; 2 no variable in
// the subset; 5 scratch memory could not be had, nothing else written.
#pragma once

#include <studystats/frame.h>

#include <cstdint>

namespace studystats::core {

// The number of classes; stored by the analysis on entry, process-wide and unguarded.
extern std::int32_t nClasses;

// DisAnl (studystats/analyses.h) with every argument by address.
void DaCore(const double* data, const std::int32_t* classOf, std::int32_t* modelRows, const std::int32_t* inModel,
            const std::int32_t* nSamples, const std::int32_t* nVars, const std::int32_t* classCount,
            const std::int32_t* selectMode, const std::int32_t* nSelect, const std::int32_t* method,
            const std::int32_t* groups, const float* fraction, double* canonVectors, double* canonValues,
            float* stepFraction, float* stepClassFraction, float* cvFractionCorrect, float* cvClassFraction,
            float* distances, std::int32_t* selected, std::int32_t* cvSelCount, std::int32_t* selectOrder,
            std::int32_t* confusion, std::int32_t* cvConfusion, std::int32_t* nSteps, std::int32_t* nCanonical,
            std::int32_t* status, ProgressMonitor* const* progressMonitor, std::int32_t* continueFlag);

// Class means (a class without samples has mean 0) and
//   within(j, k) = sum over samples of deviation(j) * deviation(k) / (n - g),
// deviations from the sample's class mean, each product divided before it is added. Entries of means, and of within
// (ldVar x ldVar), behind the p variables become 0. Status 1: nothing else written.
void DaPool(const double* data, const std::int32_t* classOf, const std::int32_t* ldData, const std::int32_t* ldVar,
            const std::int32_t* n, const std::int32_t* p, double* means, double* within, const std::int32_t* classSize,
            std::int32_t* status);

// The nearest class of sample `row` in squared distance d' winv d over the selected variables; of equal ones the lower
// class; 0 when g < 1. storeDistances other than 0: row `row` of distances (ldData x g) receives their roots.
void DaNear(const double* data, const std::int32_t* ldData, const std::int32_t* ldVar, const std::int32_t* p,
            const std::int32_t* selected, const double* means, const double* winv, const std::int32_t* row,
            std::int32_t* nearest, float* distances, const std::int32_t* storeDistances);

// Inverts `within` on the selected variables, a variance of exactly 0 counting as 1. Other entries of winv stay.
void DaInv(const std::int32_t* p, const std::int32_t* ldVar, const std::int32_t* selected, const double* within,
           double* winv, double* work, std::int32_t* status);

// Builds the model of one subset from means and covariance, and scores it on the n samples:
//   fraction           of the samples whose nearest class is their own
//   classFraction (g)  the same by class; not a number for a class without samples
//   distSum            sum of the distances between class means over all pairs of classes
// Status 1: the shares by class are 0, nothing else is written.
// With one variable classes are told apart by (x - mean)^2, distances between means are in within-class standard
// deviations (in units of x when that is 0), and winv is 1 / variance.
void DaEval(const double* data, const std::int32_t* classOf, const std::int32_t* ldData, const std::int32_t* ldVar,
            const std::int32_t* n, const std::int32_t* p, const std::int32_t* selected, const double* means,
            const double* within, double* winv, double* work, float* fraction, float* classFraction, float* distSum,
            const std::int32_t* classSize, std::int32_t* status);

// Chooses the variables. selectMode 2 with nSelect < 1 takes them all in one step, whose entry of selectOrder is 0.
// Otherwise each step takes the best candidate: with two classes the one with the largest fraction, with any other
// number the one with the largest distance sum; within 1e-5 the other score decides, and then the lower variable. The
// first singular candidate ends the selection with status 1.
//
// The selection ends when no candidate is better than fraction and distance 0, or after maxSteps steps; in mode 1 also
// after nSelect steps. Mode 0 ends when the fraction reaches 0.999999, and refuses a step whose fraction is below the
// last one's, or within 1e-5 of it unless the distance sum has grown by 5 %. Scores and their comparisons are 32-bit.
//
//   selected, means, within     out
//   winv                        out: on the variables selected
//   nSteps, selectOrder (p), stepFraction (p), stepClassFraction (ldVar x g, by step)   out; class fractions of a
//                               refused step stay behind nSteps
//   status                      also 2 when no variable was taken
void DaStep(const double* data, const std::int32_t* classOf, const std::int32_t* ldData, const std::int32_t* ldVar,
            const std::int32_t* n, const std::int32_t* p, const std::int32_t* maxSteps, const std::int32_t* selectMode,
            const std::int32_t* nSelect, std::int32_t* selected, double* within, double* means, double* winv,
            std::int32_t* nSteps, std::int32_t* selectOrder, float* stepFraction, float* stepClassFraction,
            double* work, const std::int32_t* classSize, std::int32_t* status);

}  // namespace studystats::core
