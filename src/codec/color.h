// Colours as the wire writes them.
#pragma once

#include <optional>

#include "codec/fixed_text.h"
#include "store/types.h"

namespace tidemark {

// "#RRGGBB", in upper case.
using ColorText = FixedText<7>;

// The colour's sRGB channels (IEC 61966-2-1), each cut to 0..1 and rounded to a byte, halves up;
// one that is not a number is full. What comes after the third channel, alpha, does not show.
// Absent without a colour and for one with too few components.
std::optional<ColorText> hexColor(const std::optional<Color>& color);

}  // namespace tidemark
