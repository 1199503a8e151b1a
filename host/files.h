// Files as the operating system speaks of them.
#pragma once

#include <string>

namespace studystats {

// Why a file could not be opened, read or written, as the end of a sentence: "there is no such file".
std::string systemReason(int errorNumber);

}  // namespace studystats
