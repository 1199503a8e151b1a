#include "cli/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace studystats::cli {
namespace {

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string_view() : value;
}

}  // namespace

bool standardErrorIsTerminal() { return isatty(STDERR_FILENO) == 1 && environment("TERM") != "dumb"; }

int terminalWidth() {
  winsize size{};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

bool useColor(When when) {
  if (when != When::Auto) return when == When::Always;
  return standardErrorIsTerminal() && environment("NO_COLOR").empty();
}

}  // namespace studystats::cli
