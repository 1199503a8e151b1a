// Ctrl-C (SIGINT) and SIGTERM. The first asks to stop: the analysis does so at its next report, the reader at its next
// block, and a read that waits for standard input ends. The second ends the process at once with status 130.
#pragma once

namespace studystats::cli::interrupt {

// Takes the signals over; one that was ignored when the process began stays ignored. A closed pipe is no signal from
// here on, but an error of the write.
void install();

bool requested();

// While it lives, a second signal does not end the process either: temporary files are being written, and whoever
// writes them looks at requested() and cleans up.
class Deferred {
 public:
  Deferred();
  Deferred(const Deferred&) = delete;
  Deferred& operator=(const Deferred&) = delete;
  ~Deferred();
};

// Gives the signals back: from here on they end the process as they end any other.
void release();

// Whether a progress line stands on standard error without its end.
void setLineOpen(bool open);

// Something for the library's `stop`.
struct Token {
  bool stop_requested() const { return requested(); }
};

}  // namespace studystats::cli::interrupt
