#include <gtest/gtest.h>
#include <studystats/host_framework.h>

#include <iomanip>
#include <locale>
#include <thread>

#include "frame/exception_translation.h"
#include "tests/frame/counting_host.h"

namespace {

using namespace std::string_literals;

std::u16string converted(const std::string& text) {
  const Dvo::DvoBSTR holder = text;
  return {holder.Text(), OxaExports::SysStringLen(holder.Text())};
}

TEST(Strings, IllFormedTextBecomesReplacementCharacters) {
  const std::u16string r2 = u"\uFFFD\uFFFD", r4 = r2 + r2, r8 = r4 + r4;
  const struct {
    std::string bytes;
    std::u16string text;
  } kRows[] = {
      // The Unicode Standard, version 15, section 3.9, tables 3-8 to 3-11, and the example before them.
      {"\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41", r8 + u"A"},
      {"\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41", r8 + u"A"},
      {"\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42", r4 + u"\uFFFDA" + r2 + u"B"},
      {"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", r4 + u"A"},
      {"a\xF1\x80\x80\xE1\x80\xC2"s + "b\x80"s + "c\x80\xBF"s + "d", u"a" + r2 + u"\uFFFDb\uFFFDc" + r2 + u"d"},
      // Ends in the middle; the borders of what is well-formed (its table 3-7); a zero inside.
      {"\xF0\x9F\x98", u"\uFFFD"},
      {"\xC3", u"\uFFFD"},
      {"\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", u"\u0080\u07FF\u0800\uD7FF\uE000\uFFFF"},
      {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", u"\U00010000\U0010FFFF"},
      {"a\0b"s, u"a\0b"s},
      {"", u""},
  };
  for (const auto& row : kRows) EXPECT_EQ(converted(row.bytes), row.text) << testing::PrintToString(row.bytes);
  EXPECT_EQ(converted(std::string(100000, '\xFF')), std::u16string(100000, u'\uFFFD'));
}

TEST(Strings, HoldersShareOneTextAndVariantsOwnACopy) {
  Dvo::DvoVariant value;
  {
    const Dvo::DvoBSTR first("first, and long enough to be on the heap");
    Dvo::DvoBSTR second("second");
    second = first;
    second = Dvo::DvoBSTR(second);
    EXPECT_EQ(second.Text(), first.Text());
    value.Set(first);
    value.Set(second);
    EXPECT_NE(value.Value().bstrVal, first.Text());
    EXPECT_EQ(first.Text()[40], u'\0');
  }
  EXPECT_EQ(value.Value().vt, VT_BSTR);
  EXPECT_EQ(std::u16string(value.Value().bstrVal), u"first, and long enough to be on the heap");
  value.Clear();
  value.Clear();
  EXPECT_EQ(value.Value().vt, VT_EMPTY);

  const auto* data = new Dvo::DvoBSTR::BSTRData("held alone");
  data->Release();
  OxaExports::SysFreeString(nullptr);
  EXPECT_EQ(OxaExports::SysAllocStringLen(u"", SIZE_MAX / 2), nullptr);
}

// An interface whose Release raises what it is told to.
struct RaisingInterface final : IUnknown {
  void (*raise)() = [] {};
  int released = 0;
  HRESULT QueryInterface(const GUID&, void**) override { return S_FALSE; }
  std::uint32_t AddRef() override { return 1; }
  std::uint32_t Release() override {
    ++released;
    raise();
    return 1;
  }
};

const struct {
  void (*raise)();
  unsigned int code;
  std::string description;
} kRaised[] = {
    {[] { throw Dvo::DvoResult(5, "five", Dvo::LastDescription::Action(0)); }, 5, "five"},
    {[] { throw 0x80070057u; }, E_INVALIDARG, Dvo::DvoResult::StandardDescription(E_INVALIDARG).Description()},
    {[] { throw std::bad_alloc(); }, E_OUTOFMEMORY, std::bad_alloc().what()},
    {[] { throw std::range_error("out of it"); }, E_FAIL, "out of it"},
    {[] { throw "a text"; }, E_FAIL, "Internal Error"},
    {[] { throw 3; }, E_FAIL, "Internal Error"},
};

TEST(Variants, ClearingReleasesWhatIsOwnedOnceAndNeverRaises) {
  for (const VARTYPE type : {VT_UNKNOWN, VT_DISPATCH})
    for (const auto& row : kRaised) {
      RaisingInterface object;
      object.raise = row.raise;
      VARIANT raw{};
      raw.vt = type;
      raw.punkVal = &object;
      {
        Dvo::DvoVariant value(raw);
        value.Clear();
        EXPECT_EQ(value.Value().vt, VT_EMPTY);
      }
      EXPECT_EQ(object.released, 1);
    }

  RaisingInterface object;
  for (const int type : {VT_UNKNOWN | VT_BYREF, VT_BSTR | VT_BYREF, VT_R8 | VT_ARRAY, VT_I4 + 0, VT_BOOL + 0}) {
    VARIANT raw{};
    raw.vt = static_cast<VARTYPE>(type);
    raw.byref = &object;
    Dvo::DvoVariant(raw).Clear();  // neither owned nor touched
    EXPECT_EQ(OxaExports::VariantClear(&raw), S_OK);
    EXPECT_EQ(raw.vt, VT_EMPTY);
  }
  VARIANT null{};
  null.vt = VT_UNKNOWN;
  null.punkVal = nullptr;
  Dvo::DvoVariant(null).Clear();
  EXPECT_EQ(object.released, 0);
}

TEST(Errors, WhateverIsRaisedBecomesOneErrorObject) {
  for (const auto& row : kRaised) try {
      row.raise();
    } catch (...) {
      const Dvo::DvoResult result = studystats::core::translateCurrentException();
      EXPECT_EQ(result.Code(), row.code);
      EXPECT_EQ(result.Description(), row.description);
    }
}

TEST(Errors, CarryCodeSentenceAndActionThroughACatchByBaseClass) {
  try {
    throw Dvo::DvoResult(E_INVALIDARG, "Invalid argument to X", Dvo::LastDescription::Action(0));
  } catch (const std::exception& error) {
    EXPECT_STREQ(error.what(), "Invalid argument to X");
    const auto& result = dynamic_cast<const Dvo::DvoResult&>(error);
    EXPECT_EQ(result.Code(), 0x80070057u);
    EXPECT_EQ(result.Action(), 0);
  }
  static_assert(std::is_nothrow_copy_constructible_v<Dvo::DvoResult>);
  const Dvo::DvoComPtr<ISBProgressMonitor> nobody;
  EXPECT_THROW(nobody.operator->(), Dvo::DvoResult);
}

TEST(Errors, TheLastOneBelongsToItsThread) {
  Dvo::DvoResult::SetLastError(E_UNEXPECTED);
  unsigned int elsewhere = 1;
  std::thread([&elsewhere] { elsewhere = Dvo::DvoResult::LastError().Code(); }).join();
  EXPECT_EQ(elsewhere, 0u);
  EXPECT_EQ(Dvo::DvoResult::LastError().Code(), E_UNEXPECTED);
}

TEST(Format, PlaceholdersAreFilledOnceAndNeverLookedForInAnArgument) {
  const struct {
    const char* format;
    std::vector<std::string> arguments;
    const char* text;
  } kRows[] = {
      {"%1%2 * %3", {" + ", "1", "50 %2 conc"}, " + 1 * 50 %2 conc"},
      {"%2 before %1", {"%2", "%1"}, "%1 before %2"},
      {"%1 (%2)", {"100%"}, "100% (%2)"},  // never filled: stays
      {"%1 and %1", {"twice", "too many"}, "twice and twice"},
      {"%% %0 %x %10 %", {"one"}, "%% %0 %x one0 %"},  // only %1 ... %9 are placeholders
      {"%%1", {"one"}, "%one"},
      {"", {"one"}, ""},
  };
  for (const auto& row : kRows) {
    Dvo::DvoFormat format(row.format);
    for (const auto& argument : row.arguments) format << argument;
    EXPECT_EQ(std::string(format), row.text);
  }
}

TEST(Format, IntegersOfEveryTypeAreNumbers) {
  enum Kind : std::uint8_t { kSome = 200 };
  Dvo::DvoFormat format = "%1 %2 %3 %4 %5 %6 %7 %8 %9"s;
  format << std::int8_t{-7} << std::uint8_t{65} << short{-3} << 4000000000u << -5L << UINT64_MAX << -9LL << 12ULL
         << kSome;
  EXPECT_EQ(std::string(format), "-7 65 -3 4000000000 -5 18446744073709551615 -9 12 200");
}

TEST(Format, NumbersFollowTheStreamAndNotTheGlobalLocale) {
  struct Continental : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Continental));
  Dvo::DvoFormat format("%1 %2 %3 %4");
  format << 1234567.5 << std::int64_t{-1234567};
  format.Stream() << std::fixed << std::setprecision(2) << std::showpos;
  format << 1234.5 << "a"s;
  const std::string text = format;
  std::locale::global(before);
  EXPECT_EQ(text, "1.23457e+06 -1234567 +1234.50 a");
}

}  // namespace
