#include "events/calendar_lookup.h"

#include <algorithm>

#include "store/canonical_text.h"
#include "store/current_store.h"
#include "store/invariant.h"

namespace tidemark {
namespace {

bool holdsOnlyStrings(const JsonArray& values) {
  return std::all_of(values.begin(), values.end(),
                     [](const Json& value) { return value.string() != nullptr; });
}

}  // namespace

bool calendarComesBefore(const Calendar& a, const Calendar& b) {
  if (!a.source || !b.source) stopOnBrokenInvariant();
  if (!canonicallyEqual(a.source->title, b.source->title)) {
    return canonicallyBefore(a.source->title, b.source->title);
  }
  return canonicallyBefore(a.title, b.title);
}

std::vector<CalendarRef> calendarsInOrder(EntityType type) {
  std::vector<CalendarRef> calendars = store->calendarsForEntityType(type);
  std::stable_sort(
      calendars.begin(), calendars.end(),
      [](const CalendarRef& a, const CalendarRef& b) { return calendarComesBefore(*a, *b); });
  return calendars;
}

CalendarRef calendarWithId(EntityType type, std::string_view identifier) {
  for (CalendarRef& calendar : store->calendarsForEntityType(type)) {
    if (canonicallyEqual(calendar->calendarIdentifier, identifier)) return std::move(calendar);
  }
  return nullptr;
}

CalendarSelection selectedCalendars(EntityType type, const Request& request, std::string_view key) {
  const Json* value = request.find(key);
  const JsonArray* identifiers = value == nullptr ? nullptr : value->array();
  if (identifiers == nullptr || !holdsOnlyStrings(*identifiers)) return std::nullopt;

  std::vector<CalendarRef> calendars = store->calendarsForEntityType(type);
  std::erase_if(calendars, [&](const CalendarRef& calendar) {
    return std::none_of(identifiers->begin(), identifiers->end(), [&](const Json& identifier) {
      return canonicallyEqual(calendar->calendarIdentifier, *identifier.string());
    });
  });
  return calendars;
}

}  // namespace tidemark
