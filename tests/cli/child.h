// The real command as a child process, and a folder of small tables for it.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <initializer_list>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace studystats::cli::test {

using Arguments = std::vector<std::string>;

// False in a root without pseudo-terminals (no /dev/pts).
bool terminalsCanBeHad();

// A temporary folder, the working directory of this process while it lives.
class Folder {
 public:
  Folder();
  ~Folder();
  const std::filesystem::path& path() const { return path_; }
  std::vector<std::string> files() const;  // every entry below it, sorted

 private:
  std::filesystem::path path_, before_;
};

void writeText(const std::filesystem::path& path, std::string_view text);
std::string readText(const std::filesystem::path& path);

// 12 rows: names, two classes written with a leading zero, three descriptors of which "c" misses a cell.
void writeFlowers(const std::filesystem::path& path);

class Child {
 public:
  enum class Output { Pipe, Closed, Terminal };
  // `input` is given to standard input, which then ends, unless `keepInput` leaves it open. `environment`:
  // "NAME=value".
  struct Setup {
    std::string input = {};
    bool keepInput = false;
    Output out = Output::Pipe;  // Closed: nobody reads any more
    Output err = Output::Pipe;  // Terminal: a pseudo-terminal
    std::vector<std::string> environment = {};
    const char* outFile = nullptr;  // in place of a pipe
  };
  explicit Child(const Arguments& arguments) : Child(arguments, Setup()) {}
  Child(const Arguments& arguments, const Setup& setup);
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child();

  void feed(std::string_view text) const;        // more standard input
  void waitUntilItCatches(int signal) const;     // has its own handler for it
  bool waitForError(std::string_view fragment);  // until it stands on standard error; false when it takes too long
  void send(int signal) const;

  int wait();  // exit status, or 1000 + signal; reaps the child
  const std::string& out() const { return out_; }
  const std::string& err() const { return err_; }

 private:
  void readAll(int descriptor, std::string& text);

  pid_t pid_ = -1;
  int status_ = -1;
  int in_ = -1;
  std::string out_, err_;
  std::mutex mutex_;
  std::vector<std::thread> readers_;
};

// The text on one line: where a sentence was broken depends on how long the paths in it are.
std::string unwrapped(std::string_view text);

// Runs the command to its end.
struct Outcome {
  int status;
  std::string out, err;
};
Outcome run(const Arguments& arguments, const Child::Setup& setup = Child::Setup());

}  // namespace studystats::cli::test
