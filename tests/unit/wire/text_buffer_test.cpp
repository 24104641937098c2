#include "host/text_buffer.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

namespace tidemark {
namespace {

// Both sizes that the C library keeps among others and that it maps by themselves.
TEST(TextBuffer, IsUsedAgainAfterItsMemoryWasOffered) {
  for (const std::size_t size : {std::size_t{20} << 10, std::size_t{20} << 20}) {
    TextBuffer before, offered, after;
    const std::string text(size, 'x');
    for (TextBuffer* buffer : {&before, &offered, &after}) buffer->append(text);
    const std::size_t capacity = offered.capacity();
    offered.clear();
    offered.offerMemory();
    EXPECT_EQ(offered.view(), "");
    EXPECT_EQ(offered.capacity(), capacity);
    const std::string next(size, 'y');
    offered.append(next);
    EXPECT_EQ(offered.view(), next);
    EXPECT_EQ(before.view(), text);
    EXPECT_EQ(after.view(), text);
  }
}

TEST(TextBuffer, MayOfferNothing) {
  TextBuffer buffer;
  buffer.offerMemory();
  buffer.append("abc");
  EXPECT_EQ(buffer.view(), "abc");
}

}  // namespace
}  // namespace tidemark
