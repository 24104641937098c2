#include "store/eventkit/eventkit_calendar.h"

#import <CoreGraphics/CoreGraphics.h>

#include <memory>

#include "store/eventkit/foundation_values.h"
#include "store/invariant.h"

namespace tidemark {
namespace {

struct NativeCalendar final : Calendar {
  NativeCalendar(EKCalendar* calendar, unsigned current) : native(calendar), generation(current) {}
  ~NativeCalendar() override {
    @autoreleasepool {
      native = nil;
    }
  }

  EKCalendar* native;
  const unsigned generation;
};

// Whatever space the colour is in, it leaves here in sRGB. Absent when it cannot be converted, as a
// pattern cannot.
std::optional<Color> colorOf(CGColorRef color) {
  if (color == nullptr) return std::nullopt;
  const CGColorSpaceRef space = CGColorSpaceCreateWithName(kCGColorSpaceSRGB);
  if (space == nullptr) stopOnBrokenInvariant();
  const CGColorRef converted =
      CGColorCreateCopyByMatchingToColorSpace(space, kCGRenderingIntentDefault, color, nullptr);
  CGColorSpaceRelease(space);
  if (converted == nullptr) return std::nullopt;

  std::optional<Color> result;
  if (const CGFloat* components = CGColorGetComponents(converted)) {
    const std::size_t count = CGColorGetNumberOfComponents(converted);
    result = Color{ColorSpace::sRGB, {components, components + count}};
  }
  CGColorRelease(converted);
  return result;
}

}  // namespace

CalendarRef makeCalendar(const Session& session, EKCalendar* calendar) {
  auto result = std::make_shared<NativeCalendar>(calendar, session.generation);
  result->calendarIdentifier = textOf(calendar.calendarIdentifier);
  result->title = textOf(calendar.title);
  if (EKSource* const source = calendar.source; source != nil) {
    result->source = Source{textOf(source.title), static_cast<int>(source.sourceType)};
  }
  result->allowsContentModifications = calendar.allowsContentModifications;
  result->color = colorOf(calendar.CGColor);
  return result;
}

EKCalendar* nativeCalendar(const Session& session, const CalendarRef& calendar) {
  if (!calendar) return nil;
  const auto& known = static_cast<const NativeCalendar&>(*calendar);
  if (known.generation == session.generation) return known.native;
  return [session.events calendarWithIdentifier:toNSString(known.calendarIdentifier)];
}

CalendarRef CalendarsOfAnswer::of(EKCalendar* calendar) {
  if (calendar == nil) return nullptr;
  CalendarRef& known = byIdentifier_[textOf(calendar.calendarIdentifier)];
  if (!known) known = makeCalendar(session_, calendar);
  return known;
}

}  // namespace tidemark
