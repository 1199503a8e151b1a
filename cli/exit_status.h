// What the command tells its caller.
#pragma once

namespace studystats::cli {

enum ExitStatus : int {
  kDone = 0,
  kNotComputed = 1,  // the analysis could not be done; with --strict, also a warning
  kBadRequest = 2,   // wrong options, unreadable input, an output that cannot be written
  kStopped = 130,
};

}  // namespace studystats::cli
