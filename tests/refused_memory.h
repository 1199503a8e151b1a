// Memory refused on purpose: the k-th request fails, for k = 0, 1, 2, ... until an operation succeeds. For programs
// of their own: refused_memory.cpp replaces operator new.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <string>

namespace studystats::test {

extern long requestsUntilRefusal;  // -1: nothing is refused
extern std::size_t bytesObtained;

// The object must show what it showed before as long as its change is refused.
template <class Object, class Change, class Show>
void expectAllOrNothing(const char* what, const Object& before, Change change, Show show) {
  const std::string expected = show(before);
  for (long k = 0, refused = 1; refused != 0; ++k) {
    Object object = before;
    requestsUntilRefusal = k;
    try {
      change(object);
      refused = 0;
    } catch (const std::bad_alloc&) {
    }
    requestsUntilRefusal = -1;
    if (refused != 0)
      EXPECT_EQ(show(object), expected) << what << ", request " << k;
    else
      EXPECT_TRUE(k > 0 && show(object) != expected) << what << " asked for nothing, or changed nothing";
  }
}

}  // namespace studystats::test
