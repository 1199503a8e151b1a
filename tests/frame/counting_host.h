// A host's progress window that answers as told and remembers what it was told.
#pragma once

#include <studystats/frame.h>

#include <cstdint>
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

  explicit CountingHost(std::string hostName = "", std::string* eventLog = nullptr);
  ~CountingHost() = default;

  HRESULT QueryInterface(const GUID& interfaceId, void** object) override;
  std::uint32_t AddRef() override;
  std::uint32_t Release() override;
  HRESULT HostMethod4() override;
  HRESULT HostMethod5() override;
  HRESULT HostMethod6() override;
  HRESULT HostMethod7() override;
  HRESULT ReportProgress(std::int32_t percent, std::int32_t maximum, VARIANT text, VARIANT_BOOL* answer) override;

  std::optional<VARIANT_BOOL> answer = VARIANT_TRUE;  // nothing: the answer word stays untouched
  HRESULT result = S_OK;
  std::uint32_t references = 1;  // the test's own
  std::vector<Report> reports;

 private:
  void note(char event);
  std::string name_;
  std::string* log_;
};
