// How a text table is written: its delimiter and its decimal sign.
#pragma once

#include <studystats/host/table.h>

#include <string>
#include <string_view>

namespace studystats {

struct Dialect {
  char delimiter;
  char decimal;
};

// What the options ask for, and where they leave it open what the text shows. Throws BadOptions for signs that cannot
// be used or that contradict each other.
Dialect dialectOf(std::string_view text, const std::string& file, const ReadOptions& options);

}  // namespace studystats
