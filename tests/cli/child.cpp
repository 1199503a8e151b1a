#include "tests/cli/child.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace studystats::cli::test {
namespace {

constexpr auto kPatience = std::chrono::seconds(60);  // a bound, not what it takes

std::array<int, 2> newPipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) std::abort();
  return ends;
}

std::array<int, 2> newTerminal() {
  std::array<int, 2> ends{};
  if (openpty(&ends[0], &ends[1], nullptr, nullptr, nullptr) != 0) std::abort();
  for (const int end : ends) fcntl(end, F_SETFD, FD_CLOEXEC);
  return ends;
}

}  // namespace

bool terminalsCanBeHad() {
  std::array<int, 2> ends{};
  if (openpty(&ends[0], &ends[1], nullptr, nullptr, nullptr) != 0) return false;
  for (const int end : ends) ::close(end);
  return true;
}

Folder::Folder() : before_(fs::current_path()) {
  std::string pattern = (fs::temp_directory_path() / "studystats-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) std::abort();
  path_ = pattern;
  fs::current_path(path_);
}

Folder::~Folder() {
  fs::current_path(before_);
  fs::remove_all(path_);
}

std::vector<std::string> Folder::files() const {
  std::vector<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(path_))
    names.push_back(fs::relative(entry, path_).string());
  std::sort(names.begin(), names.end());
  return names;
}

void writeText(const fs::path& path, std::string_view text) { std::ofstream(path, std::ios::binary) << text; }

std::string readText(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void writeFlowers(const fs::path& path) {
  std::string text = "name,kind,a,b,c\n";
  const char* const cells[] = {"5.1,3.5,1.4", "4.9,3.0,1.4", "4.7,3.2,1.3", "4.6,3.1,",
                               "5.0,3.6,1.4", "5.4,3.9,1.7", "7.0,3.2,4.7", "6.4,3.2,4.5",
                               "6.9,3.1,4.9", "5.5,2.3,4.0", "6.5,2.8,4.6", "5.7,2.8,4.5"};
  for (int i = 0; i < 12; ++i) {
    text += "flower " + std::to_string(i + 1) + (i < 6 ? ",01," : ",02,") + cells[i] + '\n';
  }
  writeText(path, text);
}

Child::Child(const Arguments& arguments, const Setup& setup) {
  const auto in = newPipe(), out = newPipe();
  const auto err = setup.err == Output::Terminal ? newTerminal() : newPipe();
  Arguments all{STUDYSTATS_COMMAND};
  all.insert(all.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& argument : all) argv.push_back(argument.data());
  argv.push_back(nullptr);

  pid_ = fork();
  if (pid_ == 0) {
    std::signal(SIGPIPE, SIG_DFL);  // what is ignored here would stay so there
    dup2(in[0], STDIN_FILENO);
    dup2(setup.outFile != nullptr ? open(setup.outFile, O_WRONLY) : out[1], STDOUT_FILENO);
    dup2(err[1], STDERR_FILENO);
    for (const std::string& variable : setup.environment) putenv(const_cast<char*>(variable.c_str()));
    execv(argv[0], argv.data());
    _exit(127);
  }
  close(in[0]);
  close(out[1]);
  close(err[1]);
  in_ = in[1];
  std::signal(SIGPIPE, SIG_IGN);
  if (setup.out == Output::Closed)
    close(out[0]);
  else
    readers_.emplace_back([this, end = out[0]] { readAll(end, out_); });
  readers_.emplace_back([this, end = err[0]] { readAll(end, err_); });
  feed(setup.input);
  if (!setup.keepInput) {
    close(in_);
    in_ = -1;
  }
}

void Child::readAll(int descriptor, std::string& text) {
  std::array<char, 4096> block;
  for (ssize_t n; (n = ::read(descriptor, block.data(), block.size())) > 0;) {
    const std::lock_guard lock(mutex_);
    text.append(block.data(), static_cast<std::size_t>(n));
  }
  close(descriptor);
}

Child::~Child() {
  if (status_ < 0) {
    kill(pid_, SIGKILL);
    wait();
  }
}

void Child::feed(std::string_view text) const {
  while (!text.empty()) {
    const ssize_t n = ::write(in_, text.data(), text.size());
    if (n <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(n));
  }
}

void Child::waitUntilItCatches(int signal) const {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (std::chrono::steady_clock::now() < end) {
    std::ifstream file("/proc/" + std::to_string(pid_) + "/status");
    for (std::string line; std::getline(file, line);)
      if (line.starts_with("SigCgt:") && ((std::stoull(line.substr(7), nullptr, 16) >> (signal - 1)) & 1u) != 0) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  ADD_FAILURE() << "the command never takes signal " << signal << " over";
}

bool Child::waitForError(std::string_view fragment) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (std::chrono::steady_clock::now() < end) {
    {
      const std::lock_guard lock(mutex_);
      if (err_.find(fragment) != std::string::npos) return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return false;
}

void Child::send(int signal) const { kill(pid_, signal); }

int Child::wait() {
  int status = 0;
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (waitpid(pid_, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > end) kill(pid_, SIGKILL);
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  if (in_ >= 0) close(in_);
  for (std::thread& reader : readers_) reader.join();
  readers_.clear();
  status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  return status_;
}

std::string unwrapped(std::string_view text) {
  std::string line;
  for (const char c : text) {
    const bool blank = c == ' ' || c == '\n';
    if (!blank || (!line.empty() && line.back() != ' ')) line += blank ? ' ' : c;
  }
  return line;
}

Outcome run(const Arguments& arguments, const Child::Setup& setup) {
  Child child(arguments, setup);
  const int status = child.wait();
  return {status, child.out(), child.err()};
}

}  // namespace studystats::cli::test
