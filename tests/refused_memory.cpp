#include "tests/refused_memory.h"

#include <algorithm>
#include <cstdlib>

namespace studystats::test {
long requestsUntilRefusal = -1;
std::size_t bytesObtained = 0;
}  // namespace studystats::test

void* operator new(std::size_t size) {
  using namespace studystats::test;
  void* block = requestsUntilRefusal == 0 ? nullptr : std::malloc(std::max<std::size_t>(size, 1));
  if (block == nullptr) throw std::bad_alloc();
  if (requestsUntilRefusal > 0) --requestsUntilRefusal;
  bytesObtained += size;
  return block;
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
