// The plain entry point of the regression, for a host that holds its table as one block of numbers and wants no other
// layer. The friendly interface (regression.cpp) does all of this, and knows the following by heart:
//
// - 52 arguments, many neighbours of one type: a swap compiles. Name them, as below.
// - Five ways to count: by position in the model, by variable, by step, by row, and from 1 (inList, stepVar, rowIds).
// - A validation that was abandoned, because a fit inside a fold was singular, has status 0 and q2 = 1. It is told by
//   cvInterceptSd, a spread, which is never negative: -1 before the call and after it means abandoned.
// - Entries by variable (cvCoefSd, coefSe, tValue, tProb) mean something for variables of the model alone; the partial
// F
//   of an entry at the step limit is not written; a probability of -1 could not be computed.
// - fEnter at or below 1e-10, and maxSteps at or below 0, put every variable into the model.
// - usable keeps a row out of the folds' training sets and not out of the model, and counts its error in every fold.
// Rows
//   that are only to be predicted do not belong into the block.
#include <studystats/analyses.h>
#include <studystats/frame.h>
#include <studystats/utilities.h>

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Integers = std::vector<std::int32_t>;
using Reals = std::vector<double>;

struct Fit {
  std::string equation;
  double r2 = 0, q2 = 0;
  bool validated = false;
};

// x: nRows x nCols by column, the response last; descriptors as (value - shift) / scale. names: of the descriptors.
Fit fit(const Reals& x, std::int32_t nRows, std::int32_t nCols, const Reals& scale, const Reals& shift,
        const std::vector<std::string>& names, ISBProgressMonitor* host) {
  const auto n = static_cast<std::size_t>(nRows), p = static_cast<std::size_t>(nCols);
  constexpr std::int32_t maxSteps = 10, leaveOneOut = 0, systematic = 1;

  // 1. What goes in besides the block.
  Integers rowTags(2 * n), rowIds(n), usable(n, 1), flags(p, 0);  // flags: nothing is in the model at first
  std::iota(rowIds.begin(), rowIds.end(), 1);
  const std::int32_t maxFolds = nRows;
  ProgressMonitor monitor;  // holds a reference on the host's interface while it lives
  monitor.monitor = host;
  monitor.SetStatusText("Regression");

  // 2. What comes out: every array is the caller's.
  Reals corr(p * p), fitted(n), resid(n), sumSq(3), rawCoef(p), coef(p), cvCoefSd(p), coefSe(p), tValue(p), tProb(p);
  Integers df(3), inList(p), cvSelCount(p), stepAction(maxSteps), stepVar(maxSteps);
  std::vector<float> stepPartialF(maxSteps), stepF(maxSteps), stepS(maxSteps);
  float fStart = 0, sStart = 0;
  double rawIntercept = 0, intercept = 0, multR = 0, fValue = 0, sValue = 0, fProb = 0, q2 = 0, press = 0;
  double cvInterceptSd = -1;  // still -1 afterwards: the validation was abandoned
  std::int32_t nIn = 0, nSteps = 0, status = 0, continueFlag = 0;

  MulReg(x.data(), rowTags.data(), rowIds.data(), usable.data(), nRows, nCols, scale.data(), shift.data(), corr.data(),
         /*reserved*/ 0, /*fEnter*/ 4.0F, /*fRemove*/ 3.9F, maxSteps, /*corrLimit*/ 1.0F, flags.data(),
         /*cvMethod*/ systematic, /*cvGroups*/ leaveOneOut, /*cvFraction*/ 1.0F, fitted.data(), resid.data(), &fStart,
         &sStart, &rawIntercept, &intercept, &multR, &fValue, &sValue, &fProb, &q2, &press, &cvInterceptSd, df.data(),
         sumSq.data(), rawCoef.data(), coef.data(), cvCoefSd.data(), coefSe.data(), tValue.data(), tProb.data(),
         inList.data(), cvSelCount.data(), stepPartialF.data(), stepF.data(), stepS.data(), stepAction.data(),
         stepVar.data(), &nIn, &nSteps, &maxFolds, &status, &monitor, &continueFlag);

  // 3. What it means.
  if (status == 999) throw std::runtime_error("stopped by the host");
  if (status == 5) throw std::runtime_error("not enough memory");
  if (status != 0) throw std::runtime_error("descriptors of the model depend exactly on each other");
  Fit result;
  result.equation = StatsUtils::FormatTerm(rawIntercept, "", false, false);
  for (std::size_t a = 0; a < static_cast<std::size_t>(nIn); ++a)
    result.equation += StatsUtils::FormatTerm(rawCoef[a], names[static_cast<std::size_t>(inList[a]) - 1], false, true);
  result.r2 = multR * multR;
  result.validated = cvInterceptSd >= 0;
  result.q2 = result.validated ? q2 : 0;
  return result;
}

}  // namespace

// Heat set free by hardening cement: Woods, Steinour & Starke (1932), Industrial and Engineering Chemistry 24,
// 1207-1214, table I; the textbook example of stepwise selection.
int main() try {
  const Reals cement = {7,    1,    11,    11,   7,    11,    3,     1,    2,    21,    1,    11,    10,      // x1
                        26,   29,   56,    31,   52,   55,    71,    31,   54,   47,    40,   66,    68,      // x2
                        6,    15,   8,     8,    6,    9,     17,    22,   18,   4,     23,   9,     8,       // x3
                        60,   52,   20,    47,   33,   22,    6,     44,   22,   26,    34,   12,    12,      // x4
                        78.5, 74.3, 104.3, 87.6, 95.9, 109.2, 102.7, 72.5, 93.1, 115.9, 83.8, 113.3, 109.4};  // heat
  const Fit result = fit(cement, 13, 5, Reals(5, 1.0), Reals(5, 0.0), {"x1", "x2", "x3", "x4"}, nullptr);
  std::cout << "heat =" << result.equation << "\nR2 " << result.r2 << '\n';
  if (result.validated)
    std::cout << "q2 " << result.q2 << " (leave-one-out, the selection repeated in each fold)\n";
  else
    std::cout << "not validated: a fit inside a fold was singular\n";
  return 0;
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
