// From two nested counters to the host's progress window and back to a go-on flag.
#include <studystats/frame.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace {

// Where the counters stand, as the host shows it: 10 at the start, 100 at the end. Without two counts to divide by the
// quotient means nothing: held within the two, and written so that a not-a-number gives 10.
std::int32_t percentage(const ProgressMonitor& progress) {
  const double fraction =
      (double(progress.minorIteration) / double(progress.minorIterationCount) + double(progress.majorIteration)) /
      double(progress.majorIterationCount);
  const double percent = fraction * 90.0 + 10.0;
  if (progress.minorIterationCount > 0 && progress.majorIterationCount > 0) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp(percent, double(Limits::min()), double(Limits::max())));
  }
  if (!(percent > 10.0)) return 10;
  return percent < 100.0 ? static_cast<std::int32_t>(percent) : 100;
}

// Sends one report. The text lives as long as the call, whichever way it ends, and so does the host's object: a host
// may take the monitor off from inside its own report.
HRESULT report(const ProgressMonitor& progress, VARIANT_BOOL& answer) {
  const Dvo::DvoComPtr<ISBProgressMonitor> host = progress.monitor;
  const std::int32_t percent = percentage(progress);
  if (progress.statusText.empty()) return host->ReportProgress(percent, 100, VARIANT{}, &answer);
  const Dvo::DvoBSTR holder(progress.statusText);
  Dvo::DvoVariant text;
  text.Set(holder);
  return host->ReportProgress(percent, 100, text.Value(), &answer);
}

}  // namespace

ProgressMonitor::ProgressMonitor() = default;
ProgressMonitor::ProgressMonitor(const ProgressMonitor&) = default;
ProgressMonitor::~ProgressMonitor() = default;

ProgressMonitor& ProgressMonitor::operator=(const ProgressMonitor& other) {
  std::string text = other.statusText;  // the only step that can fail comes first
  monitor = other.monitor;
  statusText = std::move(text);
  majorIterationCount = other.majorIterationCount;
  minorIterationCount = other.minorIterationCount;
  majorIteration = other.majorIteration;
  minorIteration = other.minorIteration;
  return *this;
}

void ProgressMonitor::SetProgressMonitor(Dvo::DvoComPtr<ISBProgressMonitor> host) { monitor = std::move(host); }
void ProgressMonitor::SetStatusText(const std::string& text) { statusText = text; }
void ProgressMonitor::SetMajorIterationCount(std::int32_t count) { majorIterationCount = count; }
void ProgressMonitor::SetMinorIterationCount(std::int32_t count) { minorIterationCount = count; }

void ProgressMonitor::UpdateMajorProgress(std::int32_t major, bool& goOn) {
  majorIteration = major;
  minorIteration = 0;
  UpdateProgress(goOn);
}

void ProgressMonitor::UpdateMinorProgress(std::int32_t minor, bool& goOn) {
  minorIteration = minor;
  UpdateProgress(goOn);
}

void ProgressMonitor::UpdateProgress(bool& goOn) const {
  goOn = true;
  if (!monitor) return;
  VARIANT_BOOL answer = VARIANT_FALSE;
  const HRESULT hr = report(*this, answer);
  if (hr != S_OK) Dvo::DvoResult::SetLastError(static_cast<unsigned int>(hr));
  if (hr < 0) throw Dvo::DvoResult::LastError();
  goOn = answer == VARIANT_TRUE;
}

std::int32_t UpdateMajorProgress(ProgressMonitor* monitor, std::int32_t current, std::int32_t count,
                                 int* continueFlag) {
  *continueFlag = 1;
  if (monitor == nullptr) return 0;
  bool goOn = true;
  monitor->SetMajorIterationCount(count);
  monitor->UpdateMajorProgress(current, goOn);
  if (!goOn) *continueFlag = 0;
  return 0;
}

std::int32_t UpdateMinorProgress(ProgressMonitor* monitor, std::int32_t current, std::int32_t count,
                                 int* continueFlag) {
  *continueFlag = 1;
  if (monitor == nullptr) return 0;
  bool goOn = true;
  monitor->SetMinorIterationCount(count);
  monitor->UpdateMinorProgress(current, goOn);
  if (!goOn) *continueFlag = 0;
  return 0;
}

std::int32_t updatemajorprogress(ProgressMonitor* const* monitorHandle, const std::int32_t* current,
                                 const std::int32_t* count, std::int32_t* continueFlag) {
  return UpdateMajorProgress(*monitorHandle, *current, *count, continueFlag);
}

std::int32_t updateminorprogress(ProgressMonitor* const* monitorHandle, const std::int32_t* current,
                                 const std::int32_t* count, std::int32_t* continueFlag) {
  return UpdateMinorProgress(*monitorHandle, *current, *count, continueFlag);
}
