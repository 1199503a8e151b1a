// The checkpoint of an entry point: the host is told of every fold that begins, and of nothing in between.
#pragma once

#include <studystats/engine/basics.h>
#include <studystats/frame.h>

#include <cstdint>

namespace studystats::core {

struct HostReports {
  ProgressMonitor* const* monitor;
  std::int32_t* continueFlag;

  bool operator()(const engine::Progress& progress) const {
    if (!progress.begins) return true;
    updateminorprogress(monitor, &progress.fold, &progress.folds, continueFlag);
    return *continueFlag != 0;
  }
};

}  // namespace studystats::core
