// For an application that shows progress through an ISBProgressMonitor: its window as a callback of the friendly
// interface. host.h does not include this header, since it brings the host framework's types along.
#pragma once

#include <studystats/frame.h>
#include <studystats/host/progress.h>

#include <cmath>
#include <memory>

namespace studystats {

// options.progress = fromHostMonitor(window). The callback holds a reference on the window for as long as it or a copy
// of it lives. The window is told 10 ... 100 percent, as by every analysis, with the text of each report; an answer
// other than VARIANT_TRUE stops the analysis, which ends with Stopped. A failed report passes through as
// Dvo::DvoResult.
inline ProgressCallback fromHostMonitor(ISBProgressMonitor* window) {
  const auto monitor = std::make_shared<ProgressMonitor>();
  monitor->monitor = window;
  monitor->SetMinorIterationCount(100);
  return [monitor](const Progress& report) {
    monitor->SetStatusText(report.text);
    bool goOn = true;
    monitor->UpdateMinorProgress(static_cast<std::int32_t>(std::lround(report.percent)), goOn);
    return goOn;
  };
}

}  // namespace studystats
