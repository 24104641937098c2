#include "store/eventkit/foundation_values.h"

#if !__has_feature(objc_arc)
#error "the EventKit store needs -fobjc-arc"
#endif

namespace tidemark {

std::string textOf(NSString* text) {
  // UTF8String would end at a zero byte, and has no answer to half of a surrogate pair.
  NSData* const bytes = [text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
  if (bytes.length == 0) return {};
  return {static_cast<const char*>(bytes.bytes), bytes.length};
}

std::optional<std::string> optionalText(NSString* text) {
  if (text == nil) return std::nullopt;
  return textOf(text);
}

NSString* toNSString(std::string_view text) {
  NSString* const result = [[NSString alloc] initWithBytes:text.data()
                                                    length:text.size()
                                                  encoding:NSUTF8StringEncoding];
  return result != nil ? result : @"";
}

std::optional<Instant> instantOf(NSDate* date) {
  if (date == nil) return std::nullopt;
  return Instant(std::chrono::duration<double>(date.timeIntervalSince1970));
}

NSDate* toNSDate(Instant instant) {
  return [NSDate dateWithTimeIntervalSince1970:instant.time_since_epoch().count()];
}

std::optional<DateComponents> componentsOf(NSDateComponents* components) {
  if (components == nil) return std::nullopt;
  const auto given = [](NSInteger value) -> std::optional<int> {
    if (value == NSDateComponentUndefined) return std::nullopt;
    return static_cast<int>(value);
  };
  DateComponents result;
  result.year = given(components.year);
  result.month = given(components.month);
  result.day = given(components.day);
  result.hour = given(components.hour);
  result.minute = given(components.minute);
  result.second = given(components.second);
  result.timeZone = optionalText(components.timeZone.name);
  return result;
}

NSDateComponents* toNSDateComponents(const DateComponents& components) {
  NSDateComponents* const result = [[NSDateComponents alloc] init];
  result.calendar = [NSCalendar calendarWithIdentifier:NSCalendarIdentifierGregorian];
  if (components.year) result.year = *components.year;
  if (components.month) result.month = *components.month;
  if (components.day) result.day = *components.day;
  if (components.hour) result.hour = *components.hour;
  if (components.minute) result.minute = *components.minute;
  if (components.second) result.second = *components.second;
  if (components.timeZone) {
    result.timeZone = [NSTimeZone timeZoneWithName:toNSString(*components.timeZone)];
  }
  return result;
}

}  // namespace tidemark
