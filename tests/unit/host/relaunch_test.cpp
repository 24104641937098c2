#include "host/relaunch.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace tidemark {
namespace {

#ifndef __APPLE__
TEST(Relaunch, StartsNoChildWhereThePlatformKnowsNoSuchThing) {
  ::unsetenv(disclaimFlag);
  EXPECT_EQ(spawnDisclaimed(), std::nullopt);
  EXPECT_EQ(std::getenv(disclaimFlag), nullptr);
}
#endif

}  // namespace
}  // namespace tidemark
