#include "tests/eventkit/stand_in/core_graphics.h"

#include <array>
#include <atomic>
#include <cmath>

#include "tests/eventkit/stand_in/stand_in.h"

struct CGColor {
  tidemark::Color color;
};
struct CGColorSpace {};

namespace {

std::atomic<int> live{0};

double linear(double c) {
  const double size = std::fabs(c);
  return std::copysign(size <= 0.04045 ? size / 12.92 : std::pow((size + 0.055) / 1.055, 2.4), c);
}

double curved(double c) {
  const double size = std::fabs(c);
  return std::copysign(size <= 0.0031308 ? size * 12.92 : 1.055 * std::pow(size, 1 / 2.4) - 0.055,
                       c);
}

// Display P3 has sRGB's curve and white, and primaries further out.
std::vector<double> fromDisplayP3(const std::vector<double>& c) {
  const double red = linear(c[0]);
  const double green = linear(c[1]);
  const double blue = linear(c[2]);
  return {curved(1.22494 * red - 0.22494 * green), curved(-0.042057 * red + 1.042057 * green),
          curved(-0.019638 * red - 0.078636 * green + 1.098274 * blue)};
}

}  // namespace

extern "C" {

static const char nameOfSrgb = 0;  // its address is the name
const CFStringRef kCGColorSpaceSRGB = reinterpret_cast<CFStringRef>(&nameOfSrgb);

CGColorSpaceRef CGColorSpaceCreateWithName(CFStringRef name) {
  if (name != kCGColorSpaceSRGB) return nullptr;
  ++live;
  return new CGColorSpace;
}

void CGColorSpaceRelease(CGColorSpaceRef space) {
  if (space != nullptr) --live;
  delete space;
}

CGColorRef CGColorCreateCopyByMatchingToColorSpace(CGColorSpaceRef, CGColorRenderingIntent,
                                                   CGColorRef color, CFDictionaryRef) {
  if (color == nullptr) return nullptr;
  tidemark::Color result = color->color;
  const std::vector<double>& given = result.components;
  if (result.space == tidemark::ColorSpace::gray) {
    if (given.empty()) return nullptr;
    result.components.assign(3, given[0]);
  } else if (result.space == tidemark::ColorSpace::displayP3) {
    if (given.size() < 3) return nullptr;
    result.components = fromDisplayP3(given);
  }
  result.space = tidemark::ColorSpace::sRGB;
  return tidemark::eventkit::makeColor(result);
}

size_t CGColorGetNumberOfComponents(CGColorRef color) {
  return color->color.components.size();
}

const CGFloat* CGColorGetComponents(CGColorRef color) {
  return color->color.components.empty() ? nullptr : color->color.components.data();
}

void CGColorRelease(CGColorRef color) {
  if (color != nullptr) --live;
  delete color;
}

}  // extern "C"

namespace tidemark::eventkit {

CGColorRef makeColor(const std::optional<Color>& color) {
  if (!color) return nullptr;
  ++live;
  return new CGColor{*color};
}

int liveColors() {
  return live;
}

}  // namespace tidemark::eventkit
