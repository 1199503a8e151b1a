// The text of a table, wherever it comes from.
#pragma once

#include <studystats/host/table.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "host/watch.h"

namespace studystats {

// A whole file in one buffer.
class FileText {
 public:
  // "-" is standard input. Throws BadTable when the file cannot be read, OutOfMemory, Stopped.
  FileText(const std::string& path, const Watch& watch);
  std::string_view text() const { return {buffer_.get(), size_}; }

 private:
  struct Free {
    void operator()(char* p) const { std::free(p); }
  };
  void grow(std::size_t capacity, const std::string& path);
  void readAll(int descriptor, const std::string& path, const Watch& watch);

  std::unique_ptr<char, Free> buffer_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

// A file that is read piece by piece.
class FilePieces {
 public:
  explicit FilePieces(const std::string& path);  // "-" is standard input; throws BadTable when it cannot be opened
  FilePieces(const FilePieces&) = delete;
  FilePieces& operator=(const FilePieces&) = delete;
  ~FilePieces();
  std::string_view next();                     // valid until the next call; empty at the end
  std::int64_t size() const { return size_; }  // of a regular file; 0 when nobody knows

 private:
  std::string path_;
  int descriptor_;
  std::int64_t size_ = 0;
  std::string buffer_;
};

// Asks the system for large pages below what is about to be filled: fewer faults. Has no other effect.
void askForLargePages(void* memory, std::size_t size);

// What messages call the table that is read from `path`.
std::string shownFile(const std::string& path);

// The text without a byte-order mark. Throws BadTable for what is no table of text: nothing at all, UTF-16, archives,
// bytes of 0.
std::string_view tableText(std::string_view text, const std::string& file);

}  // namespace studystats
