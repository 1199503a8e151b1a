// Validation folds as the host asks for them: checked, made for the engine, and described.
#pragma once

#include <studystats/engine/folds.h>
#include <studystats/host/progress.h>
#include <studystats/host/validation.h>

#include <cstdint>
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

// The folds as the engine takes them. order: the model's rows, from 0, as systematic groups
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

}  // namespace studystats
