// Random numbers and validation folds as values.
#pragma once

#include <studystats/engine/basics.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace studystats::engine {

// The random numbers of Nmrand (studystats/analyses.h), from a generator of the caller's own: Knuth's subtractive
// method, as published in Press et al., Numerical Recipes, 2nd ed. (1992), section 7.1 (ran3).
class STUDYSTATS_API Generator {
 public:
  explicit Generator(std::int32_t seed = 1) { start(seed); }
  void start(std::int32_t seed);  // seeds of equal magnitude start the same sequence

  // The next number, a 32-bit float in [0, 1]; 1 itself can occur. Seeds beyond 161803398 can begin with numbers
  // outside [0, 1].
  float operator()();

 private:
  std::int32_t table_[56];  // entries 1 ... 55, as published
  int next_, nextLag_;
};

// The rows of one fold, counted from 0. A row of the table that is in neither takes no part.
struct FoldRows {
  std::span<const std::int32_t> training;  // in the order in which the model takes them
  std::span<const std::int32_t> heldOut;
};

// Folds as an analysis asks for them, one after the other or, from several threads, in any order. rows(fold, buffer)
// answers for fold 0 ... count - 1 and may write its lists into buffer, which holds as many numbers as the table has
// rows. Prediction errors are multiplied by weight: rows / (folds * rows held out) for random draws, else 1.
class FoldSource {
 public:
  FoldSource() = default;  // no folds
  template <class Rows>
  requires std::is_invocable_r_v<FoldRows, Rows&, std::int32_t, std::span<std::int32_t>> FoldSource(std::int32_t folds,
                                                                                                    double errorWeight,
                                                                                                    Rows& rows)
      : count(folds),
        weight(errorWeight),
        asked_(const_cast<void*>(static_cast<const void*>(&rows))),
        ask_([](void* asked, std::int32_t fold, std::span<std::int32_t> buffer) -> FoldRows {
          return (*static_cast<Rows*>(asked))(fold, buffer);
        }) {}

  FoldRows rows(std::int32_t fold, std::span<std::int32_t> buffer) const { return ask_(asked_, fold, buffer); }

  std::int32_t count = 0;
  double weight = 1;

 private:
  void* asked_ = nullptr;
  FoldRows (*ask_)(void*, std::int32_t, std::span<std::int32_t>) = nullptr;
};

// Folds as a value. May be asked from several threads at once.
class STUDYSTATS_API Folds {
 public:
  Folds() = default;  // none

  // Systematic groups: entry i of order (rows from 0, each once) goes to fold i modulo groups. As many groups as rows
  // leave one row out at a time.
  static Folds dealt(std::span<const std::int32_t> order, std::int32_t groups);

  // Rows that belong together: fold groupOf[row], from 0; a row below 0 takes no part. Training rows are in increasing
  // order, as for dealt ones.
  static Folds grouped(std::span<const std::int32_t> groupOf);

  // Random subsets of rows 0 ... rows - 1: in each fold the training rows are drawn one by one until heldOut are left.
  static Folds drawn(std::int32_t rows, std::int32_t folds, std::int32_t heldOut, Generator& generator);

  std::int32_t count() const { return count_; }
  double weight() const { return weight_; }
  FoldRows rows(std::int32_t fold, std::span<std::int32_t> buffer) const;

  // For an analysis; the folds must outlive it.
  FoldSource source() const;
  FoldRows operator()(std::int32_t fold, std::span<std::int32_t> buffer) const { return rows(fold, buffer); }

 private:
  std::int32_t count_ = 0;
  double weight_ = 1;
  std::vector<std::int32_t> foldOf_;  // by row, when each is held out once
  std::vector<std::int32_t> drawn_;   // else, fold after fold: training rows, then those held out
  std::vector<std::size_t> ends_;     // of drawn_: where each fold's training rows begin and end
};

}  // namespace studystats::engine
