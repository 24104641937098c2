#include "events/loose_values.h"

#include <gtest/gtest.h>

#include <limits>

namespace tidemark {
namespace {

std::optional<bool> boolean(const char* json) {
  const Json value = *parseJson(json);
  return looseBoolean(&value);
}

std::optional<std::int64_t> integer(const char* json) {
  const Json value = *parseJson(json);
  return looseInteger(&value);
}

TEST(LooseValues, TakesZeroAndOneForBooleans) {
  for (const char* json : {"true", "1", "1.0", "1e0", "0.1e1"})
    EXPECT_EQ(boolean(json), true) << json;
  for (const char* json : {"false", "0", "-0", "0.0", "0e5"})
    EXPECT_EQ(boolean(json), false) << json;
  for (const char* json : {"2", "-1", "0.5", "1.5", "\"true\"", "\"1\"", "null", "[]", "{}"}) {
    EXPECT_EQ(boolean(json), std::nullopt) << json;
  }
  EXPECT_EQ(looseBoolean(nullptr), std::nullopt);
}

TEST(LooseValues, TakesWholeNumbersForIntegers) {
  EXPECT_EQ(integer("7"), 7);
  EXPECT_EQ(integer("-1"), -1);
  EXPECT_EQ(integer("2.0"), 2);
  EXPECT_EQ(integer("2e1"), 20);
  EXPECT_EQ(integer("-0.0"), 0);
  EXPECT_EQ(integer("true"), 1);
  EXPECT_EQ(integer("false"), 0);
  for (const char* json : {"1.5", "1e-3", "\"busy\"", "null", "[1]", "{}"})
    EXPECT_EQ(integer(json), std::nullopt) << json;
  EXPECT_EQ(looseInteger(nullptr), std::nullopt);
}

TEST(LooseValues, KeepsToSixtyFourBits) {
  EXPECT_EQ(integer("9007199254740993"), 9007199254740993);  // no double is that number
  EXPECT_EQ(integer("9223372036854775807"), 9223372036854775807);
  EXPECT_EQ(integer("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
  for (const char* json : {"9223372036854775808", "-9223372036854775809000", "1e19", "-1e300"}) {
    EXPECT_EQ(integer(json), std::nullopt) << json;
  }
}

}  // namespace
}  // namespace tidemark
