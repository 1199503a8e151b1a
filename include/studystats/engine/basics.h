// What every analysis of the engine takes: a view of numbers, and a line back to the caller.
#pragma once

#include <cstdint>
#include <type_traits>

#ifndef STUDYSTATS_API
#define STUDYSTATS_API __attribute__((visibility("default")))
#endif

namespace studystats::engine {

// How a call ended. Nothing here throws but what the caller's own checkpoint throws, and that passes through unchanged.
enum class Status : std::int32_t {
  Done = 0,
  Singular = 1,      // a singular matrix, or nothing to compute
  NotConverged = 2,  // an iteration did not converge, or no variable could be selected
  NoMemory = 5,      // the memory could not be had: nothing was computed
  Stopped = 999,     // the checkpoint answered false
};

// Numbers of the caller's, column-major: row i of column j, both from 0, lies at data[i + j * ld].
struct Table {
  const double* data = nullptr;
  std::int32_t rows = 0;
  std::int32_t columns = 0;
  std::int32_t ld = 0;  // from one column to the next
};

// Where an analysis is.
struct Progress {
  std::int32_t fold = 0;   // from 1; 0 while the model of all rows is made
  std::int32_t folds = 0;  // of how many
  bool begins = false;     // true once a fold, before its rows are asked for; otherwise somewhere in between
};

// Hears where an analysis is and answers whether to go on: any callable bool(const Progress&), which is not owned and
// must outlive the call. It is asked when a fold begins and, within eigenproblems, cross-products, selections and
// coefficients, at least every 50 ms on a present-day machine. Called on the thread that calls the analysis.
class Checkpoint {
 public:
  Checkpoint() = default;  // goes on
  template <class Ask>
  requires(!std::is_same_v<std::remove_const_t<Ask>, Checkpoint> && std::is_invocable_r_v<bool, Ask&, const Progress&>)
      Checkpoint(Ask& ask)  // NOLINT(google-explicit-constructor)
      : asked_(const_cast<void*>(static_cast<const void*>(&ask))),
        ask_([](void* asked, const Progress& progress) -> bool { return (*static_cast<Ask*>(asked))(progress); }) {}

  bool operator()(const Progress& progress) const { return ask_ == nullptr || ask_(asked_, progress); }

 private:
  void* asked_ = nullptr;
  bool (*ask_)(void*, const Progress&) = nullptr;
};

}  // namespace studystats::engine
