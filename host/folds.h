// Validation folds as the host asks for them: checked, handed to an entry point, described, and found again row by row.
#pragma once

#include <studystats/host/progress.h>
#include <studystats/host/validation.h>

#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <vector>

namespace studystats {

void checkFolds(const Folds& folds);  // throws BadOptions

// The folds for n rows; as many groups as rows, or more, are leave-one-out, and said so.
Folds foldsThatCanRun(Folds folds, std::size_t n, std::vector<Remark>& remarks);

// How an entry point takes folds.
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

std::size_t randomLeaveOut(const Folds& folds, std::size_t rows);  // rows that a random draw holds out
FoldPlan planOf(std::int32_t foldsPlanned, const Folds& folds, std::size_t n);

std::string describedFolds(const FoldPlan& plan);  // "7 folds", "leave-one-out, 208 folds"
std::string explainedFolds(const Folds& folds, std::size_t n, const std::string& order);  // for --explain

// What each fold held out and trained on, as the library built it.
struct FoldRows {
  std::vector<std::size_t> training;  // rows from 0: increasing for dealt groups, else as they were drawn
  std::vector<std::size_t> heldOut;   // increasing
};

// order: the rows in validation order, counted from 1, as the entry point returned them; all of them are usable. Draws
// random folds again from the seed, so no ValidatingAlone may be alive in the caller.
std::vector<FoldRows> foldRows(const Folds& folds, const FoldPlan& plan, std::span<const std::int32_t> order);

}  // namespace studystats
