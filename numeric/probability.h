// Probabilities of test statistics: ln gamma, the regularised incomplete beta function, Student's t.
//
// The probability that an F variate with (m, n) degrees of freedom exceeds f is IncBet(n/2, m/2, n / (n + m f)).
//
// The constants are single-precision values widened, so absolute errors are of the order of 1e-7; they are part of the
// contract, and results agree with them to the last few bits. Nothing here allocates, throws or checks its domain
// beyond what is said: a or b at or below 0, x at or below 0 for LogGam, df at or below 0 for TProb evaluate the
// formulas.
#pragma once

#include <cstdint>

namespace studystats::core {

// ln of the gamma function for x > 0, by the Lanczos approximation with six terms.
double LogGam(const double* x);

// The continued fraction of the incomplete beta function. converged: 0; 1 when 100 terms did not reach a relative
// change of 3e-7, the value then being 0.
double BetCf(const double* a, const double* b, const double* x, std::int32_t* converged);

// result = I_x(a, b). status: 0; 1 when x lies outside [0, 1] (result is not written); 2 when the continued fraction
// did not converge (result is then the 0 or 1 that a fraction of 0 gives).
void IncBet(const double* a, const double* b, const double* x, double* result, std::int32_t* status);

// p = probability that a t variate with df degrees of freedom lies between -|t| and |t|; the two-sided significance is
// 1 - p. status as IncBet reports it; p is written whatever the status.
void TProb(const double* t, const std::int32_t* df, double* p, std::int32_t* status);

}  // namespace studystats::core
