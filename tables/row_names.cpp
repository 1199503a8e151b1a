#include "tables/row_names.h"

#include "frame/argument_check.h"

namespace studystats::core {

void copyNames(const std::vector<std::string>& names, std::vector<std::string>* out, const char* operation) {
  require(out != nullptr, operation);
  std::vector<std::string> copy = names;
  out->swap(copy);
}

void copyNames(const std::vector<std::string>* names, std::vector<std::string>& list, const char* operation) {
  require(names != nullptr, operation);
  copyNames(*names, &list, operation);
}

void setRowsUsed(const std::vector<std::string>* rows, std::vector<std::string>& rowsUsed) {
  copyNames(rows, rowsUsed, "SetRowsUsed");
}

void getRowsUsed(const std::vector<std::string>& rowsUsed, std::vector<std::string>* out) {
  copyNames(rowsUsed, out, "GetRowsUsed");
}

void getRowsUsed(const std::vector<std::string>& rowsUsed, NameSet* out) {
  require(out != nullptr, "GetRowsUsed");
  NameSet names(rowsUsed.begin(), rowsUsed.end());
  out->swap(names);
}

}  // namespace studystats::core
