// A caller of the engine who counts how often it is asked whether to go on, and stops at one of these.
#pragma once

#include <studystats/engine/basics.h>

#include <cstdint>

namespace studystats {

struct PollCounter {
  std::int64_t stopAt = 0;  // the poll that is answered with a stop; 0: none
  std::int64_t polls = 0, begun = 0;

  bool operator()(const engine::Progress& progress) {
    if (progress.begins) ++begun;
    return ++polls != stopAt;
  }
};

// Operations that may go by between two polls: on a present-day machine some 10 to 20 ms.
constexpr std::int64_t kBetweenPolls = 10'000'000;

}  // namespace studystats
