// Writing a file whole or not at all: everything goes to a temporary file beside it, which then takes its name.
//
// A link is followed, so that the file it names is the one that changes. An existing file keeps its permissions, a new
// one gets those of the process's mask. What is no regular file (a pipe, a terminal, /dev/null) cannot be replaced and
// is written to directly.
#include "host/files.h"

#include <studystats/host/errors.h>
#include <studystats/host/output.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <system_error>

namespace studystats {

std::string systemReason(int errorNumber) {
  switch (errorNumber) {
    case ENOENT:
      return "there is no such file or folder";
    case EISDIR:
      return "it is a folder";
    case EACCES:
    case EPERM:
      return "permission is denied";
    case ENOTDIR:
      return "a part of its path is not a folder";
    case ENOSPC:
      return "the disk is full";
    case EROFS:
      return "the disk is read-only";
    case ENAMETOOLONG:
      return "the name is too long";
    default:
      return std::generic_category().message(errorNumber);
  }
}

namespace {

[[noreturn]] void refuse(const std::string& path, int errorNumber) {
  throw BadOptions(fmt::format("cannot write {}: {}.", path, systemReason(errorNumber)), {.file = path});
}

// An open file that is closed, and when it has a name of its own removed, unless it was kept.
class OutputFile {
 public:
  OutputFile(std::string name, int flags, mode_t mode)
      : name_(std::move(name)), descriptor_(::open(name_.c_str(), flags | O_WRONLY | O_CLOEXEC, mode)) {}
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
    if (temporary_) ::unlink(name_.c_str());
  }

  bool isOpen() const { return descriptor_ >= 0; }
  void removeUnlessRenamed() { temporary_ = true; }
  bool givePermissions(mode_t mode) const { return ::fchmod(descriptor_, mode) == 0; }

  bool write(std::string_view content) const {
    while (!content.empty()) {
      const ssize_t n = ::write(descriptor_, content.data(), content.size());
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) return false;
      content.remove_prefix(static_cast<std::size_t>(n));
    }
    return true;
  }

  bool close() {
    const int closed = ::close(descriptor_);
    descriptor_ = -1;
    return closed == 0;
  }

  bool renameTo(const std::string& target) {
    if (std::rename(name_.c_str(), target.c_str()) != 0) return false;
    temporary_ = false;
    return true;
  }

 private:
  std::string name_;
  int descriptor_;
  bool temporary_ = false;
};

// The file that a link leads to; the path itself when it leads nowhere yet.
std::string resolved(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
  return real ? real.get() : path;
}

std::string temporaryName(const std::string& target) {
  static std::atomic<unsigned> count{0};
  return fmt::format("{}.{}-{}.part", target, ::getpid(), count.fetch_add(1));
}

void writeDirectly(const std::string& path, std::string_view content) {
  OutputFile file(path, 0, 0);
  if (!file.isOpen() || !file.write(content) || !file.close()) refuse(path, errno);
}

void replaceWhole(const std::string& path, std::string_view content, const struct stat* existing) {
  const std::string target = resolved(path);
  OutputFile file(temporaryName(target), O_CREAT | O_EXCL, 0666);
  if (!file.isOpen()) refuse(path, errno);
  file.removeUnlessRenamed();
  if (existing && !file.givePermissions(existing->st_mode & 07777)) refuse(path, errno);
  if (!file.write(content) || !file.close() || !file.renameTo(target)) refuse(path, errno);
}

}  // namespace

void writeFile(const std::string& path, std::string_view content) {
  struct stat existing {};
  if (::stat(path.c_str(), &existing) != 0) return replaceWhole(path, content, nullptr);
  if (S_ISDIR(existing.st_mode)) refuse(path, EISDIR);
  if (!S_ISREG(existing.st_mode)) return writeDirectly(path, content);
  if (::access(path.c_str(), W_OK) != 0) refuse(path, errno);
  replaceWhole(path, content, &existing);
}

}  // namespace studystats
