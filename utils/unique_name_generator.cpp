#include <studystats/utilities.h>

UniqueNameGenerator::UniqueNameGenerator() = default;
UniqueNameGenerator::UniqueNameGenerator(
    const kel::set<std::string, std::less<std::string>, kel::pool_allocator<std::string, 1>>& names)
    : usedNames_(names) {}
UniqueNameGenerator::UniqueNameGenerator(const UniqueNameGenerator&) = default;
UniqueNameGenerator::~UniqueNameGenerator() = default;

UniqueNameGenerator& UniqueNameGenerator::operator=(const UniqueNameGenerator& other) {
  UniqueNameGenerator copy(other);  // what can fail
  usedNames_.swap(copy.usedNames_);
  firstCandidate_.swap(copy.firstCandidate_);
  return *this;
}

std::string UniqueNameGenerator::UniqueName(const std::string& base) {
  std::string name = base;  // before it is taken, so that a name is never taken and not handed out
  if (usedNames_.insert(name).second) return name;
  for (std::int64_t& n = firstCandidate_.insert({base, 2}).first->second;; ++n) {
    std::string candidate = Dvo::DvoFormat("%1 (%2)") << base << n;
    if (usedNames_.insert(candidate).second) return candidate;
  }
}
