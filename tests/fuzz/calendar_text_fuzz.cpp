// The text of an .ics file through the reader, and each item that it finds through recurrence.
// Whatever the text says, reading ends soon, and occurrences come in order, each once, inside the
// range that was asked for.
#include <optional>

#include "fuzz_check.h"
#include "store/local/recurrence/recurrence.h"
#include "store/local/text/calendar_reader.h"

namespace {

using namespace tidemark;
using namespace tidemark::local;

constexpr UtcSeconds from = 1'735'689'600;  // 2025-01-01T00:00:00Z
constexpr UtcSeconds to = from + 60 * secondsPerDay;
constexpr int enough = 200;

void checkOccurrences(const Item& item) {
  std::optional<UtcSeconds> previous;
  int count = 0;
  forEachOccurrence(item, from, to, [&](const Occurrence& occurrence) {
    const UtcSeconds start = occurrence.start.toUtc();
    check(from <= start && start < to, "an occurrence lies in the range", item.uid());
    check(!previous || *previous < start, "occurrences come in order, each once", item.uid());
    previous = start;
    if (item.kind == ItemKind::event) {
      const Span span = spanOfOccurrence(item, occurrence.start, occurrence.period);
      check(span.start <= span.end, "an occurrence does not end before it starts", item.uid());
    }
    return ++count < enough;
  });
}

}  // namespace

int LLVMFuzzerInitialize(int*, char***) {
  ::setenv("TZ", "Europe/Berlin", 1);  // NOLINT(concurrency-mt-unsafe): the only thread
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const CalendarText calendar = readCalendar(asText(data, size), "file.ics");
  for (const auto& item : calendar.items) {
    check(item->kind == ItemKind::todo || item->start.has_value(), "an event has a start");
    if (!anchorOf(*item)) continue;
    if (item->kind == ItemKind::event) {
      const Span span = spanOf(*item);
      check(span.start <= span.end, "an event does not end before it starts", item->uid());
    }
    checkOccurrences(*item);
  }
  return 0;
}
