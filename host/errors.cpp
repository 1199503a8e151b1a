// The failures that host.h throws, and remarks as a line of text.
#include <studystats/host/errors.h>

#include <ostream>

namespace studystats {

Error::Error(Kind kind, const std::string& what, Where where, std::string suggestion)
    : std::runtime_error(what), kind_(kind), where_(std::move(where)), suggestion_(std::move(suggestion)) {}
Error::~Error() = default;

int Error::exitStatus() const { return kind_ == Kind::BadOptions || kind_ == Kind::BadTable ? 2 : 1; }

BadOptions::BadOptions(const std::string& what, Where where, std::string suggestion)
    : Error(Kind::BadOptions, what, std::move(where), std::move(suggestion)) {}

BadTable::BadTable(const std::string& what, Where where, std::string suggestion)
    : Error(Kind::BadTable, what, std::move(where), std::move(suggestion)) {}

NotComputed::NotComputed(const std::string& what, Where where) : Error(Kind::NotComputed, what, std::move(where), {}) {}

OutOfMemory::OutOfMemory(const std::string& what) : Error(Kind::OutOfMemory, what, {}, {}) {}

Stopped::~Stopped() = default;

const char* Stopped::what() const noexcept { return "stopped: nothing was written."; }

std::ostream& operator<<(std::ostream& out, const Remark& remark) {
  return out << (remark.severity == Severity::Warning ? "warning: " : "note: ") << remark.text;
}

}  // namespace studystats
