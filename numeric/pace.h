// How a long computation stays in touch with its caller: it counts its operations and asks the checkpoint whenever
// enough have gone by.
#pragma once

#include <studystats/engine/basics.h>

#include <algorithm>
#include <cstdint>

namespace studystats::core {

class Pace {
 public:
  Pace() = default;  // nobody to ask
  explicit Pace(const engine::Checkpoint& checkpoint, engine::Progress where = {})
      : checkpoint_(checkpoint), where_(where) {}

  // Counts that many more operations; false when the caller has asked to stop. Results are then abandoned.
  bool goOn(std::int64_t operations) {
    done_ += operations;
    return done_ < kBetween ? !stopped_ : ask();
  }
  bool stopped() const { return stopped_; }

  // A fold begins: the caller hears of it whatever has gone by.
  bool begin(std::int32_t fold, std::int32_t folds) {
    where_ = {fold, folds, true};
    const bool goesOn = ask();
    where_.begins = false;
    return goesOn;
  }

  // run(first, last) for parts of 0 ... n, each short enough that the caller is heard in time; parts begin at multiples
  // of `together`. Each of the n items takes so many operations.
  template <class Run>
  bool inParts(std::int64_t n, std::int64_t operations, std::int64_t together, Run run) {
    if (n * operations < kBetween) {  // the usual case, without divisions
      run(0, static_cast<std::int32_t>(n));
      return goOn(n * operations);
    }
    const std::int64_t items = std::max(kBetween / std::max<std::int64_t>(operations, 1) / together, std::int64_t{1});
    for (std::int64_t first = 0, step = items * together; first < n; first += step) {
      const std::int64_t last = std::min(first + step, n);
      run(static_cast<std::int32_t>(first), static_cast<std::int32_t>(last));
      if (!goOn((last - first) * operations)) return false;
    }
    return true;
  }

 private:
  static constexpr std::int64_t kBetween = 4'000'000;  // a few milliseconds

  bool ask() {
    done_ = 0;
    if (!stopped_) stopped_ = !checkpoint_(where_);
    return !stopped_;
  }

  engine::Checkpoint checkpoint_;
  engine::Progress where_;
  std::int64_t done_ = 0;
  bool stopped_ = false;
};

}  // namespace studystats::core
