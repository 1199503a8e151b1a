#include "host/folds.h"

#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace studystats {
void checkFolds(const Folds& folds) {
  const auto refuse = [](const std::string& text) { throw BadOptions(text, {.option = "--folds"}); };
  if (folds.kind == Folds::Kind::Systematic && folds.groups < 2)
    refuse(fmt::format("--folds {} leaves nothing to train on or nothing to hold out; try --folds 7 or --folds loo.",
                       folds.groups));
  if (folds.kind != Folds::Kind::Random) return;
  if (folds.draws.draws < 1) refuse("--folds random needs at least one draw, as in random:100:20%.");
  if (!(folds.draws.heldOut >= 0.001 && folds.draws.heldOut <= 0.5))
    refuse(fmt::format("--folds random holds out between 0.1 % and 50 % of the rows, not {}.",
                       percent(folds.draws.heldOut)));
  if (folds.seed < 0 || folds.seed > kMostSeed)
    throw BadOptions(fmt::format("--seed {} is outside 0 ... {}.", folds.seed, kMostSeed), {.option = "--seed"});
}

RunFolds foldsThatCanRun(const Folds& folds, const std::vector<std::string>& labels,
                         const std::vector<std::string>& rowNames, std::vector<Remark>& remarks) {
  const std::size_t n = rowNames.size();
  if (folds.kind == Folds::Kind::Systematic && static_cast<std::size_t>(folds.groups) >= n) {
    remarks.push_back({Severity::Note,
                       "folds-are-loo",
                       fmt::format("--folds {} with {} is leave-one-out.", folds.groups, counted(n, "row", "rows")),
                       {}});
    return RunFolds(Folds::leaveOneOut());
  }
  RunFolds run(folds);
  if (folds.kind != Folds::Kind::Column) return run;
  std::vector<std::string> names;
  for (std::size_t row = 0; row < n; ++row) {
    if (labels[row].empty())
      throw BadOptions(fmt::format("--folds column:{} says no fold for {}. Fill the cell, or exclude the row.",
                                   folds.column, rowNames[row]),
                       {.option = "--folds"});
    const auto at = std::find(names.begin(), names.end(), labels[row]);
    run.foldOf.push_back(static_cast<std::size_t>(at - names.begin()));
    if (at == names.end()) names.push_back(labels[row]);
  }
  if (names.size() < 2)
    throw BadOptions(
        fmt::format("--folds column:{} puts every row into one fold, which leaves nothing to train on.", folds.column),
        {.option = "--folds"});
  return run;
}

engine::Generator generatorFrom(std::int32_t seed) {
  engine::Generator generator(seed);
  generator();
  return generator;
}

std::vector<std::int32_t> ascendingRows(std::span<const double> keys) {
  std::vector<std::int32_t> rows(keys.size());
  std::iota(rows.begin(), rows.end(), 0);
  const auto key = [&](std::int32_t row) { return keys[static_cast<std::size_t>(row)]; };
  std::stable_sort(rows.begin(), rows.end(), [&](std::int32_t a, std::int32_t b) { return key(a) < key(b); });
  return rows;
}

engine::Folds engineFolds(const RunFolds& folds, std::span<const std::int32_t> order) {
  const auto n = static_cast<std::int32_t>(order.size());
  switch (folds.kind) {
    case Folds::Kind::LeaveOneOut:
      return engine::Folds::dealt(order, n);
    case Folds::Kind::Systematic:
      return engine::Folds::dealt(order, folds.groups);
    case Folds::Kind::Column:
      return engine::Folds::grouped(std::vector<std::int32_t>(folds.foldOf.begin(), folds.foldOf.end()));
    case Folds::Kind::Random:
      break;
  }
  engine::Generator generator = generatorFrom(folds.seed);
  return engine::Folds::drawn(n, folds.draws.draws, static_cast<std::int32_t>(randomLeaveOut(folds, order.size())),
                              generator);
}

FoldPlan planOf(const engine::Folds& run, const RunFolds& folds, std::size_t n) {
  return planOf(run.count(), folds, n);
}

std::size_t randomLeaveOut(const Folds& folds, std::size_t rows) {
  const auto groups = static_cast<std::size_t>(std::round(1 / folds.draws.heldOut));
  return groups < rows ? (rows + groups - 1) / groups : 1;
}

FoldPlan planOf(std::int32_t foldsPlanned, const RunFolds& folds, std::size_t n) {
  FoldPlan plan{.kind = folds.kind, .folds = static_cast<std::size_t>(foldsPlanned), .seed = folds.seed};
  if (folds.kind == Folds::Kind::Column) {
    std::vector<std::size_t> sizes;
    for (const std::size_t fold : folds.foldOf) {
      sizes.resize(std::max(sizes.size(), fold + 1), 0);
      ++sizes[fold];
    }
    plan.folds = sizes.size();
    plan.smallest = *std::min_element(sizes.begin(), sizes.end());
    plan.largest = *std::max_element(sizes.begin(), sizes.end());
    plan.column = folds.column;
    return plan;
  }
  if (plan.folds == 0) return plan;
  if (folds.kind == Folds::Kind::Random) {
    plan.smallest = plan.largest = randomLeaveOut(folds, n);
  } else {
    plan.smallest = n / plan.folds;
    plan.largest = (n + plan.folds - 1) / plan.folds;
  }
  return plan;
}

std::string describedFolds(const FoldPlan& plan) {
  if (plan.kind == Folds::Kind::LeaveOneOut) return fmt::format("leave-one-out, {} folds", plan.folds);
  if (plan.kind == Folds::Kind::Column) return fmt::format("{} folds by {}", plan.folds, plan.column);
  if (plan.kind == Folds::Kind::Random)
    return fmt::format("{} random draws of {}", plan.folds, counted(plan.largest, "row", "rows"));
  return plan.smallest == plan.largest ? fmt::format("{} folds of {} rows", plan.folds, plan.smallest)
                                       : fmt::format("{} folds", plan.folds);
}

std::string explainedFolds(const RunFolds& folds, std::size_t n, const std::string& order) {
  if (folds.kind == Folds::Kind::Column) {
    const FoldPlan plan = planOf(0, folds, n);
    const std::string sizes = plan.smallest == plan.largest ? fmt::to_string(plan.largest)
                                                            : fmt::format("{} to {}", plan.smallest, plan.largest);
    return fmt::format("{} of {} rows", describedFolds(plan), sizes);
  }
  if (folds.kind == Folds::Kind::LeaveOneOut) return fmt::format("leave-one-out: {} folds", n);
  if (folds.kind == Folds::Kind::Random)
    return fmt::format("{} random draws that hold out {} of {} rows, seed {}", folds.draws.draws,
                       randomLeaveOut(folds, n), n, folds.seed);
  const auto groups = static_cast<std::size_t>(folds.groups);
  const std::string size =
      n % groups == 0 ? fmt::to_string(n / groups) : fmt::format("{} or {}", n / groups, n / groups + 1);
  return fmt::format("{} folds of {} rows, dealt in the order of {}", groups, size, order);
}

}  // namespace studystats
