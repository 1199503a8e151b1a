// What is worth saying about a partial least squares model: components that predict nothing, rows outside its domain.
#include "host/folds.h"
#include "host/pls/pls.h"
#include "host/preparation/used_text.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>

namespace studystats {
namespace {

void remarkOnPrediction(PartialLeastSquares& result) {
  std::vector<std::string> names;
  for (const PlsResponse& response : result.responses)
    if (response.components[static_cast<std::size_t>(result.kept - 1)].q2 <= 0) names.push_back(response.name);
  if (names.empty()) return;
  result.remarks.push_back(
      {Severity::Warning, "not-predictive",
       fmt::format("{} {} predicted no better by the model than by {} mean (q2 is not above 0).", listed(names),
                   names.size() == 1 ? "is" : "are", names.size() == 1 ? "its" : "their"),
       names});
}

void remarkOnDuplicates(PartialLeastSquares& result) {
  if (result.weights.columns >= static_cast<std::size_t>(result.kept)) return;
  result.remarks.push_back({Severity::Warning,
                            "components-exhausted",
                            fmt::format("after {} nothing is left of the descriptors; further ones add nothing.",
                                        counted(result.weights.columns, "component", "components")),
                            {}});
}

// A component that some fold's training rows do not hold is validated by the others alone.
void remarkOnRank(PartialLeastSquares& result) {
  for (std::size_t a = 0; a < result.foldsWithout.size(); ++a) {
    const std::size_t folds = result.foldsWithout[a];
    if (folds == 0) continue;
    result.remarks.push_back(
        {a < static_cast<std::size_t>(result.kept) ? Severity::Warning : Severity::Note,
         "beyond-rank",
         fmt::format("the training rows of {} of {} folds hold no component {}: there its predictions repeat those of "
                     "fewer components, or rest on rounding.",
                     folds, result.plan.folds, a + 1),
         {}});
    return;
  }
}

// "residual distance 1.7 to 10.0 times its 95 % limit"
std::string reach(const PartialLeastSquares& result, double least, double most, const char* name) {
  const std::string from = fixed(least, 1), to = fixed(most, 1);
  return fmt::format("{} {} times its {} limit", name, from == to ? to : from + " to " + to, percent(result.level, 0));
}

void remarkOnDomain(PartialLeastSquares& result) {
  std::vector<std::string> names;
  std::size_t predicted = 0, far = 0, extreme = 0;
  double leastQ = 1e300, mostQ = 0, leastT = 1e300, mostT = 0;
  for (const PlsRow& row : result.rows) {
    if (row.role != Role::Predicted) continue;
    ++predicted;
    if (!outsideDomain(result, row)) continue;
    names.push_back(shownRow(result.used, row.name));
    if (result.qLimit && row.q > *result.qLimit) {
      ++far;
      leastQ = std::min(leastQ, row.q / *result.qLimit);
      mostQ = std::max(mostQ, row.q / *result.qLimit);
    }
    if (result.t2Limit && row.t2 > *result.t2Limit) {
      ++extreme;
      leastT = std::min(leastT, row.t2 / *result.t2Limit);
      mostT = std::max(mostT, row.t2 / *result.t2Limit);
    }
  }
  if (names.empty()) return;
  std::string how = far > 0 ? reach(result, leastQ, mostQ, "residual distance") : std::string();
  how += extreme > 0 ? (far > 0 ? ", " : "") + reach(result, leastT, mostT, "T2") : std::string(" (T2 within limits)");
  const bool all = names.size() == predicted && predicted > 1;
  result.remarks.push_back({Severity::Warning, "outside-domain",
                            fmt::format("{} outside the domain: {}. {} {} something that the training rows do not.",
                                        all ? fmt::format("all {} kept-out rows lie", predicted)
                                            : fmt::format("{} of {} kept-out rows lie", names.size(), predicted),
                                        how + (all ? "" : fmt::format(" ({})", listed(names))),
                                        names.size() == 1 ? "It" : "They", names.size() == 1 ? "holds" : "hold"),
                            names});
}

void remarkOnCentring(PartialLeastSquares& result) {
  std::vector<std::string> inside;
  for (const PlsResponse& response : result.responses)
    if (response.centredInsideQ2)
      inside.push_back(result.responses.size() == 1
                           ? fixed(*response.centredInsideQ2, 4)
                           : fmt::format("{} {}", response.name, fixed(*response.centredInsideQ2, 4)));
  const bool scaled = result.used.scaling == Scaling::Autoscale || result.used.scaling == Scaling::Pareto ||
                      result.used.scaling == Scaling::Range;
  result.remarks.push_back(
      {Severity::Note,
       "whole-table-centring",
       fmt::format(
           "every fold uses the centring{} of all {} rows{}.", scaled ? " and scaling" : "", result.used.rows.size(),
           inside.empty() ? std::string() : fmt::format("; centred inside the folds, q2 is {}", listed(inside, 8))),
       {}});
}

void remarkOnNeverHeldOut(PartialLeastSquares& result) {
  std::size_t never = 0;
  for (const PlsRow& row : result.rows)
    if (row.role == Role::Model && row.timesHeldOut == 0) ++never;
  if (never > 0 && result.plan.kind == Folds::Kind::Random)
    result.remarks.push_back({Severity::Note,
                              "never-held-out",
                              fmt::format("{} never held out by the {} draws; more draws would reach them.",
                                          counted(never, "row was", "rows were"), result.plan.folds),
                              {}});
}

}  // namespace

void remarkOnPls(PartialLeastSquares& result) {
  remarkOnPrediction(result);
  remarkOnDuplicates(result);
  remarkOnRank(result);
  remarkOnDomain(result);
  remarkOnNeverHeldOut(result);
  remarkOnCentring(result);
}

}  // namespace studystats
