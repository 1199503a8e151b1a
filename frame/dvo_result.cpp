// The framework's error object and the last error of each thread.
#include <studystats/host_framework.h>

#include <cstdio>
#include <string>

namespace Dvo {
namespace {

thread_local unsigned int lastError = 0;

std::string standardSentence(unsigned int hr) {
  switch (hr) {
    case 0:
      return "No error";
    case E_POINTER:
      return "Null pointer";
    case E_FAIL:
      return "Unspecified error";
    case E_UNEXPECTED:
      return "Unexpected failure";
    case E_OUTOFMEMORY:
      return "Out of memory";
    case E_INVALIDARG:
      return "Invalid argument";
  }
  char text[24];
  std::snprintf(text, sizeof text, "HRESULT 0x%08X", hr);
  return text;
}

}  // namespace

DvoResult::DvoResult(unsigned int hr, std::string description, LastDescription::Action action)
    : code_(hr), action_(action), description_(std::make_shared<const std::string>(std::move(description))) {}

DvoResult::DvoResult(const DvoResult&) noexcept = default;
DvoResult& DvoResult::operator=(const DvoResult&) noexcept = default;
DvoResult::~DvoResult() = default;

unsigned int DvoResult::Code() const noexcept { return code_; }
const char* DvoResult::what() const noexcept { return description_->c_str(); }
std::string DvoResult::Description() const { return *description_; }
LastDescription::Action DvoResult::Action() const noexcept { return action_; }

void DvoResult::SetLastError(unsigned int hr) { lastError = hr; }

DvoResult DvoResult::LastError() { return StandardDescription(lastError); }

DvoResult DvoResult::StandardDescription(unsigned int hr) {
  return DvoResult(hr, standardSentence(hr), LastDescription::Action(0));
}

void DiagnoseEntryToGenericCatch() {}

void CheckNullDereference(const void* pointer) {
  if (pointer == nullptr) throw DvoResult::StandardDescription(E_POINTER);
}

}  // namespace Dvo
