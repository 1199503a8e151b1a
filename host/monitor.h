// The host's own progress monitor: what an analysis reports becomes progress of the whole, and what the caller answers
// goes back to the analysis.
//
// Every call of an entry point that reports gets one, with or without a progress callback: the count of its reports
// says which fold an analysis had reached. An exception of the callback does not travel through the analysis; it is
// kept, the analysis is told to stop, and rethrow() lets it go on from there.
#pragma once

#include <studystats/frame.h>

#include "host/watch.h"

#include <cstdint>
#include <exception>
#include <string>

namespace studystats {

class HostMonitor final : public ISBProgressMonitor {
 public:
  // Reports run from `from` to `to` percent of the whole; `text` stands before their count: "fold ".
  HostMonitor(Watch& watch, std::string stage, std::string text, double from, double to);
  HostMonitor(const HostMonitor&) = delete;
  HostMonitor& operator=(const HostMonitor&) = delete;

  ProgressMonitor* monitor() { return &progress_; }  // what an entry point takes
  std::int64_t reports() const { return reports_; }
  std::int32_t current() const { return progress_.minorIteration; }     // the step reported last, from 1
  std::int32_t total() const { return progress_.minorIterationCount; }  // of how many
  std::int32_t startedOverAt() const { return startedOverAt_; }         // the step after which they began again, else 0
  void rethrow() const;                                                 // Stopped, or what the callback threw

  HRESULT QueryInterface(const GUID& interfaceId, void** object) override;
  std::uint32_t AddRef() override;
  std::uint32_t Release() override;
  HRESULT HostMethod4() override { return S_OK; }
  HRESULT HostMethod5() override { return S_OK; }
  HRESULT HostMethod6() override { return S_OK; }
  HRESULT HostMethod7() override { return S_OK; }
  HRESULT ReportProgress(std::int32_t percent, std::int32_t maximum, VARIANT text, VARIANT_BOOL* answer) override;

 private:
  Watch& watch_;
  std::string stage_, text_;
  double from_, to_;
  std::int64_t reports_ = 0;
  std::int32_t last_ = 0, startedOverAt_ = 0;
  std::uint32_t references_ = 1;  // its owner's; the object lives on the stack and outlives the analysis
  std::exception_ptr thrown_;
  ProgressMonitor progress_;  // last: it lets go of its reference first
};

}  // namespace studystats
