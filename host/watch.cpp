#include "host/watch.h"

#include <algorithm>

namespace studystats {

void Watch::report(const std::string& stage, const std::string& text, double from, double to, std::int64_t done,
                   std::int64_t total) {
  const double share = total > 0 ? static_cast<double>(done) / static_cast<double>(total) : 1.0;
  percent_ = std::max(percent_, from + (to - from) * std::clamp(share, 0.0, 1.0));
  check();
  if (progress_ && !progress_({percent_, done, total, stage, text})) throw Stopped();
}

void Watch::check() const {
  if (stop_.stop_requested()) throw Stopped();
}

}  // namespace studystats
