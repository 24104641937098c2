#include "store/local/editor/content_line_writer.h"

#include <gtest/gtest.h>

namespace tidemark::local {
namespace {

TEST(ContentLineWriter, WritesAShortLineWhole) {
  EXPECT_EQ(contentLine("SUMMARY", ";LANGUAGE=de", "Tee", "\r\n"), "SUMMARY;LANGUAGE=de:Tee\r\n");
}

TEST(ContentLineWriter, KeepsALineOfSeventyFiveOctetsInOnePiece) {
  const std::string value(75 - 8, 'x');
  EXPECT_EQ(contentLine("SUMMARY", "", value, "\n"), "SUMMARY:" + value + "\n");
}

TEST(ContentLineWriter, FoldsBeforeTheSeventySixthOctet) {
  const std::string value(76 - 8, 'x');
  EXPECT_EQ(contentLine("SUMMARY", "", value, "\n"), "SUMMARY:" + value.substr(1) + "\n x\n");
}

TEST(ContentLineWriter, NeverFoldsInsideACharacter) {
  // One octet, then characters of four: no multiple of four ends at a fold.
  std::string value = "a";
  for (int count = 0; count < 60; ++count) value += "\U0001F9ED";
  const std::string line = contentLine("SUMMARY", "", value, "\r\n");
  std::string unfolded;
  std::size_t begin = 0;
  while (begin < line.size()) {
    const std::size_t end = line.find("\r\n", begin);
    const std::string piece = line.substr(begin, end - begin);
    EXPECT_LE(piece.size(), longestLine);
    const std::string content = begin == 0 ? piece : piece.substr(1);
    EXPECT_NE(static_cast<unsigned char>(content.front()) & 0xC0, 0x80);
    unfolded += content;
    begin = end + 2;
  }
  EXPECT_EQ(unfolded, "SUMMARY:" + value);
}

TEST(ContentLineWriter, FoldsBytesThatAreNoTextAnywhere) {
  const std::string line = contentLine("X", "", std::string(200, '\x80'), "\n");
  for (std::size_t begin = 0; begin < line.size();) {
    const std::size_t end = line.find('\n', begin);
    EXPECT_LE(end - begin, longestLine);
    begin = end + 1;
  }
}

TEST(ContentLineWriter, EscapesWhatTextGivesAMeaning) {
  EXPECT_EQ(textValue("a,b;c\\d:e\"f"), "a\\,b\\;c\\\\d:e\"f");
}

TEST(ContentLineWriter, WritesEveryLineBreakTheSame) {
  EXPECT_EQ(textValue("a\nb\r\nc\rd"), "a\\nb\\nc\\nd");
}

TEST(ContentLineWriter, LeavesOutControlCharactersButNotTabs) {
  EXPECT_EQ(textValue(std::string_view("a\0b\tc\x07\x7F", 7)), "ab\tc");
}

TEST(ContentLineWriter, RemovesOneParameterAndKeepsTheBytesOfTheOthers) {
  EXPECT_EQ(withoutParameter(";X-A=\"x;TZID=no\";tzid=Europe/Berlin;X-B=b", "TZID"),
            ";X-A=\"x;TZID=no\";X-B=b");
}

TEST(ContentLineWriter, WritesDatesAndTimes) {
  EXPECT_EQ(dateText(1735689600), "20250101");
  EXPECT_EQ(dateTimeText(1735689600 + 3723), "20250101T010203");
  EXPECT_EQ(utcText(-1), "19691231T235959Z");
}

TEST(ContentLineWriter, KeepsYearsWithinFourDigits) {
  EXPECT_EQ(utcText(INT64_MAX), "99991231T235959Z");
  EXPECT_EQ(utcText(INT64_MIN), "00010101T000000Z");
}

TEST(ContentLineWriter, WritesOffsets) {
  EXPECT_EQ(offsetText(3600), "+0100");
  EXPECT_EQ(offsetText(-12600), "-0330");
  EXPECT_EQ(offsetText(3208), "+005328");
}

}  // namespace
}  // namespace tidemark::local
