#include "codec/color.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace tidemark {
namespace {

std::string hex(ColorSpace space, std::vector<double> components) {
  const auto text = hexColor(Color{space, std::move(components)});
  return text ? std::string(text->view()) : "none";
}

TEST(Color, RoundsEachChannelToAByte) {
  EXPECT_EQ(hex(ColorSpace::sRGB, {1.0, 0.5, 0.0}), "#FF8000");
  EXPECT_EQ(hex(ColorSpace::sRGB, {0.2, 0.4, 0.6}), "#336699");
  EXPECT_EQ(hex(ColorSpace::sRGB, {-0.1, 1.2, 0.999}), "#00FFFF");
  EXPECT_EQ(hex(ColorSpace::sRGB, {0.0, -0.0, 0.001}), "#000000");
}

TEST(Color, TakesWhatIsNoNumberForFull) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(hex(ColorSpace::sRGB, {nan, infinity, -infinity}), "#FFFF00");
  EXPECT_EQ(hex(ColorSpace::gray, {nan}), "#FFFFFF");
}

TEST(Color, PassesOverAlpha) {
  EXPECT_EQ(hex(ColorSpace::sRGB, {0.2, 0.4, 0.6, 0.1}), "#336699");
  EXPECT_EQ(hex(ColorSpace::displayP3, {1.0, 1.0, 1.0, 0.0}), "#FFFFFF");
  EXPECT_EQ(hex(ColorSpace::gray, {0.5, 0.1}), "#808080");
}

TEST(Color, NeedsItsComponents) {
  EXPECT_FALSE(hexColor(std::nullopt));
  EXPECT_EQ(hex(ColorSpace::sRGB, {}), "none");
  EXPECT_EQ(hex(ColorSpace::sRGB, {1.0, 1.0}), "none");
  EXPECT_EQ(hex(ColorSpace::displayP3, {1.0, 1.0}), "none");
  EXPECT_EQ(hex(ColorSpace::gray, {}), "none");
}

TEST(Color, ConvertsDisplayP3) {
  EXPECT_EQ(hex(ColorSpace::displayP3, {0.0, 0.0, 0.0}), "#000000");
  EXPECT_EQ(hex(ColorSpace::displayP3, {0.5, 0.5, 0.5}), "#808080");  // both have one white
  EXPECT_EQ(hex(ColorSpace::displayP3, {1.0, 0.0, 0.0}), "#FF0000");  // beyond what sRGB shows
  EXPECT_EQ(hex(ColorSpace::displayP3, {0.0, 1.0, 0.0}), "#00FF00");
  // Worked out from the primaries and the white point of the two spaces.
  EXPECT_EQ(hex(ColorSpace::displayP3, {0.2, 0.4, 0.6}), "#1B689D");
  EXPECT_EQ(hex(ColorSpace::displayP3, {0.5, 0.25, 0.75}), "#893BC6");
  // sRGB's own red, whose channels in Display P3 are these.
  EXPECT_EQ(hex(ColorSpace::displayP3, {0.917488, 0.200287, 0.138561}), "#FF0000");
}

}  // namespace
}  // namespace tidemark
