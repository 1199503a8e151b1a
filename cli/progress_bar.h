// Progress on standard error:
//
//   pca  reading wine.csv  [=========>            ]  43 %   0:12 left
//
// or, for programs, one JSON object a line. The line is drawn at most ten times a second, begins after a moment so that
// a short run shows nothing, and is erased at the end.
#pragma once

#include <studystats/host.h>

#include <chrono>
#include <string>

#include "cli/value_names.h"

namespace studystats::cli {

class ProgressBar {
 public:
  ProgressBar(std::string command, When when, bool quiet);
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar() { erase(); }

  // The reports that follow make the part from `from` to `to` percent of the whole.
  void part(double from, double to);
  void show(const Progress& progress);
  void erase();

 private:
  using Clock = std::chrono::steady_clock;
  void showJson(const Progress& progress, double percent);
  void draw(const Progress& progress, double percent);
  std::string timeLeft(double percent) const;

  std::string command_;
  enum class Form { None, Bar, Json } form_;
  bool atOnce_;
  Clock::time_point start_ = Clock::now();
  Clock::time_point drawn_{};
  double from_ = 0;
  double to_ = 100;
  int lastPercent_ = -1;  // reported as JSON
  std::string lastStage_;
  std::size_t textWidth_ = 0;  // the widest text so far: the bar keeps its place
  std::size_t onScreen_ = 0;   // columns to erase
};

}  // namespace studystats::cli
