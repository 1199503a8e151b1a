/* The analyses and the random-number generator, as plain entry points for C and C++.
 *
 * Conventions of every entry point
 *
 * - Matrices are dense and column-major; element (i, j), counted from 1, lies at index (j - 1) * ld + (i - 1), where
 * ld, the leading dimension, is the number of rows that the argument's shape names.
 * - All arrays belong to the caller, who allocates the outputs at the shapes given. Inputs are only read; inputs and
 *   outputs must not overlap. No address may be null unless its argument says so.
 * - "in" is read, "out" is written. Units are those of the data; a variance is in their square.
 * - The same input gives the same bits, whatever the processor. Not-a-numbers and infinities end in results that are
 *   not numbers, or in a failing status; they never loop for ever and never reach beyond the arrays.
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
 * Nothing here throws or prints. Calls run on the caller's thread; the generator is process-wide and unguarded.
 */
#pragma once

#include <stdint.h>

#ifndef STUDYSTATS_API
#define STUDYSTATS_API __attribute__((visibility("default")))
#endif

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
 *               sequence. Magnitudes above 161803398 are accepted; a few of their first numbers may lie outside [0, 1].
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
 *   covariance     out  p x p  covariances of the variables, divisor n - 1, both triangles. With n = 1 it is not
 *                              written: what the caller left in its lower triangle is decomposed instead
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

#ifdef __cplusplus
}
#endif
