// One call of MulReg: a table, the settings, and every output filled beforehand with values that nothing computes.
#pragma once

#include <studystats/analyses.h>
#include <studystats/frame.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

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

template <class Number>
bool sameBits(const std::vector<Number>& a, const std::vector<Number>& b) {
  bool same = a.size() == b.size();
  for (std::size_t i = 0; same && i < a.size(); ++i)
    same = (a[i] == b[i] && std::signbit(a[i]) == std::signbit(b[i])) || (std::isnan(a[i]) && std::isnan(b[i]));
  return same;
}

// The outputs in which two calls differ, by name; empty when there are none.
inline std::string differences(const MlrCall& a, const MlrCall& b) {
  std::string names;
  const auto compare = [&names](const char* name, const auto& left, const auto& right) {
    if (!sameBits(left, right)) names += std::string(name) + " ";
  };
  compare("rowIds", a.rowIds, b.rowIds);
  compare("flags", a.flags, b.flags);
  compare("corr", a.corr, b.corr);
  compare("fitted", a.fitted, b.fitted);
  compare("resid", a.resid, b.resid);
  compare("sumSq", a.sumSq, b.sumSq);
  compare("rawCoef", a.rawCoef, b.rawCoef);
  compare("coef", a.coef, b.coef);
  compare("cvCoefSd", a.cvCoefSd, b.cvCoefSd);
  compare("coefSe", a.coefSe, b.coefSe);
  compare("tValue", a.tValue, b.tValue);
  compare("tProb", a.tProb, b.tProb);
  compare("numbers", a.numbers, b.numbers);
  compare("startF", a.startF, b.startF);
  compare("stepPartialF", a.stepPartialF, b.stepPartialF);
  compare("stepF", a.stepF, b.stepF);
  compare("stepS", a.stepS, b.stepS);
  compare("df", a.df, b.df);
  compare("inList", a.inList, b.inList);
  compare("cvSelCount", a.selCount, b.selCount);
  compare("stepAction", a.stepAction, b.stepAction);
  compare("stepVar", a.stepVar, b.stepVar);
  compare("counts", a.counts, b.counts);
  return names;
}

}  // namespace studystats
