#include "codec/color.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tidemark {
namespace {

using Channels = std::array<double, 3>;

// The transfer curve that sRGB and Display P3 share, continued below zero by symmetry: a colour
// outside of one space may have negative channels in it.
double toLinear(double channel) {
  const double size = std::abs(channel);
  const double linear = size <= 0.04045 ? size / 12.92 : std::pow((size + 0.055) / 1.055, 2.4);
  return std::copysign(linear, channel);
}

double fromLinear(double channel) {
  const double size = std::abs(channel);
  const double curved = size <= 0.0031308 ? size * 12.92 : 1.055 * std::pow(size, 1 / 2.4) - 0.055;
  return std::copysign(curved, channel);
}

// Both spaces have the white D65, so that one matrix between their primaries is all there is.
Channels displayP3ToSrgb(const Channels& p3) {
  constexpr std::array<Channels, 3> primaries = {{
      {1.2249401762805598, -0.2249401762805598, 0.0},
      {-0.0420569547096881, 1.0420569547096881, 0.0},
      {-0.0196375545903344, -0.0786360455506319, 1.0982736001409663},
  }};
  const Channels linear = {toLinear(p3[0]), toLinear(p3[1]), toLinear(p3[2])};
  Channels srgb{};
  for (std::size_t row = 0; row < srgb.size(); ++row) {
    srgb[row] = fromLinear(primaries[row][0] * linear[0] + primaries[row][1] * linear[1] +
                           primaries[row][2] * linear[2]);
  }
  return srgb;
}

std::optional<Channels> srgbChannels(const Color& color) {
  const std::vector<double>& components = color.components;
  if (color.space == ColorSpace::gray) {
    if (components.empty()) return std::nullopt;
    return Channels{components[0], components[0], components[0]};
  }
  if (components.size() < 3) return std::nullopt;
  const Channels channels = {components[0], components[1], components[2]};
  return color.space == ColorSpace::displayP3 ? displayP3ToSrgb(channels) : channels;
}

unsigned toByte(double channel) {
  // Written so that what is not a number counts as full.
  if (!(channel < 1.0)) return 255;
  const double scaled = std::max(channel, 0.0) * 255.0;
  const auto whole = static_cast<unsigned>(scaled);
  return scaled - whole < 0.5 ? whole : whole + 1;
}

}  // namespace

std::optional<ColorText> hexColor(const std::optional<Color>& color) {
  if (!color) return std::nullopt;
  const std::optional<Channels> channels = srgbChannels(*color);
  if (!channels) return std::nullopt;

  constexpr std::string_view hexDigits = "0123456789ABCDEF";
  ColorText text;
  auto out = text.characters.begin();
  *out++ = '#';
  for (double channel : *channels) {
    const unsigned byte = toByte(channel);
    *out++ = hexDigits[byte >> 4];
    *out++ = hexDigits[byte & 0xF];
  }
  return text;
}

}  // namespace tidemark
