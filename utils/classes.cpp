// Class numbers from labels, and assignments without classes of one member.
#include <studystats/utilities.h>

#include <algorithm>
#include <iterator>

#include "frame/argument_check.h"
#include "frame/growth.h"

namespace {

constexpr std::int32_t kNoNumber = 0;

}  // namespace

void StatsCalcUtils::ConvertToUniqueCategories(std::vector<std::string>& labels, std::vector<std::int32_t>& categories,
                                               std::vector<std::string>& categoryNames) {
  // 1. The labels, each once. The names are looked up among them and not the other way round: a few labels are numbered
  // fast, however many names there are.
  kel::map<std::string, std::int32_t> numbers;
  std::vector<std::int32_t*> numberOf;
  numberOf.reserve(labels.size());
  for (const std::string& label : labels) {
    auto entry = numbers.find(label);
    if (entry == numbers.end()) entry = numbers.insert({label, kNoNumber}).first;
    numberOf.push_back(&entry->second);
  }

  // 2. Their numbers: of equal names the first position, then on in the order of the labels.
  for (std::size_t i = 0; i < categoryNames.size(); ++i) {
    const auto entry = numbers.find(categoryNames[i]);
    if (entry != numbers.end() && entry->second == kNoNumber) entry->second = static_cast<std::int32_t>(i + 1);
  }
  std::vector<std::string> added;
  for (std::size_t i = 0; i < labels.size(); ++i) {
    if (*numberOf[i] != kNoNumber) continue;
    added.push_back(labels[i]);
    *numberOf[i] = static_cast<std::int32_t>(categoryNames.size() + added.size());
  }

  // 3. Both lists grow when all memory is there.
  studystats::core::reserveMore(categories, labels.size());
  studystats::core::reserveMore(categoryNames, added.size());
  for (const std::int32_t* number : numberOf) categories.push_back(*number);
  std::move(added.begin(), added.end(), std::back_inserter(categoryNames));
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
  for (const std::int32_t c : classes)
    if (renumbered[std::size_t(c - 1)] > 0) assignment.push_back(renumbered[std::size_t(c - 1)]);

  keep.resize(classes.size(), true);  // the last that can fail
  for (std::size_t i = 0; i < classes.size(); ++i) keep[i] = renumbered[std::size_t(classes[i] - 1)] > 0;
  newClasses.swap(assignment);
  newClassNames.swap(names);
  itemsKept = static_cast<std::int32_t>(newClasses.size());
  classesKept = static_cast<std::int32_t>(newClassNames.size());
}
