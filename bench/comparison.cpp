// Times the contenders of each case in turns and prints their ratios.

#include "bench/comparison.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <ostream>
#include <regex>
#include <utility>

namespace studystats::bench {
namespace {

constexpr double kSecondsPerCase = 4.0;
constexpr int kFewestRounds = 5;  // but for a case that is slower still
constexpr double kMostSecondsPerCase = 30.0;
constexpr double kShortestBatch = 1e-3;  // runs that are shorter are timed several together

struct Case {
  std::string name;
  std::function<Comparison()> make;
  std::string otherName;
};

std::vector<Case>& cases() {
  static std::vector<Case> all;
  return all;
}

// Processor time: while other programs have their turn, this clock stands still.
double secondsSoFar() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double secondsOf(const Contender& contender, int runs) {
  if (contender.prepare) contender.prepare();
  const double start = secondsSoFar();
  for (int k = 0; k < runs; ++k) contender.run();
  return secondsSoFar() - start;
}

// The best time of one contender so far. What must be prepared is timed run by run, the rest in batches.
struct Best {
  const Contender& contender;
  int batch = 1;
  double seconds = std::numeric_limits<double>::infinity();

  explicit Best(const Contender& measured) : contender(measured) {
    if (!contender.run) return;
    const double first = secondsOf(contender, 1);
    if (!contender.prepare) batch = static_cast<int>(std::clamp(kShortestBatch / first, 1.0, 10000.0));
  }
  void round() {
    if (contender.run) seconds = std::min(seconds, secondsOf(contender, batch) / batch);
  }
};

std::string format(const char* pattern, double value) {
  char text[64];
  std::snprintf(text, sizeof text, pattern, value);
  return text;
}

std::string row(const std::vector<std::string>& cells) {
  static constexpr int kWidths[] = {-38, 11, 13, 7, 6, 0};
  std::string line;
  for (std::size_t k = 0; k < cells.size(); ++k) {
    char text[128];
    std::snprintf(text, sizeof text, "%*s", kWidths[k], cells[k].c_str());
    line += (k == 0 ? "" : "  ") + std::string(text);
  }
  return line + '\n';
}

bool compare(std::ostream& out, const Case& named) {
  const Comparison comparison = named.make();
  Best ours(comparison.ours), definition(comparison.definition), other(comparison.other);
  const double start = secondsSoFar();
  const auto elapsed = [start] { return secondsSoFar() - start; };
  for (int k = 0; elapsed() < (k < kFewestRounds ? kMostSecondsPerCase : kSecondsPerCase); ++k) {
    ours.round();
    definition.round();
    other.round();
  }
  const bool same = comparison.sameBits();
  out << row({named.name, format("%.4f ms", 1e3 * ours.seconds), format("%.4f ms", 1e3 * definition.seconds),
              format("%.2f", definition.seconds / ours.seconds), same ? "yes" : "NO",
              comparison.other.run ? named.otherName + format(" %.4f ms: ", 1e3 * other.seconds) +
                                         format("%.2f", other.seconds / ours.seconds)
                                   : ""});
  return same;
}

void registerContender(const Case& named, const std::string& name, Contender Comparison::*member) {
  const auto run = [&named, member](benchmark::State& state) {
    const Comparison comparison = named.make();
    const Contender& contender = comparison.*member;
    for ([[maybe_unused]] auto iteration : state) {
      if (contender.prepare) {
        state.PauseTiming();
        contender.prepare();
        state.ResumeTiming();
      }
      contender.run();
    }
  };
  benchmark::RegisterBenchmark((named.name + '/' + name).c_str(), run)->Unit(benchmark::kMillisecond);
}

// Ratios from a machine that is busy with other work are not to be trusted.
std::string load() {
  double average = 0.0;
  return getloadavg(&average, 1) == 1 ? format("%.2f", average) : "unknown";
}

const char* instructionSet() {
#if defined(STUDYSTATS_ONE_VERSION) || !defined(__x86_64__) || defined(__clang__)
  return "one version";
#else
  __builtin_cpu_init();
  if (__builtin_cpu_supports("x86-64-v4")) return "x86-64-v4 (AVX-512)";
  if (__builtin_cpu_supports("x86-64-v3")) return "x86-64-v3 (AVX2)";
  return "baseline";
#endif
}

}  // namespace

Registration::Registration(const std::string& name, std::function<Comparison()> make, const std::string& otherName) {
  cases().push_back({name, std::move(make), otherName});
}

void registerBenchmarks() {
  for (const Case& named : cases()) {
    registerContender(named, "ours", &Comparison::ours);
    registerContender(named, "definition", &Comparison::definition);
    if (!named.otherName.empty()) registerContender(named, named.otherName, &Comparison::other);
  }
}

bool printComparisons(std::ostream& out, const std::string& pattern) {
  out << "\nBest of many, in turns. Instruction set: " << instructionSet() << ". Load of the machine: " << load()
      << "\n\n"
      << row({"case", "ours", "definition", "ratio", "bits", "another library: its time over ours"});
  bool same = true;
  for (const Case& named : cases())
    if (pattern.empty() || std::regex_search(named.name, std::regex(pattern))) same = compare(out, named) && same;
  return same;
}

bool sameBits(const Numbers& a, const Numbers& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](double x, double y) {
    return std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y);
  });
}

}  // namespace studystats::bench
