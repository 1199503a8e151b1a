// The types that cross the border to the host application, and the services of the host's framework that the library
// calls: error objects, text formatting, strings and variants, a counted interface pointer, and (in a header of
// their own, included here) pooled containers.
//
// This is a small stand-in for that framework, complete for what the library asks of it. Its state (the last error of
// each thread, the memory pools) lives in the library, once for the whole process. A host implements
// ISBProgressMonitor, catches Dvo::DvoResult, and passes kel containers where an operation takes them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <studystats/pooled_containers.h>

#ifndef STUDYSTATS_API
#define STUDYSTATS_API __attribute__((visibility("default")))
#endif

// ---------------------------------------------------------------------------------------------------------------------
// Results, strings, variants

using HRESULT = std::int32_t;       // negative: a failure; 0: success; positive: success with a remark
using VARIANT_BOOL = std::int16_t;  // VARIANT_TRUE is -1, and nothing else is true
using VARTYPE = std::uint16_t;
using BSTR = char16_t*;  // UTF-16 with a terminating 0; the four bytes before it hold its length in bytes

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

inline constexpr unsigned int E_POINTER = 0x80004003u;
inline constexpr unsigned int E_FAIL = 0x80004005u;
inline constexpr unsigned int E_UNEXPECTED = 0x8000FFFFu;
inline constexpr unsigned int E_OUTOFMEMORY = 0x8007000Eu;
inline constexpr unsigned int E_INVALIDARG = 0x80070057u;

inline constexpr VARTYPE VT_EMPTY = 0;
inline constexpr VARTYPE VT_I4 = 3;
inline constexpr VARTYPE VT_R8 = 5;
inline constexpr VARTYPE VT_BSTR = 8;
inline constexpr VARTYPE VT_DISPATCH = 9;
inline constexpr VARTYPE VT_BOOL = 11;
inline constexpr VARTYPE VT_UNKNOWN = 13;
inline constexpr VARTYPE VT_ARRAY = 0x2000;  // or-ed to the type of the elements
inline constexpr VARTYPE VT_BYREF = 0x4000;  // or-ed to the type of what `byref` points at

struct GUID {
  std::uint32_t data1;
  std::uint16_t data2, data3;
  std::uint8_t data4[8];
};

// The root of the host's interfaces. Objects count their references and delete themselves; no interface has a virtual
// destructor, since the position in the method table is what counts.
class IUnknown {
 public:
  virtual HRESULT QueryInterface(const GUID& interfaceId, void** object) = 0;
  virtual std::uint32_t AddRef() = 0;   // the new count
  virtual std::uint32_t Release() = 0;  // the new count; at 0 the object is gone

 protected:
  ~IUnknown() = default;
};

struct VARIANTRecord {
  void* data;
  void* info;
};

// A tagged value; `vt` says which member holds it. A plain record: copying it copies no ownership.
struct VARIANT {
  VARTYPE vt;
  std::uint16_t reserved1, reserved2, reserved3;
  union {
    std::int64_t llVal;
    std::int32_t lVal;
    VARIANT_BOOL boolVal;
    double dblVal;
    BSTR bstrVal;
    IUnknown* punkVal;  // VT_UNKNOWN and VT_DISPATCH
    void* byref;
    VARIANTRecord record;
  };
};

// The host's progress window: eight methods in this order. The library calls AddRef, Release and ReportProgress.
class ISBProgressMonitor : public IUnknown {
 public:
  virtual HRESULT HostMethod4() = 0;  // 4 to 7: the host's own, never called by the library
  virtual HRESULT HostMethod5() = 0;
  virtual HRESULT HostMethod6() = 0;
  virtual HRESULT HostMethod7() = 0;

  // percent: 10 ... 100 for positions within their counts. maximum: 100. text: VT_BSTR, or VT_EMPTY when there is none;
  // the host may read it during the call and neither keeps nor frees it. answer: holds 0 at the call; exactly
  // VARIANT_TRUE means go on, anything else stops the analysis. A negative result reaches the analysis's caller as a
  // Dvo::DvoResult.
  virtual HRESULT ReportProgress(std::int32_t percent, std::int32_t maximum, VARIANT text, VARIANT_BOOL* answer) = 0;

 protected:
  ~ISBProgressMonitor() = default;
};

namespace OxaExports {

// A copy of `length` UTF-16 units; null when the memory cannot be had.
STUDYSTATS_API BSTR SysAllocStringLen(const char16_t* text, std::size_t length);

// Length in UTF-16 units, without the terminating 0; 0 for null.
STUDYSTATS_API std::size_t SysStringLen(const char16_t* text);

// Frees a string made by SysAllocStringLen; null is allowed.
STUDYSTATS_API void SysFreeString(BSTR text);

// Frees what the value owns (a string, or a reference on an interface) and leaves it VT_EMPTY. What a by-reference
// value points at, and an array, belong to whoever made them. Result: S_OK, or E_INVALIDARG for null.
STUDYSTATS_API HRESULT VariantClear(VARIANT* value);

}  // namespace OxaExports

// ---------------------------------------------------------------------------------------------------------------------
// Errors, text, and the wrappers of strings, variants and interfaces

namespace Dvo {

struct LastDescription {
  // What becomes of the description recorded last. The library always passes 0; the value is stored and not acted on.
  enum Action : std::int32_t { kKeep = 0 };
};

// The exception of the framework: an HRESULT with a sentence. Copying it never throws.
class STUDYSTATS_API DvoResult : public std::exception {
 public:
  DvoResult(unsigned int hr, std::string description, LastDescription::Action action);
  DvoResult(const DvoResult& other) noexcept;
  DvoResult& operator=(const DvoResult& other) noexcept;
  ~DvoResult() override;

  unsigned int Code() const noexcept;  // the HRESULT
  const char* what() const noexcept override;
  std::string Description() const;
  LastDescription::Action Action() const noexcept;

  // Records an HRESULT as the calling thread's last error.
  static void SetLastError(unsigned int hr);
  // The error last recorded on this thread, ready to be thrown; code 0 when there has been none.
  static DvoResult LastError();
  // An error with the standard sentence for its code.
  static DvoResult StandardDescription(unsigned int hr);

 private:
  unsigned int code_;
  LastDescription::Action action_;
  std::shared_ptr<const std::string> description_;
};

// Called where an exception of unknown type has been caught: a place for a debugger's breakpoint.
STUDYSTATS_API void DiagnoseEntryToGenericCatch();

// Raises E_POINTER when the pointer is null.
STUDYSTATS_API void CheckNullDereference(const void* pointer);

// Text with the placeholders %1 ... %9 for the first ... ninth argument, inserted in order with <<. A number is written
// through Stream(), so the precision and notation set there before an insertion apply to it; the stream begins in the
// classic locale. Only a percent sign followed by a digit from 1 to 9 is a placeholder: "%%", "%0" and a percent sign
// at the end stay as they are, and so does a placeholder that never receives an argument. An inserted text is never
// searched for placeholders. Arguments for which the format has no placeholder are dropped.
class STUDYSTATS_API DvoFormat {
 public:
  DvoFormat(std::string format);
  DvoFormat(const DvoFormat&) = delete;
  DvoFormat& operator=(const DvoFormat&) = delete;
  ~DvoFormat();

  std::ostream& Stream() noexcept { return stream_; }
  operator std::string() const;

  // An integer of any type, those of one byte and characters included: a number.
  template <class Integer>
  requires std::is_integral_v<decltype(+std::declval<Integer>())> DvoFormat& operator<<(Integer number) & {
    stream_ << +number;
    AfterInsertion();
    return *this;
  }

 private:
  void AfterInsertion();  // what stands in the stream becomes the next argument

  std::string format_;
  std::ostringstream stream_;
  std::vector<std::string> arguments_;

  friend STUDYSTATS_API DvoFormat& operator<<(DvoFormat& format, const std::string& text);
  friend STUDYSTATS_API DvoFormat& operator<<(DvoFormat& format, double number);
};

STUDYSTATS_API DvoFormat& operator<<(DvoFormat& format, const std::string& text);
STUDYSTATS_API DvoFormat& operator<<(DvoFormat& format, double number);

// So that a sentence can be composed in one expression: std::string s = DvoFormat("%1 of %2") << 3 << 7;
template <class Argument>
DvoFormat& operator<<(DvoFormat&& format, const Argument& argument) {
  return format << argument;
}

// A counted holder of a BSTR with the text of a narrow string. The narrow string is read as UTF-8; each ill-formed
// sequence becomes one U+FFFD. std::bad_alloc when the memory cannot be had.
class STUDYSTATS_API DvoBSTR {
 public:
  // The shared part. It begins with one reference and deletes itself when the last is released.
  class STUDYSTATS_API BSTRData {
   public:
    BSTRData(const std::string& text);
    BSTRData(const BSTRData&) = delete;
    BSTRData& operator=(const BSTRData&) = delete;
    void AddRef() const noexcept;
    void Release() const noexcept;
    const char16_t* Text() const noexcept { return text_; }

   private:
    ~BSTRData();
    BSTR text_;
    mutable std::int32_t references_ = 1;
  };

  DvoBSTR(const std::string& text);
  DvoBSTR(const DvoBSTR& other) noexcept;
  DvoBSTR& operator=(const DvoBSTR& other) noexcept;
  ~DvoBSTR();
  const char16_t* Text() const noexcept { return data_->Text(); }

 private:
  const BSTRData* data_;
};

// Owns a VARIANT and clears it at the end.
class STUDYSTATS_API DvoVariant {
 public:
  DvoVariant() noexcept;                        // VT_EMPTY
  explicit DvoVariant(VARIANT owned) noexcept;  // takes over what the value owns
  DvoVariant(const DvoVariant&) = delete;
  DvoVariant& operator=(const DvoVariant&) = delete;
  ~DvoVariant();

  // Becomes a VT_BSTR with a copy of the text; std::bad_alloc (and unchanged) when the memory cannot be had.
  void Set(const DvoBSTR& text);
  // Frees what the value owns and leaves VT_EMPTY. Whatever an interface's Release raises is translated and dropped.
  void Clear() noexcept;
  const VARIANT& Value() const noexcept { return value_; }

 private:
  VARIANT value_;
};

// A counted pointer to an interface: AddRef when it is made from a pointer or a copy, Release when it ends or is
// assigned to. Assignment adds the reference before it releases the old one.
template <class Interface>
class STUDYSTATS_API DvoComPtr {
 public:
  DvoComPtr() noexcept = default;
  DvoComPtr(Interface* pointer) : pointer_(pointer) {
    if (pointer_ != nullptr) pointer_->AddRef();
  }
  DvoComPtr(const DvoComPtr& other) : DvoComPtr(other.pointer_) {}
  DvoComPtr(DvoComPtr&& other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}
  DvoComPtr& operator=(DvoComPtr other) noexcept {
    std::swap(pointer_, other.pointer_);
    return *this;
  }
  ~DvoComPtr() {
    if (pointer_ != nullptr) pointer_->Release();
  }

  Interface* get() const noexcept { return pointer_; }
  explicit operator bool() const noexcept { return pointer_ != nullptr; }
  Interface* operator->() const {  // raises E_POINTER when null
    CheckNullDereference(pointer_);
    return pointer_;
  }

 private:
  Interface* pointer_ = nullptr;
};

}  // namespace Dvo
