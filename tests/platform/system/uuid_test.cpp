#include "platform/system/uuid.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unordered_set>

namespace corvane {
namespace {

TEST(UUID, IsRandomInTheFormOfItsVersion) {
  std::unordered_set<UUID> seen;
  for (int i = 0; i < 1000; ++i) {
    const UUID uuid;
    EXPECT_TRUE(seen.insert(uuid).second);
    const std::string text = uuid.string();
    ASSERT_EQ(text.size(), 36U);
    for (const std::size_t dash : {8U, 13U, 18U, 23U}) {
      EXPECT_EQ(text[dash], '-');
    }
    EXPECT_EQ(text[14], '4');
    EXPECT_NE(std::string("89AB").find(text[19]), std::string::npos);
  }
}

}  // namespace
}  // namespace corvane
