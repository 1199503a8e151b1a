// What went wrong, and what is worth knowing.
#pragma once

#include <cstdint>
#include <exception>
#include <iosfwd>
#include <stdexcept>
#include <string>
#include <vector>

#ifndef STUDYSTATS_API
#define STUDYSTATS_API __attribute__((visibility("default")))
#endif

namespace studystats {

// A program compiled against one revision of this header does not start with a library of another: the loader names the
// symbol that is missing.
STUDYSTATS_API extern const int hostInterfaceRevision1;
[[gnu::used]] inline const int* const hostInterfaceInUse = &hostInterfaceRevision1;

// Where in the caller's material an error lies; what does not apply is 0 or empty.
struct Where {
  std::string file{};     // as the caller named it
  std::int64_t line = 0;  // in the file, from 1
  int column = 0;         // of the table, from 1
  std::string cell{};     // its text
  std::string option{};   // as the command spells it, "--columns"
};

// What every failure here is. what() is one clear sentence for the person who reads it, then what to try.
class STUDYSTATS_API Error : public std::runtime_error {
 public:
  enum class Kind {
    BadOptions,   // the request does not fit the table, or contradicts itself
    BadTable,     // the table cannot be read
    NotComputed,  // the analysis could not be done
    OutOfMemory,
  };
  ~Error() override;
  Kind kind() const { return kind_; }
  const Where& where() const { return where_; }
  const std::string& suggestion() const { return suggestion_; }  // the nearest existing name, or empty
  int exitStatus() const;                                        // the command's: 2 for bad options and tables, else 1

 protected:
  Error(Kind kind, const std::string& what, Where where, std::string suggestion);

 private:
  Kind kind_;
  Where where_;
  std::string suggestion_;
};

class STUDYSTATS_API BadOptions : public Error {
 public:
  explicit BadOptions(const std::string& what, Where where = {}, std::string suggestion = {});
};
class STUDYSTATS_API BadTable : public Error {
 public:
  explicit BadTable(const std::string& what, Where where = {}, std::string suggestion = {});
};
class STUDYSTATS_API NotComputed : public Error {
 public:
  explicit NotComputed(const std::string& what, Where where = {});
};
class STUDYSTATS_API OutOfMemory : public Error {
 public:
  explicit OutOfMemory(const std::string& what);
};

// The caller's progress callback or stop token asked to stop. Not an Error: nothing went wrong, and nothing is left
// behind.
class STUDYSTATS_API Stopped : public std::exception {
 public:
  ~Stopped() override;
  const char* what() const noexcept override;
};

enum class Severity {
  Note,     // worth knowing
  Warning,  // can change a decision
};

// Something to tell the user. `code` is stable, so that an application can translate or suppress it.
struct Remark {
  Severity severity = Severity::Note;
  std::string code{};                // "duplicate-columns", "rows-dropped", ...
  std::string text{};                // what was seen, what it means, what to try
  std::vector<std::string> names{};  // columns or rows that it is about
};
STUDYSTATS_API std::ostream& operator<<(std::ostream& out, const Remark& remark);  // "warning: ..." or "note: ..."

}  // namespace studystats
