// Finding columns by name, and the name that was perhaps meant.
#include "host/names.h"

#include "host/text.h"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <optional>
#include <unordered_map>

namespace studystats {
namespace {

constexpr int kEdit = 2;        // a letter put in, left out, replaced, or two neighbours swapped
constexpr int kCaseChange = 1;  // a letter in the other case

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::string lower(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), [](char c) { return lower(c); });
  return result;
}

int replacing(char a, char b) { return a == b ? 0 : lower(a) == lower(b) ? kCaseChange : kEdit; }

// Edit distance with swaps of neighbours (optimal string alignment), three rows of the table at a time.
int editDistance(std::string_view a, std::string_view b) {
  std::array<std::vector<int>, 3> rows;
  for (std::vector<int>& row : rows) row.resize(b.size() + 1);
  auto& [before, last, current] = rows;
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = kEdit * static_cast<int>(j);
  for (std::size_t i = 1; i <= a.size(); ++i) {
    current[0] = kEdit * static_cast<int>(i);
    for (std::size_t j = 1; j <= b.size(); ++j) {
      current[j] = std::min({last[j] + kEdit, current[j - 1] + kEdit, last[j - 1] + replacing(a[i - 1], b[j - 1])});
      if (i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) && lower(a[i - 2]) == lower(b[j - 1]))
        current[j] = std::min(current[j], before[j - 2] + kEdit);
    }
    std::swap(before, last);
    std::swap(last, current);
  }
  return last[b.size()];
}

// How far apart two names may be and still be taken for a slip: one letter in three, at least one, never all.
int slip(std::string_view name) {
  const int letters = static_cast<int>(name.size());
  return std::min(kEdit * std::max(1, letters / 3), kEdit * letters - 1);
}

// Letters left over when one name is a part of the other ("acid" in "malic_acid"); nothing when it is not.
std::optional<std::size_t> leftOver(const std::string& name, const std::string& existing) {
  constexpr std::size_t kShortest = 3;  // a shorter part says nothing
  const bool longer = existing.size() > name.size();
  const std::string& part = longer ? name : existing;
  const std::string& whole = longer ? existing : name;
  if (part.size() < kShortest || whole.find(part) == std::string::npos) return std::nullopt;
  return whole.size() - part.size();
}

std::vector<std::string> namesOf(const TableView& table) {
  std::vector<std::string> names;
  for (const TableView::Column& column : table.columns()) names.push_back(column.name);
  return names;
}

std::string didYouMean(const std::string& nearest) {
  return nearest.empty() ? "" : fmt::format(" Did you mean \"{}\"?", nearest);
}

std::string noSuchColumn(const TableView& table, std::string_view name, const std::string& nearest) {
  const std::string hint =
      nearest.empty() ? fmt::format(" Its columns are {}.", listed(namesOf(table), 8)) : didYouMean(nearest);
  return fmt::format("{} has no column \"{}\".{}", table.name(), name, hint);
}

// The columns of one table under the patterns of one option.
class Matcher {
 public:
  Matcher(const TableView& table, std::string_view option)
      : table_(table), option_(option), chosen_(table.columns().size(), false) {
    for (std::size_t j = 0; j < table.columns().size(); ++j) positions_.emplace(table.columns()[j].name, j);
  }

  void take(const std::string& pattern) {
    if (!takeLiteral(pattern) && !takeRange(pattern) && !takeGlob(pattern)) refuse(pattern);
  }

  std::vector<std::size_t> inTableOrder() const {
    std::vector<std::size_t> result;
    for (std::size_t j = 0; j < chosen_.size(); ++j)
      if (chosen_[j]) result.push_back(j);
    return result;
  }

 private:
  std::optional<std::size_t> position(std::string_view name) const {
    const auto found = positions_.find(name);
    return found == positions_.end() ? std::nullopt : std::optional(found->second);
  }

  bool takeLiteral(const std::string& name) {
    const std::optional<std::size_t> j = position(name);
    if (j) chosen_[*j] = true;
    return j.has_value();
  }

  // Names may hold dots themselves, so every place where the pattern could be divided is tried.
  bool takeRange(std::string_view pattern) {
    for (std::size_t dots = pattern.find(".."); dots != pattern.npos; dots = pattern.find("..", dots + 1)) {
      const std::optional<std::size_t> from = position(pattern.substr(0, dots));
      const std::optional<std::size_t> to = position(pattern.substr(dots + 2));
      if (!from || !to) continue;
      if (*from > *to) refuseBackwards(pattern, *from, *to);
      for (std::size_t j = *from; j <= *to; ++j) chosen_[j] = true;
      return true;
    }
    return false;
  }

  bool takeGlob(const std::string& pattern) {
    if (pattern.find_first_of("*?[") == std::string::npos) return false;
    bool any = false;
    for (std::size_t j = 0; j < chosen_.size(); ++j)
      if (::fnmatch(pattern.c_str(), table_.columns()[j].name.c_str(), 0) == 0) chosen_[j] = any = true;
    return any;
  }

  [[noreturn]] void refuseBackwards(std::string_view pattern, std::size_t from, std::size_t to) const {
    const std::string& first = table_.columns()[to].name;
    const std::string& last = table_.columns()[from].name;
    throw BadOptions(fmt::format("{} {}: in {} \"{}\" stands before \"{}\". Try {}..{}.", option_, pattern,
                                 table_.name(), first, last, first, last),
                     {.file = table_.name(), .option = std::string(option_)});
  }

  // One end of a range that exists makes the other end the culprit.
  [[noreturn]] void refuse(const std::string& pattern) const {
    const std::vector<std::string> names = namesOf(table_);
    const Where where{.file = table_.name(), .option = std::string(option_)};
    const std::size_t dots = pattern.find("..");
    if (dots != std::string::npos) {
      const std::string from = pattern.substr(0, dots), to = pattern.substr(dots + 2);
      if (position(from).has_value() != position(to).has_value()) {
        const std::string& unknown = position(from) ? to : from;
        const std::string nearest = nearestName(unknown, names);
        throw BadOptions(fmt::format("{} {}: {}", option_, pattern, noSuchColumn(table_, unknown, nearest)), where,
                         nearest);
      }
    }
    std::string stem = pattern;
    std::erase_if(stem, [](char c) { return c == '*' || c == '?'; });
    const std::string nearest = nearestName(stem, names);
    throw BadOptions(
        fmt::format("{} {} matches no column of {}.{}", option_, pattern, table_.name(), didYouMean(nearest)), where,
        nearest);
  }

  const TableView& table_;
  std::string_view option_;
  std::vector<bool> chosen_;
  std::unordered_map<std::string_view, std::size_t> positions_;
};

}  // namespace

std::string nearestName(std::string_view name, const std::vector<std::string>& existing) {
  const std::string* nearest = nullptr;
  int best = slip(name) + 1;
  for (const std::string& candidate : existing) {
    const auto difference = std::abs(static_cast<long>(candidate.size()) - static_cast<long>(name.size()));
    if (difference * kEdit >= best) continue;
    const int distance = editDistance(name, candidate);
    if (distance < best) best = distance, nearest = &candidate;
  }
  if (nearest) return *nearest;

  const std::string wanted = lower(name);
  std::size_t fewest = std::numeric_limits<std::size_t>::max();
  for (const std::string& candidate : existing) {
    const std::optional<std::size_t> rest = leftOver(wanted, lower(candidate));
    if (rest && *rest < fewest) fewest = *rest, nearest = &candidate;
  }
  return nearest ? *nearest : "";
}

std::size_t columnNamed(const TableView& table, std::string_view name, std::string_view option) {
  for (std::size_t j = 0; j < table.columns().size(); ++j)
    if (table.columns()[j].name == name) return j;
  const std::string nearest = nearestName(name, namesOf(table));
  throw BadOptions(noSuchColumn(table, name, nearest), {.file = table.name(), .option = std::string(option)}, nearest);
}

std::vector<std::size_t> matchingColumns(const TableView& table, const std::vector<std::string>& patterns,
                                         std::string_view option) {
  Matcher matcher(table, option);
  for (const std::string& pattern : patterns) matcher.take(pattern);
  return matcher.inTableOrder();
}

}  // namespace studystats
