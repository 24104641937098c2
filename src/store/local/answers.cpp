#include "store/local/answers.h"

#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>

#include "store/local/local_event.h"
#include "store/local/local_reminder.h"

namespace tidemark::local {
namespace {

// The identifiers of all items of an answer, one after the other.
class Identifiers {
 public:
  explicit Identifiers(std::size_t size) : text_(new char[size]), end_(text_.get()) {}

  static std::size_t sizeOf(const LocalCalendar& calendar, const Item& item) {
    return calendar.calendarIdentifier.size() + 1 + item.uid().size();
  }

  // There must be room left for it.
  std::string_view add(const LocalCalendar& calendar, const Item& item) {
    const char* begin = end_;
    append(calendar.calendarIdentifier);
    *end_++ = ':';
    append(item.uid());
    return {begin, static_cast<std::size_t>(end_ - begin)};
  }

 private:
  void append(std::string_view text) {
    std::memcpy(end_, text.data(), text.size());
    end_ += text.size();
  }

  std::unique_ptr<char[]> text_;
  char* end_;
};

// How far ahead of its event an item is asked for.
constexpr std::size_t lookahead = 4;

// Reminders have none.
std::size_t attendeesOf(const PlacedEvent& placed) {
  return placed.item->attendeeCount();
}
std::size_t attendeesOf(const PlacedTodo&) {
  return 0;
}

// How much room an answer needs besides its objects.
struct Room {
  std::size_t identifiers = 0;
  std::size_t attendees = 0;
};

template <typename Placed>
Room roomFor(const Findings<Placed>& findings) {
  Room room;
  for (const Placed& placed : findings.placed) {
    const LocalCalendar& calendar = *findings.calendars->numbered(placed.collection);
    room.identifiers += Identifiers::sizeOf(calendar, *placed.item);
    room.attendees += attendeesOf(placed);
  }
  return room;
}

template <typename Object, typename Placed>
struct Answer {
  Answer(Findings<Placed> found, const Room& room)
      : identifiers(room.identifiers),
        attendees(new Participant[room.attendees]),
        calendars(std::move(found.calendars)),
        hold(std::move(found.hold)) {
    objects.reserve(found.placed.size());
    Participant* next = attendees.get();
    for (const Placed& placed : found.placed) {
      const LocalCalendar& calendar = *calendars->numbered(placed.collection);
      const std::string_view identifier = identifiers.add(calendar, *placed.item);
      if constexpr (std::is_same_v<Object, LocalEvent>) {
        objects.emplace_back(placed, calendar, identifier, next);
        next += attendeesOf(placed);
      } else {
        objects.emplace_back(placed, calendar, identifier);
      }
    }
  }

  Identifiers identifiers;
  std::unique_ptr<Participant[]> attendees;
  std::shared_ptr<const Calendars> calendars;
  std::unique_ptr<RetiredItems::Hold> hold;
  std::vector<Object> objects;
};

template <typename Interface, typename Object, typename Placed>
std::vector<std::shared_ptr<Interface>> makeObjects(Findings<Placed> findings) {
  const Room room = roomFor(findings);
  const auto answer = std::make_shared<Answer<Object, Placed>>(std::move(findings), room);
  std::vector<std::shared_ptr<Interface>> references;
  references.reserve(answer->objects.size());
  for (Object& object : answer->objects) references.emplace_back(answer, &object);
  return references;
}

}  // namespace

std::vector<EventRef> makeEvents(Findings<PlacedEvent> findings) {
  std::vector<EventRef> events = makeObjects<Event, LocalEvent>(std::move(findings));
  const auto local = [&](std::size_t index) -> LocalEvent& {
    return static_cast<LocalEvent&>(*events[index]);
  };
  for (std::size_t index = 0; index + lookahead < events.size(); ++index) {
    local(index).setNext(*local(index + lookahead).item());
  }
  return events;
}

std::vector<ReminderRef> makeReminders(Findings<PlacedTodo> findings) {
  return makeObjects<Reminder, LocalReminder>(std::move(findings));
}

}  // namespace tidemark::local
