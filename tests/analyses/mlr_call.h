// One call of MulReg: a table, the settings, and every output filled beforehand with values that nothing computes.
#pragma once

#include <studystats/analyses.h>
#include <studystats/frame.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/analyses/calls.h"

namespace studystats {

struct MlrCall {
  using Routine = decltype(&MulReg);
  static constexpr double kUntouched = -7.25;

  MlrCall(std::int32_t rows, std::int32_t columns) : n(rows), p(columns) {
    const auto r = static_cast<std::size_t>(std::max(n, 0)), c = static_cast<std::size_t>(std::max(p, 0));
    data.assign(r * c, 0.0);
    rowTags.assign(2 * r, 3);
    for (std::int32_t i = 1; i <= n; ++i) rowIds.push_back(i);
    usable.assign(r, 1);
    scale.assign(c, 1.0);
    shift.assign(c, 0.0);
    flags.assign(c, 0);
  }

  double& cell(std::ptrdiff_t i, std::ptrdiff_t j) { return data[static_cast<std::size_t>(i + j * n)]; }

  void run(Routine routine = MulReg) {
    clearOutputs();
    call(routine);
  }

  void clearOutputs() {
    const auto r = static_cast<std::size_t>(std::max(n, 0)), c = static_cast<std::size_t>(std::max(p, 0));
    const auto s = static_cast<std::size_t>(maxSteps > 0 ? maxSteps : 0);
    for (auto* v : {&fitted, &resid}) v->assign(r, kUntouched);
    for (auto* v : {&rawCoef, &coef, &cvCoefSd, &coefSe, &tValue, &tProb}) v->assign(c, kUntouched);
    corr.assign(c * c, kUntouched);
    for (auto* v : {&inList, &selCount}) v->assign(c, -7);
    for (auto* v : {&stepPartialF, &stepF, &stepS}) v->assign(s, -7.25F);
    for (auto* v : {&stepAction, &stepVar}) v->assign(s, -7);
    sumSq.assign(3, kUntouched);
    df.assign(3, -7);
    numbers.assign(9, kUntouched);
    startF.assign(2, -7.25F);
    counts.assign(4, -7);
  }

  void call(Routine routine) {
    double* x = numbers.data();
    routine(data.data(), rowTags.data(), rowIds.data(), usable.data(), n, p, scale.data(), shift.data(), corr.data(), 0,
            fEnter, fRemove, maxSteps, corrLimit, flags.data(), method, groups, fraction, fitted.data(), resid.data(),
            startF.data(), &startF[1], x, x + 1, x + 2, x + 3, x + 4, x + 5, x + 6, x + 7, x + 8, df.data(),
            sumSq.data(), rawCoef.data(), coef.data(), cvCoefSd.data(), coefSe.data(), tValue.data(), tProb.data(),
            inList.data(), selCount.data(), stepPartialF.data(), stepF.data(), stepS.data(), stepAction.data(),
            stepVar.data(), &counts[0], &counts[1], &maxFolds, &counts[2], monitor, &counts[3]);
  }

  double rawIntercept() const { return numbers[0]; }
  double intercept() const { return numbers[1]; }
  double multR() const { return numbers[2]; }
  double fValue() const { return numbers[3]; }
  double sValue() const { return numbers[4]; }
  double fProb() const { return numbers[5]; }
  double q2() const { return numbers[6]; }
  double press() const { return numbers[7]; }
  double interceptSd() const { return numbers[8]; }
  std::int32_t nIn() const { return counts[0]; }
  std::int32_t nSteps() const { return counts[1]; }
  std::int32_t status() const { return counts[2]; }
  std::int32_t goesOn() const { return counts[3]; }

  std::int32_t n, p;
  std::vector<double> data;
  std::vector<std::int32_t> rowTags, rowIds, usable;
  std::vector<double> scale, shift;
  float fEnter = 4, fRemove = 4, corrLimit = 1;
  std::int32_t maxSteps = 10;
  std::vector<std::int32_t> flags;
  std::int32_t method = 1, groups = 0, maxFolds = 0;
  float fraction = 1;
  ProgressMonitor* monitor = nullptr;

  std::vector<double> corr, fitted, resid, sumSq, rawCoef, coef, cvCoefSd, coefSe, tValue, tProb, numbers;
  std::vector<float> startF, stepPartialF, stepF, stepS;
  std::vector<std::int32_t> df, inList, selCount, stepAction, stepVar, counts;
};

// The outputs in which two calls differ, by name; empty when there are none.
inline std::string differences(const MlrCall& a, const MlrCall& b) {
  Differences found;
  found.compare("rowIds", a.rowIds, b.rowIds);
  found.compare("flags", a.flags, b.flags);
  found.compare("corr", a.corr, b.corr);
  found.compare("fitted", a.fitted, b.fitted);
  found.compare("resid", a.resid, b.resid);
  found.compare("sumSq", a.sumSq, b.sumSq);
  found.compare("rawCoef", a.rawCoef, b.rawCoef);
  found.compare("coef", a.coef, b.coef);
  found.compare("cvCoefSd", a.cvCoefSd, b.cvCoefSd);
  found.compare("coefSe", a.coefSe, b.coefSe);
  found.compare("tValue", a.tValue, b.tValue);
  found.compare("tProb", a.tProb, b.tProb);
  found.compare("numbers", a.numbers, b.numbers);
  found.compare("startF", a.startF, b.startF);
  found.compare("stepPartialF", a.stepPartialF, b.stepPartialF);
  found.compare("stepF", a.stepF, b.stepF);
  found.compare("stepS", a.stepS, b.stepS);
  found.compare("df", a.df, b.df);
  found.compare("inList", a.inList, b.inList);
  found.compare("cvSelCount", a.selCount, b.selCount);
  found.compare("stepAction", a.stepAction, b.stepAction);
  found.compare("stepVar", a.stepVar, b.stepVar);
  found.compare("counts", a.counts, b.counts);
  return found.names();
}

}  // namespace studystats
