#import <Foundation/Foundation.h>

#include <algorithm>

#include "codec/days.h"
#include "store/local_dates.h"

namespace tidemark {
namespace {

// The formatter would take other shapes too.
bool hasShapeOfDay(std::string_view text) {
  constexpr std::string_view shape = "dddd-dd-dd";
  return std::equal(text.begin(), text.end(), shape.begin(), shape.end(), [](char c, char kind) {
    return kind == 'd' ? c >= '0' && c <= '9' : c == kind;
  });
}

// True for ISO 8601's calendar too, which has another name. In no other is that the year 1970.
bool countsAsGregorian(NSCalendar* calendar) {
  NSDate* const middleOf1970 = [NSDate dateWithTimeIntervalSince1970:180 * 24 * 60 * 60];
  return [calendar components:NSCalendarUnitYear fromDate:middleOf1970].year == 1970;
}

}  // namespace

std::optional<Instant> parseUsersDay(std::string_view text) {
  if (!hasShapeOfDay(text)) return std::nullopt;
  @autoreleasepool {
    if (countsAsGregorian([NSCalendar currentCalendar])) {
      // Also right where a change of the clocks skips midnight, where formatters differ.
      const auto day = parseGregorianDay(text);
      return day ? std::optional(startOfDay(*day)) : std::nullopt;
    }
    // Locale and calendar are the user's own, as they are at this moment.
    NSDateFormatter* const formatter = [[NSDateFormatter alloc] init];
    formatter.dateFormat = @"yyyy-MM-dd";
    formatter.timeZone = [NSTimeZone localTimeZone];
    NSString* const digits = [[NSString alloc] initWithBytes:text.data()
                                                      length:text.size()
                                                    encoding:NSASCIIStringEncoding];
    NSDate* const date = digits != nil ? [formatter dateFromString:digits] : nil;
    if (date == nil) return std::nullopt;
    return Instant(std::chrono::duration<double>(date.timeIntervalSince1970));
  }
}

}  // namespace tidemark
