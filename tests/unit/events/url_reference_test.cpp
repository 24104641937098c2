#include "events/url_reference.h"

#include <gtest/gtest.h>

namespace tidemark {
namespace {

using namespace std::string_view_literals;

TEST(UrlReference, TakesUrisAndRelativeReferences) {
  for (const char* text : {"https://example.org/a?b=c#d", "mailto:ada@example.org",
                           "tel:+49-30-123", "/path", "page", "?q", "#f", "//host",
                           "http://[::1]:80/", "a%20b", "urn:isbn:0451450523", "x-app://open/1"}) {
    EXPECT_TRUE(isUrlReference(text)) << text;
  }
}

TEST(UrlReference, RefusesOtherTexts) {
  for (const auto text : {""sv, "two words"sv, "https://exa mple.org"sv, "http://[::1"sv, "a%2"sv,
                          "<a>"sv, "\n"sv, "café"sv, "a\0b"sv}) {
    EXPECT_FALSE(isUrlReference(text)) << text;
  }
}

}  // namespace
}  // namespace tidemark
