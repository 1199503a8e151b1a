// What is worth saying about a regression: an unstable selection, collinear descriptors, rows far from the others.
#include "host/mlr/regression.h"
#include "host/preparation/used_text.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace studystats {
namespace {

constexpr double kHighCondition = 30;  // Belsley, Kuh & Welsch (1980), Regression Diagnostics, section 3.2
constexpr double kHighVif = 10;        // Marquardt (1970), Technometrics 12, 591-612
constexpr double kLargeResidual = 3;

std::string inFolds(std::size_t chosen, std::size_t folds) { return fmt::format("{} of {}", chosen, folds); }

void remarkOnSelection(Regression& result) {
  const std::size_t folds = result.plan.folds;
  std::vector<std::string> seldom, often;
  for (std::size_t a = 1; a < result.terms.size(); ++a)
    if (2 * result.terms[a].foldsChosen < folds) seldom.push_back(result.terms[a].name);
  for (const SelectedDescriptor& runner : result.runnersUp)
    if (2 * runner.folds >= folds) often.push_back(runner.name);
  if (result.selection == Selection::All || !result.validation || (seldom.empty() && often.empty())) return;
  std::string text = "the selection is unstable: ";
  if (!seldom.empty())
    text += fmt::format("{} of {} {} chosen in fewer than half of the folds", seldom.size(), result.terms.size() - 1,
                        result.terms.size() == 2 ? "descriptor was" : "descriptors were");
  if (!often.empty()) {
    const SelectedDescriptor& first = result.runnersUp.front();
    text += fmt::format("{}{}, which {} not in the model, in {}", seldom.empty() ? "" : ", and ", listed(often, 3),
                        often.size() == 1 ? "is" : "are",
                        often.size() == 1 ? inFolds(first.folds, folds) : "at least half of them");
  }
  text += fmt::format(". Expect prediction errors near the cross-validated {}, not the fitted {}.",
                      significant(result.validation->rmse, 3), significant(result.fit.rmse, 3));
  result.remarks.push_back({Severity::Warning, "unstable-selection", text, seldom});
}

void remarkOnCollinearity(Regression& result) {
  if (!result.conditionNumber || *result.conditionNumber <= kHighCondition) return;
  std::vector<std::string> names;
  for (const RegressionTerm& term : result.terms)
    if (term.vif && *term.vif > kHighVif) names.push_back(term.name);
  result.remarks.push_back(
      {Severity::Warning, "collinear",
       fmt::format(
           "the descriptors of the model are nearly collinear (condition number {}{}): their coefficients cannot "
           "be read one by one. Try a lower --corr-limit (now {}).",
           significant(*result.conditionNumber, 3), names.empty() ? "" : "; " + listed(names),
           brief(result.corrLimit, 6)),
       names});
}

void remarkOnRows(Regression& result) {
  std::vector<std::pair<double, std::string>> far;
  std::vector<std::string> large, outside;
  for (const RegressionRow& row : result.rows) {
    const std::string name = shownRow(result.used, row.name);
    if (row.role == Role::Predicted) {
      if (row.leverage > result.leverageLimit) outside.push_back(name);
      continue;
    }
    if (row.leverage > result.leverageLimit) far.emplace_back(row.leverage, name);
    if (row.standardised && std::abs(*row.standardised) > kLargeResidual)
      large.push_back(fmt::format("{} ({})", name, fixed(*row.standardised, 1)));
  }
  std::stable_sort(far.begin(), far.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
  std::vector<std::string> names;
  for (const auto& [leverage, row] : far) names.push_back(fmt::format("{} ({})", row, significant(leverage, 2)));
  if (!names.empty())
    result.remarks.push_back({Severity::Note, "high-leverage",
                              fmt::format("{} leverage above {}: {}.", counted(names.size(), "row has", "rows have"),
                                          significant(result.leverageLimit, 3), listed(names, 3)),
                              names});
  if (!large.empty())
    result.remarks.push_back({Severity::Note, "large-residuals",
                              fmt::format("standardised residuals beyond 3: {}.", listed(large, 4)), large});
  if (!outside.empty())
    result.remarks.push_back({Severity::Warning, "outside-domain",
                              fmt::format("{} outside the domain (leverage above {}): {}. Their predictions are "
                                          "extrapolations.",
                                          counted(outside.size(), "predicted row lies", "predicted rows lie"),
                                          significant(result.leverageLimit, 3), listed(outside)),
                              outside});
}

// At the step limit the variable entered last has never been tested.
void remarkOnLastStep(Regression& result) {
  if (result.selection == Selection::All || result.steps.empty()) return;
  if (result.steps.size() < static_cast<std::size_t>(result.maxSteps) || !result.steps.back().entered) return;
  const auto term = std::find_if(result.terms.begin(), result.terms.end(),
                                 [&](const RegressionTerm& one) { return one.name == result.steps.back().descriptor; });
  const double f = term != result.terms.end() && term->t ? *term->t * *term->t : result.fEnter;
  if (f < result.fEnter)
    result.remarks.push_back(
        {Severity::Warning,
         "last-step-untested",
         fmt::format("{} entered at the last step and would fail F-to-enter: F {}, wanted {}. Try "
                     "--max-steps {}.",
                     result.steps.back().descriptor, significant(f, 3), brief(result.fEnter, 6), result.maxSteps + 2),
         {result.steps.back().descriptor}});
}

void remarkOnSameInformation(Regression& result) {
  for (const RegressionTerm& term : result.terms)
    if (!term.sameAs.empty())
      result.remarks.push_back(
          {Severity::Note, "same-information",
           fmt::format("{} stands for {} too, which {} the same information; {} folds chose it.", term.name,
                       fmt::format("{}", fmt::join(term.sameAs, ", ")), term.sameAs.size() == 1 ? "carries" : "carry",
                       inFolds(term.foldsChosen, result.plan.folds)),
           term.sameAs});
}

}  // namespace

void remarkOnRegression(Regression& result) {
  remarkOnSelection(result);
  remarkOnCollinearity(result);
  remarkOnLastStep(result);
  remarkOnSameInformation(result);
  remarkOnRows(result);
}

}  // namespace studystats
