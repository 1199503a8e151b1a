// Validation folds as the host asks for them: checked, handed to an entry point, described, and found again row by row.
#pragma once

#include <studystats/engine/folds.h>
#include <studystats/host/progress.h>
#include <studystats/host/validation.h>

#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace studystats {

constexpr std::int32_t kMostSeed = 161803398;  // above it the first numbers may leave 0 ... 1

void checkFolds(const Folds& folds);  // throws BadOptions

// Folds as they can be run.
struct RunFolds : Folds {
  RunFolds() = default;
  explicit RunFolds(Folds folds) : Folds(std::move(folds)) {}
  std::vector<std::size_t> foldOf{};  // of each row, from 0, when a column says it
};

// The folds for the model's rows. As many groups as rows, or more, are leave-one-out, and said so. labels: what the
// column of folds says of each row; folds are numbered as they appear.
RunFolds foldsThatCanRun(const Folds& folds, const std::vector<std::string>& labels,
                         const std::vector<std::string>& rowNames, std::vector<Remark>& remarks);

// How an entry point takes folds; those of a column it cannot take, and is given one group, which trains on nothing.
struct FoldSettings {
  std::int32_t method = 1, groups = 0;
  float fraction = 0;
};
FoldSettings settingsOf(const Folds& folds);

// The library's validation settings and generator are process-wide: while this object lives, no other validating
// analysis of the host runs; random draws begin where the seed says.
class ValidatingAlone {
 public:
  explicit ValidatingAlone(std::int32_t seed);

 private:
  std::unique_lock<std::mutex> lock_;
};

// The same as values, which take nothing that the process shares. order: the model's rows, from 0, as systematic groups
// are dealt to them.
engine::Folds engineFolds(const RunFolds& folds, std::span<const std::int32_t> order);

// Rows 0 ... n - 1 by ascending key; equal keys keep their order.
std::vector<std::int32_t> ascendingRows(std::span<const double> keys);

// Random numbers that begin where those of the entry points do: the first one is spent on the seeding.
engine::Generator generatorFrom(std::int32_t seed);

std::size_t randomLeaveOut(const Folds& folds, std::size_t rows);  // rows that a random draw holds out
FoldPlan planOf(std::int32_t foldsPlanned, const RunFolds& folds, std::size_t n);
FoldPlan planOf(const engine::Folds& run, const RunFolds& folds, std::size_t n);

std::string describedFolds(const FoldPlan& plan);  // "7 folds", "leave-one-out, 208 folds"
std::string explainedFolds(const RunFolds& folds, std::size_t n, const std::string& order);  // for --explain

// What each fold held out and trained on, as the library built it.
struct FoldRows {
  std::vector<std::size_t> training;  // rows from 0: increasing for dealt groups, else as they were drawn
  std::vector<std::size_t> heldOut;   // increasing
};

class RowsOfFolds {
 public:
  // order: the rows in validation order, counted from 1, as the entry point returned them; all of them are usable.
  // Draws random folds again from the seed, so no ValidatingAlone may be alive in the caller. drawsBefore: random folds
  // that were drawn before a validation started over with one row a fold.
  RowsOfFolds(const RunFolds& folds, const FoldPlan& plan, std::span<const std::int32_t> order,
              std::size_t drawsBefore = 0);

  std::size_t size() const { return folds_; }
  FoldRows operator[](std::size_t fold) const;  // from 0

 private:
  std::size_t folds_;
  std::vector<std::size_t> foldOf_;  // of each row, when each is held out once
  std::vector<FoldRows> drawn_;      // else
};

}  // namespace studystats
