// From the arguments of the process to its exit status: finds the command, runs it, and says what went wrong.
#pragma once

#include <string>
#include <vector>

namespace studystats::cli {

int dispatch(const std::vector<std::string>& arguments);

}  // namespace studystats::cli
