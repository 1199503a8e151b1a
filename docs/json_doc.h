// docs/json.md: what every key of every command's JSON means, written from the descriptions of the results.
#pragma once

#include <string>

namespace studystats {

std::string jsonDocument();

}  // namespace studystats
