#include "host/watch.h"

#include <algorithm>

namespace studystats {

void Watch::report(const std::string& stage, const std::string& text, double from, double to, std::int64_t done,
                   std::int64_t total) {
  const double share = total > 0 ? static_cast<double>(done) / static_cast<double>(total) : 1.0;
  last_ = {std::max(last_.percent, from + (to - from) * std::clamp(share, 0.0, 1.0)), done, total, stage, text};
  check();
  send();
}

void Watch::check() const {
  if (stop_.stop_requested()) throw Stopped();
}

void Watch::poll() {
  constexpr std::chrono::milliseconds kPatience{100};
  check();
  if (progress_ && std::chrono::steady_clock::now() - sent_ > kPatience) send();
}

void Watch::send() {
  if (progress_ && !progress_(last_)) throw Stopped();
  sent_ = std::chrono::steady_clock::now();
}

bool EngineWatch::operator()(const engine::Progress& progress) {
  if (progress.begins)
    watch_.report(stage_, "fold " + std::to_string(progress.fold) + " of " + std::to_string(progress.folds), from_, to_,
                  progress.fold - 1, progress.folds);
  else
    watch_.poll();
  return true;
}

}  // namespace studystats
