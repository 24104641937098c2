#include "events/event_query.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "access/authorization.h"
#include "codec/dates.h"
#include "codec/record_reply.h"
#include "events/calendar_lookup.h"
#include "store/canonical_text.h"
#include "store/current_store.h"

namespace tidemark {
namespace {

constexpr Instant distantPast =
    std::chrono::sys_days(std::chrono::year(1) / std::chrono::January / 1);

constexpr std::chrono::duration<double> occurrenceTolerance{1.0};

Instant startOf(const Event& event) {
  return event.startDate().value_or(distantPast);
}

void sortByStart(std::vector<EventRef>& events) {
  // Most stores answer in this order; then one pass is all.
  Instant latest = Instant::min();
  const bool isSorted = std::all_of(events.begin(), events.end(), [&](const EventRef& event) {
    const Instant start = startOf(*event);
    return std::exchange(latest, start) <= start;
  });
  if (isSorted) return;
  std::stable_sort(events.begin(), events.end(),
                   [](const EventRef& a, const EventRef& b) { return eventComesBefore(*a, *b); });
}

}  // namespace

bool eventComesBefore(const Event& a, const Event& b) {
  return startOf(a) < startOf(b);
}

void listEvents(RequestId id, const Request& request) {
  if (!requireAccess(id)) return;
  const auto from = parseDate(request.find("from"));
  const auto to = from ? parseDate(request.find("to")) : std::nullopt;
  if (!from || !to) {
    fail(id, "events needs `from` and `to`");
    return;
  }
  CalendarSelection calendars = selectedCalendars(EntityType::event, request, "calendars");
  // An empty choice must not reach the store, where it could come to mean every calendar.
  std::vector<EventRef> events;
  if (!calendars || !calendars->empty()) {
    events = store->eventsMatchingPredicate({*from, *to, std::move(calendars)});
  }
  sortByStart(events);
  replyWithRecords(id, "events", events);
}

EventRef event(std::string_view identifier, std::optional<Instant> occurrence) {
  if (!occurrence) return store->eventWithIdentifier(identifier);
  const EventPredicate window{*occurrence - occurrenceMatchWindow,
                              *occurrence + occurrenceMatchWindow, std::nullopt};
  for (EventRef& candidate : store->eventsMatchingPredicate(window)) {
    const auto candidateIdentifier = candidate->eventIdentifier();
    if (!candidateIdentifier || !canonicallyEqual(*candidateIdentifier, identifier)) continue;
    const auto date = candidate->occurrenceDate();
    if (date && std::chrono::abs(*date - *occurrence) < occurrenceTolerance)
      return std::move(candidate);
  }
  return nullptr;
}

}  // namespace tidemark
