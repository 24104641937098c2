#include "host/json_writer.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>

namespace tidemark {
namespace {

using namespace std::string_literals;

std::string written(const auto& value) {
  TextBuffer buffer;
  JsonWriter writer(buffer);
  writer.value(value);
  EXPECT_TRUE(writer.isValid());
  return std::string(buffer.view());
}

TEST(JsonWriter, EscapesWhatItMustAndTheSlash) {
  EXPECT_EQ(written("https://example.org/\"\\"), R"("https:\/\/example.org\/\"\\")");
  EXPECT_EQ(written("\b\f\n\r\t"), R"("\b\f\n\r\t")");
  EXPECT_EQ(written("\0\x01\x1f\x7f"s), "\"\\u0000\\u0001\\u001f\x7f\"");
}

TEST(JsonWriter, WritesEmptyTexts) {
  EXPECT_EQ(written(""), "\"\"");
  EXPECT_EQ(written(std::string_view()), "\"\"");
}

TEST(JsonWriter, KeepsOtherCharactersAsTheyAre) {
  const std::string text = "Zürich 日本 \U0001F600 \u2028";
  EXPECT_EQ(written(text), '"' + text + '"');
}

// Each character at each place of texts around the sizes in which text is looked at.
TEST(JsonWriter, EscapesAtEveryPlace) {
  const std::pair<std::string, std::string> cases[] = {
      {"/", "\\/"}, {"\x1f", "\\u001f"}, {"é", "é"}, {"\U0001F600", "\U0001F600"}, {"\"", "\\\""}};
  for (const std::size_t length : {0, 1, 2, 3, 4, 6, 7, 8, 15, 16, 17, 31, 33, 40}) {
    for (std::size_t place = 0; place <= length; ++place) {
      for (const auto& [character, escaped] : cases) {
        const std::string before(place, 'a');
        const std::string after(length - place, 'b');
        EXPECT_EQ(written(before + character + after), '"' + before + escaped + after + '"');
      }
    }
  }
}

TEST(JsonWriter, WritesLongTextsWhole) {
  for (const std::size_t length : {4095, 4096, 4097, 8191, 8193, 100000}) {
    for (const std::string character : {"a", "/", "é", "日", "\U0001F600"}) {
      std::string text = "x";
      std::string expected = "\"x";
      while (text.size() < length) {
        text += character;
        expected += character == "/" ? "\\/" : character;
      }
      EXPECT_EQ(written(text), expected + '"') << length << character;
    }
  }
}

TEST(JsonWriter, SaysWhenATextIsNoUtf8) {
  for (const std::string& text : {"\xFF"s, "abc\xC3"s, "\xED\xA0\x80"s, "\xC0\xAF"s, "a\x80"s}) {
    TextBuffer buffer;
    JsonWriter writer(buffer);
    writer.value(text);
    EXPECT_FALSE(writer.isValid()) << text;
  }
}

TEST(JsonWriter, WritesNumbersAndLiterals) {
  EXPECT_EQ(written(std::int64_t{0}), "0");
  EXPECT_EQ(written(std::int64_t{-1}), "-1");
  EXPECT_EQ(written(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
  EXPECT_EQ(written(true), "true");
  EXPECT_EQ(written(false), "false");
}

TEST(JsonWriter, SeparatesMembersAndElements) {
  TextBuffer buffer;
  JsonWriter writer(buffer);
  writer.beginObject();
  writer.key("empty");
  writer.beginArray();
  writer.endArray();
  writer.key("list");
  writer.beginArray();
  writer.value("a");
  writer.beginObject();
  writer.endObject();
  writer.value(true);
  writer.endArray();
  writer.member("text", "b");
  writer.plainMember("plain", std::array{'2', '0', '2', '5'});
  writer.endObject();
  EXPECT_EQ(buffer.view(), R"({"empty":[],"list":["a",{},true],"text":"b","plain":"2025"})");
}

TEST(JsonWriter, RepeatsMembers) {
  TextBuffer buffer;
  JsonWriter writer(buffer);
  writer.beginArray();
  writer.beginObject();
  writer.member("a", "b");
  const std::size_t begin = writer.size();
  writer.member("c", "d");
  writer.member("e", true);
  const std::size_t end = writer.size();
  writer.endObject();
  writer.beginObject();
  writer.member("f", "g");
  writer.repeat(begin, end);
  writer.member("h", "i");
  writer.endObject();
  writer.endArray();
  EXPECT_EQ(buffer.view(), R"([{"a":"b","c":"d","e":true},{"f":"g","c":"d","e":true,"h":"i"}])");
}

TEST(JsonWriter, WritesBackWhatWasRead) {
  const std::string text = R"({"a\/b":[null,true,-1.50e2,"\u0001é",{"":{}}],"c":[]})";
  EXPECT_EQ(written(*parseJson(text)), text);
}

}  // namespace
}  // namespace tidemark
