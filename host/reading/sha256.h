// The digest by which a table can be recognised.
#pragma once

#include <string>
#include <string_view>

namespace studystats {

// SHA-256 in 64 hexadecimal digits, as `sha256sum` prints it. FIPS 180-4.
std::string sha256(std::string_view bytes);

}  // namespace studystats
