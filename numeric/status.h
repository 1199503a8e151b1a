// The status words of the numeric side, named once.
#pragma once

#include <cstdint>

namespace studystats::core {

enum : std::int32_t {
  kDone = 0,
  kSingular = 1,      // singular matrix or nothing computed; also the value held while an analysis runs
  kNotConverged = 2,  // an iteration did not converge, or no variable could be selected
  kNoScratch = 5,     // scratch memory could not be had
  kStopped = 999,     // the host asked to stop
};

}  // namespace studystats::core
