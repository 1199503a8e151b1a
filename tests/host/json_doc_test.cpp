#include "docs/json_doc.h"

#include <gtest/gtest.h>

#include "tests/host/documented.h"

namespace studystats::test {
namespace {

TEST(JsonDocument, IsWrittenFromTheDescriptions) {
  EXPECT_EQ(jsonDocumentOnDisk(), jsonDocument()) << "cmake --build build --target json_doc writes it again";
}

}  // namespace
}  // namespace studystats::test
