// Strings with their length in front, their counted holder, and variants.
#include <studystats/host_framework.h>

#include <cstring>
#include <new>

#include "frame/exception_translation.h"
#include "frame/utf16.h"

namespace {

// A string's memory begins eight bytes before its text; the last four of them hold the length in bytes.
constexpr std::size_t kHead = 8;
constexpr std::size_t kMostBytes = UINT32_MAX - kHead - sizeof(char16_t);

void* memoryOf(char16_t* text) { return reinterpret_cast<char*>(text) - kHead; }

BSTR copyOrThrow(const char16_t* text, std::size_t length) {
  const BSTR copy = OxaExports::SysAllocStringLen(text, length);
  if (copy == nullptr) throw std::bad_alloc();
  return copy;
}

}  // namespace

BSTR OxaExports::SysAllocStringLen(const char16_t* text, std::size_t length) {
  if (length > kMostBytes / sizeof(char16_t)) return nullptr;
  const auto bytes = static_cast<std::uint32_t>(length * sizeof(char16_t));
  char* const memory = static_cast<char*>(::operator new(kHead + bytes + sizeof(char16_t), std::nothrow));
  if (memory == nullptr) return nullptr;
  const BSTR copy = reinterpret_cast<BSTR>(memory + kHead);
  std::memcpy(memory + kHead - sizeof bytes, &bytes, sizeof bytes);
  if (bytes > 0) std::memcpy(copy, text, bytes);
  copy[length] = u'\0';
  return copy;
}

std::size_t OxaExports::SysStringLen(const char16_t* text) {
  if (text == nullptr) return 0;
  std::uint32_t bytes;
  std::memcpy(&bytes, reinterpret_cast<const char*>(text) - sizeof bytes, sizeof bytes);
  return bytes / sizeof(char16_t);
}

void OxaExports::SysFreeString(BSTR text) {
  if (text != nullptr) ::operator delete(memoryOf(text));
}

HRESULT OxaExports::VariantClear(VARIANT* value) {
  if (value == nullptr) return static_cast<HRESULT>(E_INVALIDARG);
  const VARIANT owned = std::exchange(*value, VARIANT{});  // empty before an interface's Release can raise
  if (owned.vt == VT_BSTR) SysFreeString(owned.bstrVal);
  if ((owned.vt == VT_UNKNOWN || owned.vt == VT_DISPATCH) && owned.punkVal != nullptr) owned.punkVal->Release();
  return S_OK;
}

namespace Dvo {

DvoBSTR::BSTRData::BSTRData(const std::string& text) {
  const std::u16string units = studystats::core::utf16(text);
  text_ = copyOrThrow(units.data(), units.size());
}

DvoBSTR::BSTRData::~BSTRData() { OxaExports::SysFreeString(text_); }

void DvoBSTR::BSTRData::AddRef() const noexcept { ++references_; }

void DvoBSTR::BSTRData::Release() const noexcept {
  if (--references_ == 0) delete this;
}

DvoBSTR::DvoBSTR(const std::string& text) : data_(new BSTRData(text)) {}

DvoBSTR::DvoBSTR(const DvoBSTR& other) noexcept : data_(other.data_) { data_->AddRef(); }

DvoBSTR& DvoBSTR::operator=(const DvoBSTR& other) noexcept {
  other.data_->AddRef();
  data_->Release();
  data_ = other.data_;
  return *this;
}

DvoBSTR::~DvoBSTR() { data_->Release(); }

DvoVariant::DvoVariant() noexcept : value_{} {}

DvoVariant::DvoVariant(VARIANT owned) noexcept : value_(owned) {}

DvoVariant::~DvoVariant() { Clear(); }

void DvoVariant::Set(const DvoBSTR& text) {
  const BSTR copy = copyOrThrow(text.Text(), OxaExports::SysStringLen(text.Text()));
  Clear();
  value_.vt = VT_BSTR;
  value_.bstrVal = copy;
}

void DvoVariant::Clear() noexcept {
  try {
    OxaExports::VariantClear(&value_);
  } catch (...) {
    try {
      studystats::core::translateCurrentException().Description();
    } catch (...) {  // no memory for the sentence, which nobody reads
    }
  }
}

}  // namespace Dvo
