#include "counting_host.h"

#include <studystats/analyses.h>
#include <studystats/tables.h>
#include <studystats/utilities.h>

namespace {
constexpr auto kNotImplemented = static_cast<HRESULT>(E_FAIL);
}

CountingHost::CountingHost(std::string hostName, std::string* eventLog) : name_(std::move(hostName)), log_(eventLog) {}

void CountingHost::note(char event) {
  if (log_ != nullptr) *log_ += event + name_ + ' ';
}

HRESULT CountingHost::QueryInterface(const GUID&, void**) { return kNotImplemented; }

std::uint32_t CountingHost::AddRef() {
  note('+');
  return ++references;
}

std::uint32_t CountingHost::Release() {
  note('-');
  return --references;
}

HRESULT CountingHost::HostMethod4() { return kNotImplemented; }
HRESULT CountingHost::HostMethod5() { return kNotImplemented; }
HRESULT CountingHost::HostMethod6() { return kNotImplemented; }
HRESULT CountingHost::HostMethod7() { return kNotImplemented; }

HRESULT CountingHost::ReportProgress(std::int32_t percent, std::int32_t maximum, VARIANT text,
                                     VARIANT_BOOL* answerWord) {
  Report report{percent, maximum, text.vt, {}};
  if (text.vt == VT_BSTR) report.text.assign(text.bstrVal, OxaExports::SysStringLen(text.bstrVal));
  reports.push_back(report);
  if (answer) *answerWord = *answer;
  return result;
}
