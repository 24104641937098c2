#include "store/local/text/value_text.h"

#include <gtest/gtest.h>

#include <string>

namespace tidemark::local {
namespace {

std::string readable(std::string_view raw, Escapes escapes = Escapes::text) {
  std::string text(readableCapacity(raw.size()), '?');
  const char* const end = writeReadable(raw, escapes, text.data());
  text.resize(static_cast<std::size_t>(end - text.data()));
  return text;
}

TEST(ValueText, ResolvesTheEscapesOfText) {
  EXPECT_EQ(readable("a\\nb\\Nc\\,d\\;e\\\\f"), "a\nb\nc,d;e\\f");
}

TEST(ValueText, KeepsABackslashThatEscapesNothing) {
  EXPECT_EQ(readable("C:\\temp \\"), "C:\\temp \\");
  EXPECT_EQ(readable("\\\\n"), "\\n");
}

TEST(ValueText, ResolvesTheEscapesOfParameters) {
  EXPECT_EQ(readable("a^nb^'c^'^^d^e^", Escapes::parameter), "a\nb\"c\"^d^e^");
  EXPECT_EQ(readable("a\\nb", Escapes::parameter), "a\\nb");
}

TEST(ValueText, LeavesOtherValuesAlone) {
  EXPECT_EQ(readable("http://a/\\n^n", Escapes::none), "http://a/\\n^n");
}

TEST(ValueText, KeepsWellFormedUtf8) {
  const std::string text = "na\xC3\xAFve \xE2\x82\xAC \xF0\x9F\x98\x80 \xEF\xBF\xBE";
  EXPECT_EQ(readable(text), text);
}

TEST(ValueText, ReadsOtherBytesAsLatin1) {
  EXPECT_EQ(readable("Caf\xE9 M\xFCnchen"), "Caf\xC3\xA9 M\xC3\xBCnchen");
  EXPECT_EQ(readable("\xC3\xA9\xE9"), "\xC3\xA9\xC3\xA9");
  // A surrogate, an overlong slash, what lies beyond Unicode, a sequence cut short.
  EXPECT_EQ(readable("\xED\xA0\x80"), "\xC3\xAD\xC2\xA0\xC2\x80");
  EXPECT_EQ(readable("\xC0\xAF"), "\xC3\x80\xC2\xAF");
  EXPECT_EQ(readable("\xF4\x90\x80\x80"), "\xC3\xB4\xC2\x90\xC2\x80\xC2\x80");
  EXPECT_EQ(readable("\xE2\x82"), "\xC3\xA2\xC2\x82");
}

TEST(ValueText, DropsNulBytes) {
  EXPECT_EQ(readable(std::string_view("a\0b\0\0c and more", 15)), "abc and more");
}

TEST(ValueText, TreatsEveryPositionInAWordAlike) {
  // Eight bytes are looked at together: what is special may stand on any of them.
  for (std::size_t at = 0; at < 20; ++at) {
    std::string raw(20, 'x');
    std::string expected = raw;
    raw.replace(at, 1, "\\n");
    expected[at] = '\n';
    EXPECT_EQ(readable(raw), expected) << at;
    raw.replace(at, 2, "\xE4");
    EXPECT_EQ(readable(raw), expected.replace(at, 1, "\xC3\xA4")) << at;
  }
}

}  // namespace
}  // namespace tidemark::local
