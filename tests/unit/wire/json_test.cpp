#include "host/json.h"

#include <gtest/gtest.h>

#include <string>

namespace tidemark {
namespace {

using namespace std::string_literals;

std::string nested(std::size_t depth) {
  return std::string(depth, '[') + std::string(depth, ']');
}

TEST(Json, KeepsNumbersAsTheyWereSent) {
  for (const char* number : {"0", "-0", "7", "1.50", "1e2", "1E+2", "12345678901234567890123",
                             "-1.7976931348623157e308", "0.0000000000000000000000001", "1e-400"}) {
    const auto json = parseJson(number);
    ASSERT_TRUE(json && json->number()) << number;
    EXPECT_EQ(json->number()->text, number);
  }
}

TEST(Json, RefusesNumbersThatNoDoubleHolds) {
  for (const std::string& number :
       {"1e309"s, "-1e309"s, "1.8e308"s, "1e99999999999"s, std::string(400, '9')}) {
    EXPECT_FALSE(parseJson(number)) << number;
  }
}

TEST(Json, ReadsEveryType) {
  const auto json = parseJson(R"({"a":null,"b":true,"c":"x","d":[1,{"e":[]}],"f":{}})");
  ASSERT_TRUE(json && json->object());
  const JsonObject& object = *json->object();
  EXPECT_TRUE(object.find("a")->isNull());
  EXPECT_TRUE(*object.find("b")->boolean());
  EXPECT_EQ(*object.find("c")->string(), "x");
  ASSERT_EQ(object.find("d")->array()->size(), 2U);
  EXPECT_NE((*object.find("d")->array())[1].object()->find("e")->array(), nullptr);
  EXPECT_TRUE(object.find("f")->object()->members.empty());
  EXPECT_EQ(object.find("g"), nullptr);
}

TEST(Json, CountsTheLastOfTwoEqualKeys) {
  const auto json = parseJson(R"({"a":1,"b":2,"\u0061":3})");
  EXPECT_EQ(json->object()->find("a")->number()->text, "3");
}

TEST(Json, RefusesWhatIsNoJson) {
  for (const std::string& text :
       {""s,       " "s,       "{"s,        "{} x"s,      "{\"a\":1,}"s,
        "[1,]"s,   "{'a':1}"s, "nul"s,      "NaN"s,       "Infinity"s,
        "01"s,     "1."s,      ".5"s,       "+1"s,        "\"a"s,
        "\"\t\""s, "\"\\x\""s, "// x\n{}"s, "{\"a\" 1}"s, "\xEF\xBB\xBF{}"s}) {
    EXPECT_FALSE(parseJson(text)) << text;
  }
}

TEST(Json, RefusesAZeroByte) {
  EXPECT_FALSE(parseJson("{}\0"s));
  EXPECT_FALSE(parseJson("{}\0 x"s));
  EXPECT_FALSE(parseJson("\"a\0b\""s));
  EXPECT_EQ(*parseJson(R"("a\u0000b")")->string(), "a\0b"s);
}

TEST(Json, RefusesWhatIsNoUtf8) {
  for (const std::string& text : {"\"\xFF\""s, "\"\xC3\""s, "\"\xC0\xAF\""s, "\"\xE0\x80\xAF\""s,
                                  "\"\xED\xA0\x80\""s, "\"\xF4\x90\x80\x80\""s, "{\"\xFF\":1}"s}) {
    EXPECT_FALSE(parseJson(text)) << text;
  }
}

TEST(Json, RefusesLoneSurrogates) {
  for (const char* text :
       {R"("\ud83d")", R"("\udc00")", R"("\ud83dx")", R"("\ude00\ud83d")", R"({"\udfff":1})"}) {
    EXPECT_FALSE(parseJson(text)) << text;
  }
  EXPECT_EQ(*parseJson(R"("\ud83d\ude00")")->string(), "\U0001F600");
  EXPECT_EQ(*parseJson(R"("\ud7ff\ue000")")->string(), "\uD7FF\uE000");
}

TEST(Json, NestsToItsLimit) {
  EXPECT_TRUE(parseJson(nested(maximumJsonNesting)));
  EXPECT_FALSE(parseJson(nested(maximumJsonNesting + 1)));
  EXPECT_FALSE(parseJson(std::string(1000000, '[')));
}

}  // namespace
}  // namespace tidemark
