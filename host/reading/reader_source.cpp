// Files are read, not mapped: a file that another program shortens meanwhile would end the process, and standard input
// and pipes take the same road.
#include "host/reading/reader_source.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "host/files.h"

namespace studystats {
namespace {

constexpr std::size_t kBlock = std::size_t{4} << 20;  // read between two looks at the stop signal

[[noreturn]] void refuse(const std::string& path, int errorNumber) {
  throw BadTable(fmt::format("cannot read {}: {}.", shownFile(path), systemReason(errorNumber)),
                 {.file = shownFile(path)});
}

// An open file to read from, closed at the end unless it is standard input.
class InputFile {
 public:
  explicit InputFile(const std::string& path)
      : descriptor_(path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile() {
    if (descriptor_ > STDIN_FILENO) ::close(descriptor_);
  }
  int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

bool startsWith(std::string_view text, std::string_view bytes) { return text.substr(0, bytes.size()) == bytes; }

}  // namespace

void askForLargePages(void* memory, std::size_t size) {
  constexpr std::size_t kLargePage = std::size_t{2} << 20;
  if (std::align(kLargePage, kLargePage, memory, size))
    ::madvise(memory, size / kLargePage * kLargePage, MADV_HUGEPAGE);
}

std::string shownFile(const std::string& path) { return path == "-" ? "standard input" : path; }

FileText::FileText(const std::string& path, const Watch& watch) {
  const InputFile file(path);
  struct stat status {};
  if (file.descriptor() < 0 || ::fstat(file.descriptor(), &status) != 0) refuse(path, errno);
  if (S_ISDIR(status.st_mode)) refuse(path, EISDIR);
  const bool known = S_ISREG(status.st_mode) && status.st_size > 0;
  grow(known ? static_cast<std::size_t>(status.st_size) + 1 : kBlock,
       path);  // one more: the end is seen without growing
  readAll(file.descriptor(), path, watch);
}

void FileText::grow(std::size_t capacity, const std::string& path) {
  void* larger = std::realloc(buffer_.get(), capacity);
  if (!larger) throw OutOfMemory(fmt::format("{} does not fit into memory.", shownFile(path)));
  static_cast<void>(buffer_.release());
  buffer_.reset(static_cast<char*>(larger));
  capacity_ = capacity;
  askForLargePages(buffer_.get(), capacity);
}

void FileText::readAll(int descriptor, const std::string& path, const Watch& watch) {
  for (;;) {
    watch.check();
    if (size_ == capacity_) grow(2 * capacity_, path);
    const ssize_t n = ::read(descriptor, buffer_.get() + size_, std::min(kBlock, capacity_ - size_));
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) refuse(path, errno);
    if (n == 0) return;
    size_ += static_cast<std::size_t>(n);
  }
}

FilePieces::FilePieces(const std::string& path)
    : path_(path), descriptor_(path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
  struct stat status {};
  const bool opened = descriptor_ >= 0 && ::fstat(descriptor_, &status) == 0;
  const int reason = opened && S_ISDIR(status.st_mode) ? EISDIR : errno;
  if (!opened || S_ISDIR(status.st_mode)) {
    if (descriptor_ > STDIN_FILENO) ::close(descriptor_);
    refuse(path, reason);
  }
  if (S_ISREG(status.st_mode)) size_ = status.st_size;
}

FilePieces::~FilePieces() {
  if (descriptor_ > STDIN_FILENO) ::close(descriptor_);
}

std::string_view FilePieces::next() {
  buffer_.resize(std::size_t{1} << 20);
  for (;;) {
    const ssize_t n = ::read(descriptor_, buffer_.data(), buffer_.size());
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) refuse(path_, errno);
    return {buffer_.data(), static_cast<std::size_t>(n)};
  }
}

std::string_view tableText(std::string_view text, const std::string& file) {
  const Where where{.file = file};
  if (startsWith(text, "\xFF\xFE") || startsWith(text, "\xFE\xFF"))
    throw BadTable(fmt::format("{} is UTF-16 text. Save it as UTF-8.", file), where);
  if (startsWith(text, "PK\x03\x04"))
    throw BadTable(fmt::format("{} is a workbook or another archive, not a text file. Export the sheet as CSV.", file),
                   where);
  if (startsWith(text, "\x1F\x8B"))
    throw BadTable(fmt::format("{} is compressed. Unpack it first (gunzip).", file), where);
  if (startsWith(text, "\xEF\xBB\xBF")) text.remove_prefix(3);

  const std::size_t zero = text.find('\0');
  if (zero != text.npos) {
    const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(zero), '\n');
    throw BadTable(
        fmt::format("{}, line {}: a byte of 0. This is no table of text (UTF-16, perhaps, or a binary file).", file,
                    line),
        {.file = file, .line = line});
  }
  if (text.empty()) throw BadTable(fmt::format("{} is empty.", file), where);
  if (text.find_first_not_of(" \t\r\n") == text.npos)
    throw BadTable(fmt::format("{} is empty but for blank lines.", file), where);
  return text;
}

}  // namespace studystats
