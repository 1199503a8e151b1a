// Class numbers from labels, and assignments without classes of one member.
#include <studystats/utilities.h>

#include "frame/argument_check.h"

void StatsCalcUtils::ConvertToUniqueCategories(std::vector<std::string>& labels, std::vector<std::int32_t>& categories,
                                               std::vector<std::string>& categoryNames) {
  kel::map<std::string, std::int32_t> numbers;
  auto last = static_cast<std::int32_t>(categoryNames.size());
  for (std::int32_t i = 0; i < last; ++i) numbers.insert({categoryNames[std::size_t(i)], i + 1});
  categories.reserve(categories.size() + labels.size());
  for (const std::string& label : labels) {
    const auto [entry, added] = numbers.insert({label, last + 1});
    categories.push_back(entry->second);
    if (!added) continue;
    ++last;
    categoryNames.push_back(label);
  }
}

void StatsCalcUtils::RemoveSingleElementClasses(
    std::vector<std::int32_t>& classes, std::vector<std::string>& classNames,
    kel::deque<bool, 1024, kel::pool_allocator<bool, 1024>, kel::pool_array_allocator<bool*, 8>>& keep,
    std::vector<std::int32_t>& newClasses, std::vector<std::string>& newClassNames, std::int32_t& itemsKept,
    std::int32_t& classesKept) {
  std::vector<std::size_t> members(classNames.size());
  for (const std::int32_t c : classes) {
    studystats::core::require(studystats::core::isIndex(c < 1 ? -1 : c - 1, members.size()),
                              "RemoveSingleElementClasses");
    ++members[std::size_t(c - 1)];
  }

  std::vector<std::int32_t> renumbered(classNames.size()), assignment;
  std::vector<std::string> names;
  for (std::size_t c = 0; c < classNames.size(); ++c) {
    if (members[c] < 2) continue;
    names.push_back(classNames[c]);
    renumbered[c] = static_cast<std::int32_t>(names.size());
  }
  keep.resize(classes.size(), true);
  for (std::size_t i = 0; i < classes.size(); ++i) {
    const std::int32_t number = renumbered[std::size_t(classes[i] - 1)];
    keep[i] = number > 0;
    if (keep[i]) assignment.push_back(number);
  }
  newClasses.swap(assignment);
  newClassNames.swap(names);
  itemsKept = static_cast<std::int32_t>(newClasses.size());
  classesKept = static_cast<std::int32_t>(newClassNames.size());
}
