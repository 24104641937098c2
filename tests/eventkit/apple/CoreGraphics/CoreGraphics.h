// What the store uses of CoreGraphics, declared in our own words.
#pragma once

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma clang assume_nonnull begin

typedef double CGFloat;
typedef const struct __CFString* CFStringRef;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef struct CGColor* CGColorRef;
typedef struct CGColorSpace* CGColorSpaceRef;
typedef enum CGColorRenderingIntent : int { kCGRenderingIntentDefault = 0 } CGColorRenderingIntent;

extern const CFStringRef kCGColorSpaceSRGB;

CGColorSpaceRef _Nullable CGColorSpaceCreateWithName(CFStringRef _Nullable name);
void CGColorSpaceRelease(CGColorSpaceRef _Nullable space);
CGColorRef _Nullable CGColorCreateCopyByMatchingToColorSpace(CGColorSpaceRef _Nullable space,
                                                             CGColorRenderingIntent intent,
                                                             CGColorRef _Nullable color,
                                                             CFDictionaryRef _Nullable options);
size_t CGColorGetNumberOfComponents(CGColorRef _Nullable color);
const CGFloat* _Nullable CGColorGetComponents(CGColorRef _Nullable color);
void CGColorRelease(CGColorRef _Nullable color);

#pragma clang assume_nonnull end
#ifdef __cplusplus
}
#endif
