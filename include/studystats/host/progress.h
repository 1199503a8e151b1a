// Progress and stopping.
#pragma once

#include <studystats/host/errors.h>

#include <cstdint>
#include <functional>
#include <string>

namespace studystats {

struct Progress {
  double percent = 0;      // of the whole, never less than in the report before
  std::int64_t done = 0;   // of this stage
  std::int64_t total = 0;  // of this stage
  std::string stage;       // "reading", "analysis", ...
  std::string text;        // for people
};

// Called on the caller's thread, at least once before the work and once at 100 percent. False stops at this report;
// what the callback throws passes through unchanged.
using ProgressCallback = std::function<bool(const Progress&)>;

// Another way to stop: anything that answers stop_requested(), such as a std::stop_token. Looked at wherever progress
// is reported, and while a file is read.
class StopSignal {
 public:
  StopSignal() = default;
  template <class Token>
  requires requires(const Token& token) { static_cast<bool>(token.stop_requested()); }
  StopSignal(Token token)  // NOLINT(google-explicit-constructor): options.stop = source.get_token()
      : asked_([token] { return static_cast<bool>(token.stop_requested()); }) {}
  bool stop_requested() const { return asked_ && asked_(); }

 private:
  std::function<bool()> asked_;
};

}  // namespace studystats
