// The rows in use: the names of the grid's rows that a table holds. The same in every table that has rows.
#pragma once

#include <studystats/host_framework.h>

#include <string>
#include <vector>

namespace studystats::core {

using NameSet = kel::set<std::string, std::less<std::string>, kel::pool_allocator<std::string, 1>>;

// Null lists raise E_INVALIDARG, "Invalid argument to SetRowsUsed" or "... GetRowsUsed".
void setRowsUsed(const std::vector<std::string>* rows, std::vector<std::string>& rowsUsed);
void getRowsUsed(const std::vector<std::string>& rowsUsed, std::vector<std::string>* out);
void getRowsUsed(const std::vector<std::string>& rowsUsed, NameSet* out);

// A copy of a list of names into *out, or of *names into a list; null raises E_INVALIDARG. A refused allocation leaves
// the list that was to be replaced.
void copyNames(const std::vector<std::string>& names, std::vector<std::string>* out, const char* operation);
void copyNames(const std::vector<std::string>* names, std::vector<std::string>& list, const char* operation);

}  // namespace studystats::core
