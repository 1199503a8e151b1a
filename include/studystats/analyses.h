/* The analyses and the random-number generator, as plain entry points for C and C++.
 *
 * Conventions of every entry point
 *
 * - Matrices are dense and column-major; element (i, j), counted from 1, lies at index (j - 1) * ld + (i - 1), where
 *   ld, the leading dimension, is the number of rows that the argument's shape names.
 * - All arrays belong to the caller, who allocates the outputs at the shapes given. Inputs are only read; inputs and
 *   outputs must not overlap. No address may be null unless its argument says so.
 * - "in" is read, "out" is written. Units are those of the data; a variance is in their square.
 * - The same input gives the same bits, whatever the processor.
 * - Cells are not checked: that is the host's part. Not-a-numbers and infinities never loop for ever and never reach
 *   beyond the arrays, but they need not show. Most end in results that are not numbers, or in a failing status; some
 *   end in status 0 and a plausible model from which a variable is missing (see MulReg and DisAnl).
 *
 * Status words, written to `status`
 *
 *     0   success
 *     1   a singular matrix, or nothing computed; also the value held while an analysis runs
 *     2   an iteration did not converge, or no variable could be selected
 *     5   scratch memory could not be obtained
 *   999   the host asked to stop
 *
 * An analysis that gives some of these numbers another meaning says so in its own table.
 *
 * Validation folds of n rows, as cvMethod, cvGroups and cvFraction ask for them
 *
 * - cvMethod 1, systematic groups: as many as cvGroups says, but n at most, and n when it is below 1. Every row that
 *   may be trained on is held out once.
 * - Other, random subsets: a fold trains on n - S rows, drawn with Nmrand from those that may be trained on, and holds
 *   out all others. With cvGroups in 1 ... n - 1, S is n / cvGroups rounded up, and there are cvFraction * cvGroups
 *   folds, two at least; otherwise S is 1, and there are cvFraction * n folds, one at least.
 * - Rows that may not be trained on (MulReg, DisAnl) are held out in every fold. In random subsets they take the place
 *   of others: of u such rows, max(0, S - u) others are held out with them. With u of S or more no row that may be
 *   trained on is ever held out: the figures of the validation speak of the u rows alone, weighted as if a fold held
 *   out S, and the status is 0 all the same. PlsAnl makes its folds of the model's rows alone; S of these are held out.
 * - Above some 8.3 million rows 32-bit draws miss rows (39 000 of 9 million, 3 of 20 million): no random subset trains
 *   on them. A fold that wants more rows than can be drawn ends early: it trains on fewer than n - S and holds out the
 *   rest.
 *
 * Nothing here prints, and nothing throws but a failure of the host inside a progress report. Calls run on the caller's
 * thread; the generator is process-wide and unguarded.
 */
#pragma once

#include <stdint.h>

#ifndef STUDYSTATS_API
#define STUDYSTATS_API __attribute__((visibility("default")))
#endif

/* The host's progress, as the analyses that can be watched and stopped report it; see studystats/frame.h. */
struct ProgressMonitor;

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Random numbers
 */

/* The next number of the library's generator, a 32-bit float in [0, 1]; 1 itself can occur.
 *
 *   seed   in   A negative seed always seeds the generator. Any other seed is used only when the generator is not yet
 *               seeded (at load, and after Nmrrst) and is ignored afterwards. Seeds of equal magnitude start the same
 *               sequence. Magnitudes above 161803398 are accepted, but one in five of them starts a sequence of which
 *               some numbers lie outside [0, 1], between -1.15 and 2.15: as a rule a few, at times more than a hundred,
 *               and now and then one after two thousand draws
 *
 * The analyses that draw random validation folds use the same sequence, so a host that wants repeatable folds calls
 * Nmrrst, or Nmrand with a negative seed, before the analysis.
 *
 * Source: Knuth's subtractive method, as published in Press et al., Numerical Recipes, 2nd ed. (1992), section 7.1
 * (ran3).
 */
STUDYSTATS_API float Nmrand(int32_t seed);

/* Makes the next Nmrand seed the generator from its argument, whatever that is. Returns 0. */
STUDYSTATS_API int32_t Nmrrst(void);

/* ---------------------------------------------------------------------------------------------------------------------
 * Principal component analysis
 */

/* Principal components of the covariance matrix of a data block: n = nRows samples in rows, p = nVars variables in
 * columns. The variables are taken as they are passed; for components of the correlation matrix pass autoscaled
 * columns.
 *
 *   argument       dir  shape  meaning
 *   data           in   n x p  the data block
 *   nRows          in   value  number of samples, n
 *   nVars          in   value  number of variables, p
 *   nComponents    out  1      components that the data can support: p when n > p, otherwise n - 1
 *   eigenvalues    out  p      variances of the components, largest first; those that rounding made negative are 0
 *   eigenvectors   out  p x p  column k holds the loadings of component k, of unit length. The sign of a column is the
 *                              eigensolver's; the scores carry the same sign
 *   covariance     out  p x p  covariances of the variables, divisor n - 1, both triangles. With n = 1 what the caller
 *                              left in its lower triangle is decomposed instead, and copied over the upper one
 *   cumExplained   out  p x p  entry (j, k): sum over components 1 ... k of loading(j)^2 * variance, capped at 1 in
 *                              every step. With autoscaled data, the fraction of variable j's variance explained
 *   scores         out  n x p  entry (i, k): sum over j of data(i, j) * eigenvectors(j, k). The data enter uncentred;
 *                              subtract scoreMeans for centred scores
 *   scoreMeans     out  p      mean of each column of scores
 *   scoreStdDevs   out  p      standard deviation of each column of scores, divisor n - 1; an exact 0 is replaced by 1
 *   status         out  1      see below
 *
 *   status   meaning
 *   0        success
 *   1 ... p  the eigensolver found no convergence for the eigenvalue of that number. covariance is written,
 *            eigenvalues and eigenvectors hold partial results, the other outputs are not written
 *   1        also: no samples or no variables (n < 1 or p < 1). Nothing else is written
 *   5        also: scratch memory (about 8 * p * p bytes) could not be obtained. Nothing else is written
 *
 * Reports no progress and cannot be stopped. Cost: n * p^2 for covariances and scores, p^3 for the decomposition.
 *
 * Source: Jolliffe, Principal Component Analysis, 2nd ed. (2002); eigensolver: Smith et al., Matrix Eigensystem
 * Routines - EISPACK Guide (1976).
 */
STUDYSTATS_API void PCAnal(const double* data, int32_t nRows, int32_t nVars, int32_t* nComponents, double* eigenvalues,
                           double* eigenvectors, double* covariance, double* cumExplained, double* scores,
                           double* scoreMeans, double* scoreStdDevs, int32_t* status);

/* ---------------------------------------------------------------------------------------------------------------------
 * Multiple linear regression
 */

/* Regression of one response on descriptors chosen by stepwise selection, with the whole selection cross-validated: n =
 * nRows samples, p = nCols columns, of which the last is the response and the m = p - 1 before it are descriptors.
 *
 * The descriptors are expected as x' = (x - shift) / scale, by which the caller has transformed them (scale 1 and shift
 * 0 when it has not); the response is taken as it is. "Transformed" below means in x', "untransformed" in x. "By
 * variable": entry j belongs to descriptor j. "By position": entry a belongs to descriptor inList[a].
 *
 *   argument         dir     shape  meaning
 *   data             in      n x p  descriptors, then the response. Not modified
 *   rowTags          in      n x 2  any numbers; column 1 travels with the rows into the folds, and nothing looks at
 *                                   them
 *   rowIds           in-out  n      distinct numbers 1 ... n, as a rule in that order. Come back sorted by ascending
 *                                   response, ties in their incoming order
 *   usable           in      n      1: may be a training sample of a fold. A sample that may not be one still belongs
 *                                   to the model of all rows, and is predicted in every fold
 *   nRows            in      value  number of samples, n
 *   nCols            in      value  number of columns, p, the response included
 *   scale            in      p      divisor of each descriptor's transformation
 *   shift            in      p      its shift
 *   corr             out     p x p  correlations of all columns; 0 beside a column without spread, 1 on the diagonal
 *   reserved         in      value  not read
 *   fEnter           in      value  F-to-enter. At or below 1e-10 every descriptor starts in the model
 *   fRemove          in      value  F-to-remove
 *   maxSteps         in      value  most selection steps. 0 or below: every descriptor starts in the model, and those
 *                                   that the correlation limit leaves are the model
 *   corrLimit        in      value  largest absolute correlation tolerated between descriptors of the model; 1 switches
 *                                   the limit off. Of two descriptors of the starting model the earlier stays
 *   flags            in-out  p      in: starting model, 1 = in. out: final model. When every descriptor starts in the
 *                                   model the response's entry becomes 1, too; otherwise it is left alone
 *   cvMethod         in      value  1: systematic groups, dealt along the ascending response so that each spans its
 *                                   range; other: random subsets, drawn with Nmrand
 *   cvGroups         in      value  number of groups; below 1: one sample a group (leave-one-out)
 *   cvFraction       in      value  random subsets: multiplier for the number of folds
 *   fitted           out     n      fitted response
 *   resid            out     n      response - fitted
 *   fStart           out     1      F of the starting model
 *   sStart           out     1      standard error of estimate of the starting model
 *   rawIntercept     out     1      intercept, untransformed
 *   intercept        out     1      intercept, transformed
 *   multR            out     1      multiple correlation coefficient; 0 when the response is constant
 *   fValue           out     1      F of the final model; 0 for an empty model
 *   sValue           out     1      standard error of estimate, in the response's unit
 *   fProb            out     1      probability of exceeding fValue; 1 for an empty model, -1 when it cannot be
 *                                   computed
 *   q2               out     1      1 - press / total sum of squares; 0 when the response is constant
 *   press            out     1      sum of squared prediction errors over the folds, weighted to one prediction a
 *                                   sample. 0 when the validation was abandoned, see below
 *   cvInterceptSd    out     1      jackknife spread of the untransformed intercept over the folds. Never negative: a
 *                                   caller that stores -1 here before the call and finds it again at status 0 knows
 *                                   that the validation was abandoned
 *   df               out     3      degrees of freedom of regression, residuals and total: nIn, n - nIn - 1, n - 1
 *   sumSq            out     3      sums of squares of regression, residuals and total. The first is 0 when it is below
 *                                   1e-10 of the total
 *   rawCoef          out     m      by position: coefficients, untransformed
 *   coef             out     m      by position: coefficients, transformed
 *   cvCoefSd         in-out  m      by variable: jackknife spread of the coefficient over the folds, untransformed.
 *                                   Entries outside the model keep what the caller put there, divided by scale
 *   coefSe           in-out  m      by variable: standard error of the coefficient, untransformed. Entries outside the
 *                                   model as above
 *   tValue           out     m      by variable: t-values. Entries outside the model are not written
 *   tProb            out     m      by variable: probability of a larger |t|, two-sided; -1 when it cannot be computed.
 *                                   Entries outside the model are not written
 *   inList           out     p      descriptors of the model, ascending, counted from 1; zeros after the last
 *   cvSelCount       out     m      by variable: number of folds whose own selection chose it
 *   stepPartialF     out     steps  partial F (t^2) of the descriptor entered or removed at each step; not written for
 *                                   an entry at the step limit, which is not tested. These five arrays hold maxSteps
 *                                   entries
 *   stepF            out     steps  F after each step
 *   stepS            out     steps  standard error of estimate after each step
 *   stepAction       out     steps  1 = entered, 0 = removed
 *   stepVar          out     steps  the descriptor
 *   nIn              out     1      number of descriptors in the model
 *   nSteps           out     1      steps that led to the final model; entries behind them have no meaning
 *   maxFolds         in      1      number of folds to reserve storage for; more is reserved when the plan needs it
 *   status           out     1      see below
 *   progressMonitor  in      value  told of each fold before it runs; may be null
 *   continueFlag     out     1      1; 0 when the host asked to stop
 *
 *   status   meaning
 *   0        success; every output is written but what the table excepts (entries outside the model, behind nSteps).
 *            The validation may have been abandoned because a fit in a fold was singular: press is then 0 and q2
 *            misleadingly 1, cvInterceptSd is not written, cvCoefSd is only divided by scale, and cvSelCount counts
 *            the selections made until then
 *   1        singular: descriptors of a model depend exactly on each other, or hold not-a-numbers. Written are corr,
 *            flags, fStart, sStart, inList, nSteps, the steps so far, and coef and intercept of the last fit that
 *            succeeded. Also when nRows is below 0 or nCols below 1, and then none of these
 *   5        scratch memory (about 16 p^2 + 8 n p bytes, and 8 p bytes a fold) could not be obtained. Of the outputs
 *            only continueFlag (1), fStart and sStart (0) are written
 *   999      the host asked to stop. Written are what status 1 names, nIn, df and the sorted rowIds; press is
 *            incomplete, and cvSelCount counts the folds that ended
 *
 * A descriptor with a cell that is not finite has no correlations and is passed over: the model is made of the others,
 * with status 0 and figures that look sound, however much the descriptor would have explained. press and q2 show it
 * only when a fold that holds the row out chooses the descriptor. In a starting model it gives status 1. A response
 * with such a cell gives status 0, and multR, sValue and fitted that are not finite.
 *
 * Reports g of G before fold g. A failure of the host passes through as an exception, and nothing leaks. Stores the
 * process-wide validation settings and may draw from the generator: one validating analysis at a time. Cost: n * p^2
 * once, and n * p * (descriptors in the model) for each selection step, on all rows and in every fold.
 *
 * Sources: Draper & Smith, Applied Regression Analysis, 3rd ed. (1998), chapter 15 (selection); Hastie, Tibshirani &
 * Friedman, The Elements of Statistical Learning, 2nd ed. (2009), section 7.10.2 (validating the selection, too); Efron
 * & Tibshirani, An Introduction to the Bootstrap (1993), chapter 11 (jackknife).
 */
STUDYSTATS_API void MulReg(const double* data, const int32_t* rowTags, int32_t* rowIds, const int32_t* usable,
                           int32_t nRows, int32_t nCols, const double* scale, const double* shift, double* corr,
                           int64_t reserved, float fEnter, float fRemove, int32_t maxSteps, float corrLimit,
                           int32_t* flags, int32_t cvMethod, int32_t cvGroups, float cvFraction, double* fitted,
                           double* resid, float* fStart, float* sStart, double* rawIntercept, double* intercept,
                           double* multR, double* fValue, double* sValue, double* fProb, double* q2, double* press,
                           double* cvInterceptSd, int32_t* df, double* sumSq, double* rawCoef, double* coef,
                           double* cvCoefSd, double* coefSe, double* tValue, double* tProb, int32_t* inList,
                           int32_t* cvSelCount, float* stepPartialF, float* stepF, float* stepS, int32_t* stepAction,
                           int32_t* stepVar, int32_t* nIn, int32_t* nSteps, const int32_t* maxFolds, int32_t* status,
                           struct ProgressMonitor* progressMonitor, int32_t* continueFlag);

/* ---------------------------------------------------------------------------------------------------------------------
 * Partial least squares
 */

/* Partial least squares regression of one or several responses by NIPALS, cross-validated, with the number of
 * components chosen from the errors of prediction: n = nRows samples, p = nDescriptors descriptors, q = nResponses
 * responses, a = nComponents components.
 *
 * The data are expected as x' = (x - mean) / scale, by which the caller has centred and scaled them; means and scales
 * bring the model back to the units of x. "Data units" below means those of x', "raw units" those of x. Folds are not
 * centred or scaled again. Entry (j, c, k) of a p x a x q array, counted from 1, lies at index
 * (k - 1) * a * p + (c - 1) * p + (j - 1).
 *
 *   argument         dir     shape      meaning
 *   data             in      n x m      descriptors, then responses; further columns are not used. Not modified
 *   rowTags          in      n x 2      any numbers; nothing looks at them
 *   rowOrder         out     n          numbers of the model's rows, sorted by ascending first response, ties by
 * number; without responses, by the column behind the descriptors, if there is one. Entries behind them hold no order
 *   rowUse           in      n          1: a row of the model. Other: the row is neither trained on nor held out, and
 *                                       only predicted, in fitted
 *   nRows            in      value      number of samples, n
 *   nCols            in      value      number of columns of data, m, at least p + q
 *   reserved1        in      value      not read
 *   scales           in-out  m          divisor of each column; all set to 1 when scaled is 0
 *   means            in      m          mean of each column
 *   reserved2        in      -          not read, may be null
 *   nResponses       in      value      number of responses, q; below 0 counts as none
 *   nDescriptors     in      value      number of descriptors, p
 *   keepAll          in      value      0: the number of components is chosen by the ratio rule. Other: all are kept
 *   ratioLimit       in      value      limit of the ratio rule: the leading components are kept of which each has, for
 *                                       some response, a ratio of this or less; one at least
 *   nComponents      in      value      number of components, a; below 0 counts as none
 *   scaled           in      value      0: the data were only centred
 *   cvMethod         in      value      1: systematic groups, dealt along the ascending first response so that each
 *                                       spans its range; other: random subsets, drawn with Nmrand
 *   cvGroups         in      value      number of groups; below 1: one sample a group (leave-one-out)
 *   cvFraction       in      value      random subsets: multiplier for the number of folds
 *   coefs            out     p x a x q  regression coefficients of the models of 1, 2, ... components, raw units
 *   coefErrors       out     p x a x q  jackknife standard errors of the coefficients, raw units; 0 with fewer than two
 *                                       folds
 *   pressRatios      out     a x q      root of press over the rss of one component less (the first: over tss); 0 when
 *                                       that is not positive. Only for the components kept, as q2 and r2; entries
 *                                       behind them are not written
 *   q2               out     a x q      1 - press / tss; 0 when tss is not positive
 *   r2               out     a x q      1 - rss / tss; 0 when tss is not positive
 *   rss              out     a x q      residual sum of squares of each response, data units
 *   tss              out     q          sum of squares of each response about its mean, data units, over all n rows: a
 *                                       row outside the model counts as a row of zeros
 *   intercepts       out     a x q      constant term of each model, raw units
 *   fitted           out     n x q      predictions of all rows by the components kept, raw units
 *   press            out     a x q      sum of squared prediction errors over the folds, weighted to one prediction a
 *                                       sample, data units
 *   status           out     1          see below
 *   progressMonitor  in      value      told of each fold before it runs; may be null
 *   continueFlag     out     1          1; 0 when the host asked to stop
 *
 *   status   meaning
 *   0        success; every output is written but the entries of pressRatios, q2 and r2 behind the components kept, and
 *            those of rowOrder behind the model's rows. How many components were kept is no output of its own: a
 *            caller that stores -1 in pressRatios before the call counts those of a response that are not -1
 *   1        no components were asked for: rowOrder and scales are written, and every fold was run and reported. Also
 *            for numbers that make no analysis (n or p below 0, m below p + q): then nothing else is written but
 *            continueFlag
 *   2        the scores of a component did not converge within 1000 passes (several responses only), in the model or in
 *            a fold. Written are scales, rowOrder (nothing sorted yet) and, when it is not the first component, tss and
 *            the rss of those before it; after a failure in a fold also what 999 names
 *   5        scratch memory (about 8 * (n * (p + q) + p * a * (3 q + 5)) bytes) could not be obtained. Nothing else is
 *            written but continueFlag
 *   999      the host asked to stop. Written are rowOrder, scales, tss, rss, and coefs in data units; press is
 *            incomplete
 *
 * A cell of a model row that is not finite leaves no finite number in coefs, intercepts, rss and fitted, and in press
 * none once a fold has trained on the row; the status is 0 as a rule. In a response it does the same to its tss, and
 * its q2, r2 and ratios are 0. A descriptor of another row shows in that row's fitted alone. Components beyond the rank
 * of the data are extracted from what rounding left.
 *
 * Reports g of G before fold g. A failure of the host passes through as an exception, and nothing leaks. Stores the
 * process-wide validation settings and may draw from the generator: one validating analysis at a time. Cost: n * p * a
 * for the model and for each fold (times the passes, with several responses), and p * a * (a + q) for the coefficients;
 * p^2 * a where the components exceed the rank.
 *
 * Sources: Wold, Sjostrom & Eriksson (2001), Chemometrics and Intelligent Laboratory Systems 58, 109-130 (NIPALS);
 * Wold (1978), Technometrics 20, 397-405 (the ratio rule); Martens & Martens (2000), Food Quality and Preference 11,
 * 5-16 (the errors of the coefficients).
 */
STUDYSTATS_API void PlsAnl(const double* data, const int32_t* rowTags, int32_t* rowOrder, const int32_t* rowUse,
                           int32_t nRows, int32_t nCols, int64_t reserved1, double* scales, const double* means,
                           const void* reserved2, int32_t nResponses, int32_t nDescriptors, int32_t keepAll,
                           float ratioLimit, int32_t nComponents, int32_t scaled, int32_t cvMethod, int32_t cvGroups,
                           float cvFraction, double* coefs, double* coefErrors, double* pressRatios, double* q2,
                           double* r2, double* rss, double* tss, double* intercepts, double* fitted, double* press,
                           int32_t* status, struct ProgressMonitor* progressMonitor, int32_t* continueFlag);

/* ---------------------------------------------------------------------------------------------------------------------
 * Discriminant analysis
 */

/* Chooses variables that tell known classes apart, and classifies samples by the nearest class mean in Mahalanobis
 * distance under the pooled within-class covariance of those variables: n = nSamples samples in rows, p = nVars
 * variables in columns, g = nClasses classes. Equal prior probabilities are implied. With one variable chosen the
 * distance is the plain difference from the class mean.
 *
 * The step and fraction arrays hold 32-bit floats, and steps and ties are decided on them.
 *
 *   argument           dir     shape  meaning
 *   data               in      n x p  the variables
 *   classOf            in      n x 2  column 1: class of each sample, 1 ... g; any other number is an unknown class.
 *                                     Column 2 is not looked at
 *   modelRows          out     n      rows of the model's samples (counted from 1, in increasing order), for the
 *                                     validation sorted by class, ties as they were; behind them those of the others
 *   inModel            in      n      1: takes part in the model, and may be a training sample of a fold. Other: is
 *                                     only classified, by the final model and in every fold. Such a sample, when its
 *                                     class is known, still counts as a member of it in the divisor of the class mean
 *                                     of the model, and in cvConfusion: pass 0 as its class to keep it out
 *   nSamples           in      value  number of samples, n
 *   nVars              in      value  number of variables, p
 *   nClasses           in      value  number of classes, g
 *   selectMode         in      value  0: stepwise, until the fraction correct reaches 0.999999 or falls, or stands
 *                                     still (within 1e-5) while the sum of distances between class means grows by less
 *                                     than 5 %. 1: stepwise to nSelect variables, one at least. 2: all variables when
 *                                     nSelect is below 1. Anything else: stepwise as long as a variable can be taken.
 *                                     Two classes: the variable with the largest fraction correct is taken next; else
 *                                     the one with the largest sum of distances between class means. Within 1e-5 the
 *                                     other figure decides, and then the lower variable
 *   nSelect            in      value  number of variables for mode 1
 *   cvMethod           in      value  1: systematic groups, dealt along the samples sorted by class so that each has
 *                                     its share of every class; other: random subsets, drawn with Nmrand
 *   cvGroups           in      value  number of groups; below 1: one sample a group (leave-one-out)
 *   cvFraction         in      value  random subsets: multiplier for the number of folds
 *   canonVectors       out     p x p  column k, rows 1 ... m (m variables chosen): direction of canonical function k,
 *                                     of unit length, in the coordinates in which the within-class scatter is the
 *                                     identity: row a belongs to its a-th eigenvector, divided by the root of its
 *                                     eigenvalue. Other entries are not written. With one variable chosen: 1
 *   canonValues        out     p      eigenvalue of each canonical function (between-class over within-class sum of
 *                                     squares along it), largest first. With one variable chosen: 1, a placeholder
 *   stepFraction       out     p      by step: fraction of the model's samples classified correctly
 *   stepClassFraction  out     p x g  by step and class: the same of the class's samples. A row behind nSteps may hold
 *                                     a step that was refused
 *   cvFractionCorrect  out     1      weight of the plan * samples held out and classified correctly / n. The divisor
 *                                     counts samples of unknown class and samples outside the model, too
 *   cvClassFraction    out     g      the same for the samples of each class that were held out; not a number when none
 *                                     was
 *   distances          out     n x g  distance of every sample to every class mean under the model of all samples
 *   selected           out     p      1 = variable of the model of all samples, 0 = not
 *   cvSelCount         out     p      number of folds whose own selection chose the variable
 *   selectOrder        out     p      by step: the variable taken, counted from 1; 0 when all are taken in one step
 *   confusion          out     g x g  model samples of true class (row) by predicted class (column), resubstituted
 *   cvConfusion        out     g x g  the same of samples held out; a random plan may hold a sample out several times,
 *                                     or never. A count that reaches 2^31 - 1 stays there
 *   nSteps             out     1      number of selection steps
 *   nCanonical         out     1      number of canonical functions: the smaller of m and g - 1; 1 with one variable
 *   status             out     1      see below
 *   progressMonitor    in      value  told of each fold before it runs; may be null
 *   continueFlag       out     1      1; 0 when the host asked to stop
 *
 *   status   meaning
 *   0        success; every output is written but what the table excepts
 *   1        the within-class covariance of a subset that was tried is singular: variables that depend exactly on each
 *            other within classes, or hold not-a-numbers. The first such candidate ends the selection. Also when an
 *            eigenvalue of the canonical problem did not converge. Also for numbers that make no analysis (a model
 *            sample of a class outside 1 ... g, no more model samples than classes, g < 1, n < 0, p < 0): then no
 *            output but continueFlag and nSteps (0) is written
 *   2        no variable could be selected
 *   5        scratch memory (about 80 p^2 + 8 n p bytes) could not be obtained. No output but continueFlag is written
 *   999      the host asked to stop. Written are modelRows, selected, confusion and the steps; cvSelCount and
 *            cvConfusion count the folds that ended, whose classifications left traces in distances and, where one
 *            variable was chosen, in the canonical outputs
 *
 * A variable with a cell that is not finite makes every subset of two or more that it belongs to singular: status 1. A
 * single variable is not inverted: it only classifies badly, and another is taken for it. So a model of one variable
 * comes with status 0, and may be this one where none classifies better.
 *
 * After status 1 or 2 from the model of all samples, modelRows (the model's samples), selected, nSteps and the steps so
 * far are written. A selection that fails in a fold starts the validation over, once, with one sample a group; reports
 * begin again at 1. When it fails there too, the status is that of the failure, and outputs are as after 999.
 *
 * Reports f of F before fold f. A failure of the host passes through as an exception, and nothing leaks. Stores the
 * process-wide validation settings (a restart leaves the groups at 0) and may draw from the generator: one validating
 * analysis at a time. Cost: n * p^2 a fit, and for each selection step, on all samples and in every fold, the inverse
 * of a covariance for each candidate; two classes also n * g * m^2 for each.
 *
 * Sources: McLachlan, Discriminant Analysis and Statistical Pattern Recognition (1992); Seber, Multivariate
 * Observations (1984), section 5.8 (canonical functions); Hastie, Tibshirani & Friedman, The Elements of Statistical
 * Learning, 2nd ed. (2009), section 7.10.2 (validating the selection, too).
 */
STUDYSTATS_API void DisAnl(const double* data, const int32_t* classOf, int32_t* modelRows, const int32_t* inModel,
                           int32_t nSamples, int32_t nVars, int32_t nClasses, int32_t selectMode, int32_t nSelect,
                           int32_t cvMethod, int32_t cvGroups, float cvFraction, double* canonVectors,
                           double* canonValues, float* stepFraction, float* stepClassFraction, float* cvFractionCorrect,
                           float* cvClassFraction, float* distances, int32_t* selected, int32_t* cvSelCount,
                           int32_t* selectOrder, int32_t* confusion, int32_t* cvConfusion, int32_t* nSteps,
                           int32_t* nCanonical, int32_t* status, struct ProgressMonitor* progressMonitor,
                           int32_t* continueFlag);

#ifdef __cplusplus
}
#endif
