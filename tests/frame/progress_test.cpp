#include <gtest/gtest.h>
#include <studystats/frame.h>

#include <climits>

#include "tests/frame/counting_host.h"

namespace {

struct Position {
  std::int32_t minor, minorCount, major, majorCount;
};

ProgressMonitor at(const Position& p, ISBProgressMonitor* host) {
  ProgressMonitor progress;
  progress.monitor = host;
  progress.minorIteration = p.minor;
  progress.minorIterationCount = p.minorCount;
  progress.majorIteration = p.major;
  progress.majorIterationCount = p.majorCount;
  return progress;
}

TEST(Progress, PercentagesAreTruncatedAndHeldWithinTenToHundredOnlyWithoutCounts) {
  // Worked by hand from ((minor / minorCount + major) / majorCount) * 90 + 10.
  const struct {
    Position position;
    std::int32_t percent;
  } kRows[] = {
      {{0, 5, 0, 1}, 10},
      {{5, 5, 0, 1}, 100},
      {{1, 2, 1, 3}, 55},
      {{1, 7, 0, 1}, 22},  // 22.857...
      {{6, 7, 0, 1}, 87},  // 87.142...
      {{0, 1, 3, 3}, 100},
      {{7, 5, 0, 1}, 136},  // past the end
      {{3, 2, 0, 1}, 145},
      {{2, 2, 3, 3}, 130},
      {{-1, 5, 0, 1}, -8},  // before the start
      {{INT_MAX, 1, INT_MAX, 1}, INT_MAX},
      {{INT_MIN, 1, INT_MIN, 1}, INT_MIN},
      {{INT_MAX, INT_MAX, INT_MAX, INT_MAX}, 100},  // (1 + 2^31 - 1) / (2^31 - 1), just above 1
      {{0, 0, 0, 1}, 10},                           // not a number
      {{1, 0, 0, 1}, 100},                          // infinite
      {{1, 5, 0, 0}, 100},
      {{0, 5, 0, 0}, 10},
      {{3, -5, 0, 1}, 10},
      {{INT_MIN, INT_MIN, INT_MIN, INT_MIN}, 99},  // (1 - 2^31) / -2^31, just below 1
      {{INT_MIN, 1, INT_MAX, 0}, 10},              // -1 / 0
      {{9, 5, 3, -1}, 10},
      {{9, -5, -3, 1}, 10},
  };
  for (const auto& row : kRows) {
    const Position& p = row.position;
    SCOPED_TRACE(testing::Message() << p.minor << " of " << p.minorCount << ", " << p.major << " of " << p.majorCount);
    CountingHost host;
    bool goOn = false;
    at(p, &host).UpdateProgress(goOn);
    ASSERT_EQ(host.reports.size(), 1u);
    EXPECT_EQ(host.reports[0].percent, row.percent);
    EXPECT_EQ(host.reports[0].maximum, 100);
    EXPECT_TRUE(goOn);
  }
}

TEST(Progress, OnlyAnAnswerOfVariantTrueGoesOnAndOnlyANegativeResultRaises) {
  for (const std::optional<VARIANT_BOOL> answer : {std::optional<VARIANT_BOOL>(-1), {1}, {0}, {0x7FFF}, {}})
    for (const HRESULT result : {S_OK, S_FALSE, HRESULT(0x00040001), HRESULT(E_FAIL), HRESULT(INT_MIN)}) {
      SCOPED_TRACE(testing::Message() << "answer " << (answer ? *answer : 99) << ", result " << result);
      CountingHost host;
      host.answer = answer;
      host.result = result;
      ProgressMonitor progress = at({1, 2, 0, 1}, &host);
      progress.SetStatusText("a text that is too long to stand inside a string object, so that losing it shows");
      Dvo::DvoResult::SetLastError(7);
      int flag = -5;
      unsigned int raised = 0;
      try {
        EXPECT_EQ(UpdateMinorProgress(&progress, 1, 2, &flag), 0);
      } catch (const Dvo::DvoResult& error) {
        raised = error.Code();
      }
      EXPECT_EQ(raised, result < 0 ? unsigned(result) : 0u);
      EXPECT_EQ(flag, result < 0 || answer == VARIANT_TRUE ? 1 : 0);
      EXPECT_EQ(Dvo::DvoResult::LastError().Code(), result == S_OK ? 7u : unsigned(result));
    }
}

TEST(Progress, StatusTextTravelsAsUtf16AndAnEmptyOneAsAnEmptyVariant) {
  CountingHost host;
  ProgressMonitor progress = at({0, 4, 0, 1}, &host);
  bool goOn;
  progress.UpdateProgress(goOn);
  progress.SetStatusText("Größe 50 µM \xF0\x9F\x98\x80");
  progress.UpdateMinorProgress(2, goOn);
  EXPECT_EQ(host.reports[0], (CountingHost::Report{10, 100, VT_EMPTY, u""}));
  EXPECT_EQ(host.reports[1], (CountingHost::Report{55, 100, VT_BSTR, u"Größe 50 µM \U0001F600"}));
}

TEST(Progress, MajorPositionPutsTheMinorOneBackToZeroAndKeepsItsCount) {
  CountingHost host;
  ProgressMonitor progress = at({4, 5, 0, 3}, &host);
  int flag = 0;
  EXPECT_EQ(UpdateMajorProgress(&progress, 2, 4, &flag), 0);
  EXPECT_EQ(progress.minorIteration, 0);
  EXPECT_EQ(progress.minorIterationCount, 5);
  EXPECT_EQ(progress.majorIteration, 2);
  EXPECT_EQ(progress.majorIterationCount, 4);
  EXPECT_EQ(host.reports[0].percent, 55);
}

TEST(Progress, CallbacksGoOnWithoutMonitorOrHostAndPassTheHostsStopBack) {
  ProgressMonitor* monitor = nullptr;
  const std::int32_t current = 3, count = 6;
  for (auto* callback : {&updateminorprogress, &updatemajorprogress}) {
    std::int32_t flag = -5;
    monitor = nullptr;
    EXPECT_EQ(callback(&monitor, &current, &count, &flag), 0);
    EXPECT_EQ(flag, 1);

    CountingHost host;
    ProgressMonitor silent;
    monitor = &silent;
    flag = -5;
    EXPECT_EQ(callback(&monitor, &current, &count, &flag), 0);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(silent.minorIteration + silent.majorIteration, 3);
    EXPECT_EQ(silent.minorIterationCount + silent.majorIterationCount, 7);

    host.answer = 1;
    silent.monitor = &host;
    EXPECT_EQ(callback(&monitor, &current, &count, &flag), 0);
    EXPECT_EQ(flag, 0);
  }
  for (const int id : {0, 1, -1, INT_MIN, INT_MAX}) EXPECT_EQ(ID2MessageString(id), nullptr);
}

TEST(Progress, EveryReferenceOnTheHostIsCounted) {
  std::string log;
  CountingHost a, b;
  a.name = "a", b.name = "b";
  a.log = b.log = &log;
  const auto events = [&log] { return std::exchange(log, {}); };
  {
    ProgressMonitor first;
    Dvo::DvoComPtr<ISBProgressMonitor> pointer(&a);
    events();
    first.SetProgressMonitor(std::move(pointer));  // takes the reference over
    EXPECT_EQ(events(), "");
    EXPECT_FALSE(pointer);
    first.SetProgressMonitor(Dvo::DvoComPtr<ISBProgressMonitor>(&b));
    EXPECT_EQ(events(), "+b -a ");

    first.SetStatusText("text");
    first.SetMajorIterationCount(9);
    ProgressMonitor second(first);
    EXPECT_EQ(events(), "+b ");
    EXPECT_EQ(second.statusText, "text");
    second.SetProgressMonitor(Dvo::DvoComPtr<ISBProgressMonitor>(&a));
    events();
    second = first;
    EXPECT_EQ(events(), "+b -a ");
    EXPECT_EQ(second.majorIterationCount, 9);
    const ProgressMonitor& itself = second;
    second = itself;
    EXPECT_EQ(events(), "+b -b ");

    bool goOn;
    second.UpdateMinorProgress(1, goOn);
    b.result = HRESULT(E_FAIL);
    EXPECT_THROW(second.UpdateMinorProgress(1, goOn), Dvo::DvoResult);
    EXPECT_EQ(events(), "+b -b +b -b ");  // one for the length of each call
  }
  EXPECT_EQ(events(), "-b -b ");
  EXPECT_EQ(a.references, 1u);
  EXPECT_EQ(b.references, 1u);
}

TEST(Progress, AHostThatIsTakenOffInItsOwnReportOutlivesTheReport) {
  CountingHost host, next;
  ProgressMonitor progress = at({1, 2, 0, 1}, &host);
  progress.SetStatusText("text");
  host.result = HRESULT(E_FAIL);
  for (CountingHost* other : {static_cast<CountingHost*>(nullptr), &next}) {
    progress.monitor = &host;
    host.during = [&] {
      progress.monitor = other;
      EXPECT_EQ(host.references, 2u);  // the test's own, and the bridge's
    };
    bool goOn;
    EXPECT_THROW(progress.UpdateProgress(goOn), Dvo::DvoResult);
    EXPECT_EQ(host.references, 1u);
  }
  EXPECT_TRUE(next.reports.empty());
}

}  // namespace
