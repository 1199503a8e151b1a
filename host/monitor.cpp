#include "host/monitor.h"

#include <utility>

namespace studystats {

HostMonitor::HostMonitor(Watch& watch, std::string stage, std::string text, double from, double to)
    : watch_(watch), stage_(std::move(stage)), text_(std::move(text)), from_(from), to_(to) {
  progress_.SetStatusText(text_);
  progress_.SetProgressMonitor(Dvo::DvoComPtr<ISBProgressMonitor>(this));
}

void HostMonitor::rethrow() const {
  if (thrown_) std::rethrow_exception(thrown_);
}

HRESULT HostMonitor::QueryInterface(const GUID&, void** object) {
  if (object) *object = nullptr;
  return static_cast<HRESULT>(0x80004002u);  // no interface but the one it has
}

std::uint32_t HostMonitor::AddRef() { return ++references_; }

std::uint32_t HostMonitor::Release() { return --references_; }

HRESULT HostMonitor::ReportProgress(std::int32_t, std::int32_t, VARIANT, VARIANT_BOOL* answer) {
  ++reports_;
  if (current() <= last_) startedOverAt_ = last_;
  last_ = current();
  *answer = VARIANT_FALSE;
  try {
    // An analysis reports at the start of fold r of total: r - 1 folds are done.
    watch_.report(stage_, text_ + std::to_string(current()) + " of " + std::to_string(total()), from_, to_,
                  current() - 1, total());
    *answer = VARIANT_TRUE;
  } catch (...) {
    thrown_ = std::current_exception();
  }
  return S_OK;
}

}  // namespace studystats
