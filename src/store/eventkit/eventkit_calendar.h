// Calendars as values, each with the native one that it stands for.
#pragma once

#import <EventKit/EventKit.h>

#include <string>
#include <unordered_map>

#include "store/eventkit/session.h"
#include "store/types.h"

NS_ASSUME_NONNULL_BEGIN

namespace tidemark {

// All with the session's lock held.

CalendarRef makeCalendar(const Session& session, EKCalendar* calendar);

// Null for null, and for a calendar that is no more.
EKCalendar* _Nullable nativeCalendar(const Session& session, const CalendarRef& calendar);

// The calendars of the items of one answer, each read once.
class CalendarsOfAnswer {
 public:
  explicit CalendarsOfAnswer(const Session& session) : session_(session) {}
  // Null for null.
  CalendarRef of(EKCalendar* _Nullable calendar);

 private:
  const Session& session_;
  std::unordered_map<std::string, CalendarRef> byIdentifier_;
};

}  // namespace tidemark

NS_ASSUME_NONNULL_END
