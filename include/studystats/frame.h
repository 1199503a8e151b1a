// Progress of a running analysis, and the message lookup.
//
// A host wraps its ISBProgressMonitor in a ProgressMonitor and passes the address to an analysis, which reports through
// updateminorprogress. Each report sends a percentage and the status text to the host and brings back whether to go on.
// Everything runs on the thread that called the analysis.
#pragma once

#include <studystats/host_framework.h>

#include <cstdint>
#include <string>

// The host's progress interface with a status text and two nested counters, an outer "major" and an inner "minor" loop.
// Owns one reference on the interface; copies own their own. Analyses move only the minor counter, so with the defaults
// the percentage runs from 10 to 100 over one analysis; a host that runs several sets the major count and position.
struct STUDYSTATS_API ProgressMonitor {
  Dvo::DvoComPtr<ISBProgressMonitor> monitor;  // null: nobody is told, and everything goes on
  std::string statusText;                      // UTF-8, sent with every report
  std::int32_t majorIterationCount = 1;
  std::int32_t minorIterationCount = 1;
  std::int32_t majorIteration = 0;
  std::int32_t minorIteration = 0;

  ProgressMonitor();
  ProgressMonitor(const ProgressMonitor& other);
  // Adds the reference on the other's interface before it releases its own. std::bad_alloc leaves it unchanged.
  ProgressMonitor& operator=(const ProgressMonitor& other);
  ~ProgressMonitor();

  // Takes over the reference that `host` holds; an interface held before is released.
  void SetProgressMonitor(Dvo::DvoComPtr<ISBProgressMonitor> host);
  void SetStatusText(const std::string& text);
  // The counts of iterations. Setting one reports nothing; any value is accepted.
  void SetMajorIterationCount(std::int32_t count);
  void SetMinorIterationCount(std::int32_t count);

  // Moves to an outer position, the inner one going back to 0, and reports.
  void UpdateMajorProgress(std::int32_t major, bool& goOn);
  // Moves to an inner position and reports.
  void UpdateMinorProgress(std::int32_t minor, bool& goOn);

  // Reports the present position. The percentage is ((minor / minorCount + major) / majorCount) * 90 + 10, truncated:
  // 10 at the start, 100 at the end, and outside for a position outside its count (as far as 32 bits go). Where a count
  // is 0 or below it is held within 10 ... 100, and a position that is not a number (0 of 0) shows 10. goOn: out; false
  // when the host answered anything but VARIANT_TRUE. Without a host it is true. A negative HRESULT of the host is
  // thrown as Dvo::DvoResult with goOn left true; a positive one is only recorded as the last error. std::bad_alloc
  // when the text cannot be converted. The host may change or take off `monitor` during the report: a reference is held
  // on the interface that is being told.
  void UpdateProgress(bool& goOn) const;
};

extern "C" {

// Sets the count of iterations, moves to `current` and reports.
// monitor: may be null, and then nothing happens. continueFlag: out; 1 = go on, 0 = stop; it holds 1 when a failure of
// the host passes through as Dvo::DvoResult. The result is always 0; callers go by the flag.
STUDYSTATS_API std::int32_t UpdateMajorProgress(ProgressMonitor* monitor, std::int32_t current, std::int32_t count,
                                                int* continueFlag);
STUDYSTATS_API std::int32_t UpdateMinorProgress(ProgressMonitor* monitor, std::int32_t current, std::int32_t count,
                                                int* continueFlag);

// The same with every argument by address, as the analyses call them.
// monitorHandle: the variable that holds the monitor's address (which may be null).
STUDYSTATS_API std::int32_t updatemajorprogress(ProgressMonitor* const* monitorHandle, const std::int32_t* current,
                                                const std::int32_t* count, std::int32_t* continueFlag);
STUDYSTATS_API std::int32_t updateminorprogress(ProgressMonitor* const* monitorHandle, const std::int32_t* current,
                                                const std::int32_t* count, std::int32_t* continueFlag);

// The text of a message, or null when the number has none. The library defines no messages: every number gives null.
STUDYSTATS_API const char* ID2MessageString(int id);

}  // extern "C"
