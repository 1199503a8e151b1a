// One analysis's line to its caller: progress goes out, a request to stop comes back as Stopped.
#pragma once

#include <studystats/host/progress.h>

#include <cstdint>
#include <string>

namespace studystats {

class Watch {
 public:
  Watch(const ProgressCallback& progress, const StopSignal& stop) : progress_(progress), stop_(stop) {}

  // Reports `done` of `total` within a stage that spans from `from` to `to` percent of the whole. Percentages never
  // fall. Throws Stopped when the callback or the signal asks for it.
  void report(const std::string& stage, const std::string& text, double from, double to, std::int64_t done,
              std::int64_t total);

  // Looks at the stop signal alone.
  void check() const;

 private:
  const ProgressCallback& progress_;
  const StopSignal& stop_;
  double percent_ = 0;
};

}  // namespace studystats
