// A host's progress window that answers as told and remembers what it was told.
#pragma once

#include <studystats/frame.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

class CountingHost final : public ISBProgressMonitor {
 public:
  struct Report {
    std::int32_t percent, maximum;
    VARTYPE type;
    std::u16string text;
    bool operator==(const Report&) const = default;
  };

  std::optional<VARIANT_BOOL> answer = VARIANT_TRUE;  // nothing: the answer word stays untouched
  HRESULT result = S_OK;
  std::uint32_t references = 1;  // the test's own
  std::vector<Report> reports;
  std::function<void()> during = [] {};  // what the host does while it is told
  std::string name, *log = nullptr;      // where AddRef and Release are noted down

  HRESULT QueryInterface(const GUID&, void**) override { return S_FALSE; }
  std::uint32_t AddRef() override {
    if (log != nullptr) *log += "+" + name + " ";
    return ++references;
  }
  std::uint32_t Release() override {
    if (log != nullptr) *log += "-" + name + " ";
    return --references;
  }
  HRESULT HostMethod4() override { return S_FALSE; }
  HRESULT HostMethod5() override { return S_FALSE; }
  HRESULT HostMethod6() override { return S_FALSE; }
  HRESULT HostMethod7() override { return S_FALSE; }
  HRESULT ReportProgress(std::int32_t percent, std::int32_t maximum, VARIANT text, VARIANT_BOOL* answerWord) override {
    reports.push_back({percent, maximum, text.vt, {}});
    if (text.vt == VT_BSTR) reports.back().text.assign(text.bstrVal, OxaExports::SysStringLen(text.bstrVal));
    if (answer) *answerWord = *answer;
    during();
    return result;
  }
};
