// A colour as the stand-in's calendars have it.
#pragma once

#include <CoreGraphics/CoreGraphics.h>

#include "store/types.h"

namespace tidemark::eventkit {

// Null without a colour. Owned by the caller, who gives it back with CGColorRelease.
CGColorRef makeColor(const std::optional<Color>& color);

}  // namespace tidemark::eventkit
