#include <studystats/utilities.h>

UniqueNameGenerator::UniqueNameGenerator() = default;
UniqueNameGenerator::UniqueNameGenerator(
    const kel::set<std::string, std::less<std::string>, kel::pool_allocator<std::string, 1>>& names)
    : usedNames_(names) {}
UniqueNameGenerator::UniqueNameGenerator(const UniqueNameGenerator&) = default;
UniqueNameGenerator& UniqueNameGenerator::operator=(const UniqueNameGenerator&) = default;
UniqueNameGenerator::~UniqueNameGenerator() = default;

std::string UniqueNameGenerator::UniqueName(const std::string& base) {
  if (usedNames_.insert(base).second) return base;
  for (std::int64_t& n = firstCandidate_.insert({base, 2}).first->second;; ++n) {
    std::string candidate = Dvo::DvoFormat("%1 (%2)") << base << n;
    if (usedNames_.insert(candidate).second) return candidate;
  }
}
