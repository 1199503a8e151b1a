// The numbers of an example table.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace studystats {

// The first p columns that hold numbers, over the first n rows; column-major.
inline std::vector<double> exampleNumbers(const char* name, std::int32_t n, std::int32_t p) {
  std::vector<double> numbers(static_cast<std::size_t>(n) * static_cast<std::size_t>(p));
  std::ifstream file(std::string(STUDYSTATS_SOURCE_DIR "/examples/") + name);
  std::string line, cell;
  std::getline(file, line);
  for (std::int32_t i = 0; i < n && std::getline(file, line); ++i) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    std::istringstream cells(line);
    for (std::int32_t j = 0; j < p && std::getline(cells, cell, ',');) {
      char* end = nullptr;
      const double value = std::strtod(cell.c_str(), &end);
      if (*end == '\0') numbers[static_cast<std::size_t>(i + n * j++)] = value;
    }
  }
  return numbers;
}

}  // namespace studystats
