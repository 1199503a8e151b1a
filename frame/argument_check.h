// How the class side answers a caller's error: before anything is allocated or changed.
#pragma once

#include <cstddef>
#include <cstdint>

namespace studystats::core {

// Raises Dvo::DvoResult with E_INVALIDARG and "Invalid argument to <operation>".
[[noreturn]] void invalidArgument(const char* operation);

inline void require(bool valid, const char* operation) {
  if (!valid) invalidArgument(operation);
}

inline bool isIndex(std::int32_t index, std::size_t size) { return index >= 0 && std::size_t(index) < size; }

}  // namespace studystats::core
