#include "cli/progress_bar.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "cli/interrupt.h"
#include "cli/messages.h"
#include "cli/outputs.h"
#include "cli/terminal.h"

namespace studystats::cli {
namespace {

constexpr auto kBeforeFirst = std::chrono::milliseconds(300);
constexpr auto kBetween = std::chrono::milliseconds(100);
constexpr std::size_t kWidestBar = 26;
constexpr std::size_t kLongestText = 40;

std::string jsonString(std::string_view text) {
  std::string escaped = "\"";
  for (const char c : printable(text)) {
    if (c == '"' || c == '\\') escaped += '\\';
    escaped += c == '\n' ? ' ' : c;
  }
  return escaped + '"';
}

}  // namespace

ProgressBar::ProgressBar(std::string command, When when, bool quiet)
    : command_(std::move(command)), form_(Form::None), atOnce_(when == When::Always) {
  if (when == When::Json) form_ = Form::Json;
  if (when == When::Always || (when == When::Auto && !quiet && standardErrorIsTerminal())) form_ = Form::Bar;
}

void ProgressBar::part(double from, double to) {
  from_ = from;
  to_ = to;
}

void ProgressBar::show(const Progress& progress) {
  const double percent = from_ + (to_ - from_) * std::clamp(progress.percent, 0.0, 100.0) / 100;
  if (form_ == Form::Json) showJson(progress, percent);
  if (form_ != Form::Bar) return;
  const auto now = Clock::now();
  if (now - drawn_ < kBetween || (!atOnce_ && now - start_ < kBeforeFirst)) return;
  drawn_ = now;
  draw(progress, percent);
}

// A line where the whole percent or the stage is another than before: a fast analysis does not flood its reader.
void ProgressBar::showJson(const Progress& progress, double percent) {
  if (static_cast<int>(percent) == lastPercent_ && progress.stage == lastStage_) return;
  lastPercent_ = static_cast<int>(percent);
  lastStage_ = progress.stage;
  const std::string line = fmt::format(
      "{{\"command\": {}, \"stage\": {}, \"text\": {}, \"percent\": {:.1f}, \"done\": {}, \"total\": {}}}\n",
      jsonString(command_), jsonString(progress.stage), jsonString(progress.text), percent, progress.done,
      progress.total);
  writeAll(STDERR_FILENO, line);
}

void ProgressBar::draw(const Progress& progress, double percent) {
  std::string text = printable(progress.text.empty() ? progress.stage : progress.text);
  std::replace(text.begin(), text.end(), '\n', ' ');
  if (text.size() > kLongestText) text = "..." + text.substr(text.size() - kLongestText + 3);
  textWidth_ = std::max(textWidth_, text.size());
  std::string line = fmt::format("{}  {:{}}  ", command_, text, textWidth_);
  const std::string end = fmt::format("{:3.0f} %  {:>5}", percent, timeLeft(percent));
  const auto width = static_cast<std::size_t>(terminalWidth() - 1);
  const std::size_t room = width > line.size() + end.size() + 4 ? width - line.size() - end.size() - 4 : 0;
  if (const std::size_t bar = std::min(room, kWidestBar); bar >= 5) {
    const auto done = static_cast<std::size_t>(percent / 100 * static_cast<double>(bar - 1));
    line += fmt::format("[{}>{}]  ", std::string(done, '='), std::string(bar - 1 - done, ' '));
  }
  line = (line + end).substr(0, width);
  const std::size_t shown = line.size();
  if (shown < onScreen_) line.append(onScreen_ - shown, ' ');
  onScreen_ = shown;
  interrupt::setLineOpen(true);
  writeAll(STDERR_FILENO, '\r' + line);
}

// "0:12 left", once there is enough to judge by.
std::string ProgressBar::timeLeft(double percent) const {
  const double elapsed = std::chrono::duration<double>(Clock::now() - start_).count();
  if (elapsed < 1 || percent < 1 || percent >= 100) return {};
  const long long seconds = std::llround(elapsed * (100 - percent) / percent);
  const long long hours = seconds / 3600, minutes = seconds / 60 % 60;
  if (hours > 0) return fmt::format("{}:{:02}:{:02} left", hours, minutes, seconds % 60);
  return fmt::format("{}:{:02} left", minutes, seconds % 60);
}

void ProgressBar::erase() {
  if (onScreen_ == 0) return;
  writeAll(STDERR_FILENO, '\r' + std::string(onScreen_, ' ') + '\r');
  onScreen_ = 0;
  interrupt::setLineOpen(false);
}

}  // namespace studystats::cli
