#include "cli/interrupt.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <initializer_list>

#include "cli/exit_status.h"

namespace studystats::cli::interrupt {
namespace {

volatile std::sig_atomic_t signals = 0;
volatile std::sig_atomic_t deferred = 0;
volatile std::sig_atomic_t lineOpen = 0;
int nothing = -1;  // /dev/null

void say(const char* text) {
  const auto ignored = ::write(STDERR_FILENO, text, std::strlen(text));
  static_cast<void>(ignored);
}

// Calls nothing but what a signal handler may call.
void onSignal(int) {
  signals = signals + 1;
  if (signals > 1 && deferred == 0) {
    say(lineOpen != 0 ? "\nstopped: nothing was written.\n" : "stopped: nothing was written.\n");
    _exit(kStopped);
  }
  // A signal interrupts a read that waits, but not one that begins a moment later: let that one find an end.
  if (nothing >= 0) dup2(nothing, STDIN_FILENO);
}

bool isIgnored(int signal) {
  struct sigaction now {};
  return sigaction(signal, nullptr, &now) == 0 && now.sa_handler == SIG_IGN;
}

void handle(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;  // without SA_RESTART: a waiting call returns
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
}

}  // namespace

void install() {
  nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
  for (const int signal : {SIGINT, SIGTERM})
    if (!isIgnored(signal)) handle(signal, onSignal);
  handle(SIGPIPE, SIG_IGN);
}

void release() {
  for (const int signal : {SIGINT, SIGTERM})
    if (!isIgnored(signal)) handle(signal, SIG_DFL);
  signals = 0;  // what comes too late to stop anything is no stop
}

bool requested() { return signals > 0; }

Deferred::Deferred() { deferred = 1; }
Deferred::~Deferred() { deferred = 0; }

void setLineOpen(bool open) { lineOpen = open ? 1 : 0; }

}  // namespace studystats::cli::interrupt
