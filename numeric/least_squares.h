// Ordinary least-squares regression of one column on chosen other columns, from centred cross-products, with what a
// stepwise selection asks of a fit.
//
// Matrices are column-major; variables and positions count from 1. The candidate variables are the columns before the
// response. A model is its flags (1 = in); position a of the model is the a-th of its variables in ascending order.
// Coefficients stand by position, t-values by variable. A block is singular only when a pivot is exactly 0.
//
// Where a routine needs scratch memory it obtains it on entry; status 5 then means that nothing else has been done.
// What works on scratch memory of the caller is in regression_fit.h.
#pragma once

#include <cstdint>

namespace studystats::core {

// The variables in the model and the others among 1 ... m, ascending. The first n entries of both lists are set to 0
// before.
void SplitVars(const std::int32_t* n, const std::int32_t* m, const std::int32_t* flags, std::int32_t* nIn,
               std::int32_t* inList, std::int32_t* nOut, std::int32_t* outList);

// Replaces the leading n x n block of a (leading dimension ld) by its inverse, by Gauss-Jordan elimination with full
// pivoting. Of equal pivots the last met wins: the later column, within it the later row.
// status: 0; 1 when a pivot is exactly 0 or no element left is a number (a is left partly reduced); 5.
void InvMat(const std::int32_t* n, const std::int32_t* ld, double* a, std::int32_t* status);

// One fit.
//
//   x          ldx x nCols     data, the first nObs rows of which are used; response in column yCol
//   flags      nCols           the model
//   c, means   nCols x nCols, nCols   what CrsPrd gives for those rows; c is symmetric
//   inv        nCols x nCols   out: inverse of the cross-products of the model variables. A constant variable, whose
//                              diagonal element is exactly 0, gets a 1 there and so the coefficient 0
//   r          nCols x nCols   correlations
//   corrLimit                  largest absolute correlation tolerated between a variable entering and one in the model
//   coef, intercept            out
//   enter      out             best variable to enter, see EntCand
//   weakest    out             model variable with the smallest t^2, see TVals
//   t          nCols           out, by variable; entries of variables outside the model are not touched
//   fStat      out             F of the fit; with an empty model (SSR / RSS) * df, RSS counting as 1 when it is 0
//   sEst       out             standard error of estimate
//   status     out             0; 1 singular: only the lists and inv have been written; 5
//   inList, outList   nCols    out: the variables in and out of the model, then zeros
void RegFit(const double* x, const std::int32_t* ldx, const std::int32_t* nCols, const std::int32_t* nObs,
            const std::int32_t* yCol, const std::int32_t* flags, const double* c, const double* means, double* inv,
            const double* r, const float* corrLimit, double* coef, double* intercept, std::int32_t* enter,
            std::int32_t* weakest, double* t, float* fStat, float* sEst, std::int32_t* status, std::int32_t* inList,
            std::int32_t* outList);

// The entry candidate: among the variables of outList whose correlations with all model variables are within corrLimit
// (plus 1e-5), the one with the largest squared partial correlation with the response given the model. Ties go to the
// later variable; one that is not a number never wins; 0 when there is none.
// resid (nObs), rss and meanResid are the residuals of the model's fit, their sum of squares and their mean.
// status: 0; 5, and then enter is 0.
void EntCand(const double* x, const std::int32_t* ldx, const std::int32_t* nCols, const std::int32_t* nObs,
             const std::int32_t* nOut, const std::int32_t* outList, const double* resid, const std::int32_t* nIn,
             const std::int32_t* inList, const double* c, const double* inv, const double* r, const float* corrLimit,
             const double* means, const double* rss, const double* meanResid, std::int32_t* enter,
             std::int32_t* status);

// t-values of the model variables, at their variable numbers, and the one with the smallest t^2: ties go to the later
// position, a t that is not a number is never the weakest; 0 when there is none.
void TVals(const double* rss, const std::int32_t* nIn, const std::int32_t* inList, const std::int32_t* nObs,
           const double* coef, const std::int32_t* ldInv, const double* inv, double* t, std::int32_t* weakest);

// Fitted values and residuals of nRows rows (which is x's leading dimension), and the sum of squared residuals. Without
// rows rss = 0 and nothing else is written.
void RegPred(const double* x, const std::int32_t* nRows, const std::int32_t* yCol, const std::int32_t* nIn,
             const std::int32_t* inList, const double* intercept, const double* coef, double* fitted, double* resid,
             double* rss);

// A model of variables x' = (x - shift) / scale as a model of x: coefOut by position, and interceptOut. perVar1 and
// perVar2 (spreads of coefficients, by variable) are divided by the scale of every variable 1 ... nCols - 1.
void UnScale(const double* coef, const double* intercept, const std::int32_t* nCols, const std::int32_t* nIn,
             const std::int32_t* inList, const double* scale, const double* shift, double* perVar1, double* perVar2,
             double* coefOut, double* interceptOut);

}  // namespace studystats::core
