#include "store/canonical_text.h"

#include <gtest/gtest.h>

namespace tidemark {
namespace {

TEST(CanonicalText, ComparesNfcForms) {
  EXPECT_TRUE(canonicallyEqual("caf\u00E9", "cafe\u0301"));
  EXPECT_TRUE(canonicallyEqual("\u212B", "\u00C5"));  // the sign of the unit and the letter
  EXPECT_TRUE(canonicallyEqual("\u212A", "K"));       // one side is ASCII
  EXPECT_TRUE(canonicallyEqual("q\u0307\u0323", "q\u0323\u0307"));  // marks in another order
  EXPECT_FALSE(canonicallyEqual("\uFB01", "fi"));                   // compatible is not the same
  EXPECT_FALSE(canonicallyEqual("caf\u00E9", "cafe"));
}

TEST(CanonicalText, MindsCaseBlanksAndLength) {
  EXPECT_TRUE(canonicallyEqual("", ""));
  EXPECT_FALSE(canonicallyEqual("work", "Work"));
  EXPECT_FALSE(canonicallyEqual("work", "work "));
  EXPECT_FALSE(canonicallyEqual("work", "works"));
  EXPECT_FALSE(canonicallyEqual("", "a"));
}

TEST(CanonicalText, OrdersByScalarValue) {
  EXPECT_TRUE(canonicallyBefore("Zeta", "alpha"));
  EXPECT_TRUE(canonicallyBefore("Cal 10", "Cal 2"));
  EXPECT_TRUE(canonicallyBefore("a", "aa"));
  EXPECT_TRUE(canonicallyBefore("z", "\u00E9"));
  EXPECT_TRUE(canonicallyBefore("z", "e\u0301"));          // composes to what stands above
  EXPECT_TRUE(canonicallyBefore("\uFF5E", "\U0001F600"));  // the other way round in UTF-16
  EXPECT_FALSE(canonicallyBefore("e\u0301", "\u00E9"));
  EXPECT_FALSE(canonicallyBefore("\u00E9", "e\u0301"));
  EXPECT_FALSE(canonicallyBefore("a", "a"));
}

TEST(CanonicalText, TakesWhatIsNoUtf8AsItIs) {
  EXPECT_TRUE(canonicallyEqual("\xFF", "\xFF"));
  EXPECT_FALSE(canonicallyEqual("\xFF", "\xFE"));
  EXPECT_EQ(canonicalForm("a\xFF"), "a\xFF");
}

}  // namespace
}  // namespace tidemark
