// One analysis's line to its caller: progress goes out, a request to stop comes back as Stopped.
#pragma once

#include <studystats/host/progress.h>

#include <studystats/engine/basics.h>

#include <chrono>
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

  // Between two reports: looks at the stop signal and, so that a caller without one is heard, too, repeats the report
  // before when it is more than a tenth of a second old.
  void poll();

 private:
  void send();

  const ProgressCallback& progress_;
  const StopSignal& stop_;
  Progress last_{};
  std::chrono::steady_clock::time_point sent_{};
};

// What the engine asks while it works on one stage of an analysis, which spans from `from` to `to` percent of the
// whole: folds that begin are reported. Stopped, and what the progress callback throws, pass through the engine.
class EngineWatch {
 public:
  EngineWatch(Watch& watch, std::string stage, double from, double to)
      : watch_(watch), stage_(std::move(stage)), from_(from), to_(to) {}

  bool operator()(const engine::Progress& progress);

 private:
  Watch& watch_;
  std::string stage_;
  double from_, to_;
};

}  // namespace studystats
