// Finding columns by name.
#pragma once

#include <studystats/host/table.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace studystats {

// The existing name nearest to `name` by edit distance (case counts less than a letter); empty when none is near.
std::string nearestName(std::string_view name, const std::vector<std::string>& existing);

// The index of the column called `name`; throws BadOptions, with the nearest name, when there is none.
std::size_t columnNamed(const TableView& table, std::string_view name, std::string_view option);

// Indices of the columns that the patterns name, in table order, each once: a literal name first, then a glob ("vsa_*",
// "x?", "[ab]*"), or a range in table order ("A..B"). A pattern that matches nothing throws BadOptions with the nearest
// name; `option` is how the command spells the list ("--columns").
std::vector<std::size_t> matchingColumns(const TableView& table, const std::vector<std::string>& patterns,
                                         std::string_view option);

}  // namespace studystats
