#include "store/local/editor/todo_due.h"

#include <algorithm>

#include "store/local/text/civil.h"
#include "store/local/text/date_value.h"

namespace tidemark::local {
namespace {

constexpr WallSeconds secondsPerHour = 3600;

// The seconds by which "GMT+hhmm" is ahead of UTC.
std::optional<std::int32_t> fixedOffsetOf(std::string_view timeZone) {
  if (!timeZone.starts_with("GMT")) return std::nullopt;
  return parseUtcOffset(timeZone.substr(3));
}

bool isSameKind(const Moment& one, const Moment& other) {
  return one.isDate == other.isDate && one.isFloating == other.isFloating;
}

bool isSameTime(const Moment& one, const Moment& other) {
  return isSameKind(one, other) && one.wall == other.wall && one.zone == other.zone;
}

// Between two readings of clocks: as these show it where they are of one zone, else exact.
WallSeconds distance(const Moment& from, const Moment& to) {
  return from.zone == to.zone ? to.wall - from.wall : to.toUtc() - from.toUtc();
}

// How long before its due date a to-do starts that starts too late for a new one.
WallSeconds leadOf(const Item& item, const Moment& due) {
  const WallSeconds shortest = due.isDate ? secondsPerDay : secondsPerHour;
  const auto& oldDue = item.todo->due;
  if (!oldDue) return shortest;
  const WallSeconds lead = std::max<WallSeconds>(distance(*item.start, *oldDue), 0);
  if (!due.isDate) return lead;
  const WallSeconds days = (lead + secondsPerDay - 1) / secondsPerDay;
  return days * secondsPerDay;
}

void moveStart(ComponentEditor& editor, const Item& item, const Moment& due) {
  TimeForm form = formOf(*editor.find("DTSTART"), *item.start);
  if (!isSameKind(*item.start, due)) form = due.isDate ? dateForm() : floatingForm();
  if (!due.isDate && !due.isFloating && item.start->isFloating) {
    form = {TimeForm::Kind::utc, &utcZone(), {}};
  }
  TimeText start = timeText(form, item.start->toUtc());
  if (start.moment.toUtc() >= due.toUtc()) {
    const WallSeconds wall = due.wall - leadOf(item, due);
    start =
        form.zone == due.zone ? timeTextOfWall(form, wall) : timeText(form, due.zone->toUtc(wall));
  }
  setTime(editor, "DTSTART", start);
}

}  // namespace

std::optional<TimeText> dueText(const DateComponents& due) {
  if (!due.year || *due.year < firstYear || *due.year > lastYear) return std::nullopt;
  const int month = std::clamp(due.month.value_or(1), 1, 12);
  const auto length = static_cast<int>(lengthOfMonth(*due.year, static_cast<unsigned>(month)));
  const int day = std::clamp(due.day.value_or(1), 1, length);
  WallSeconds wall =
      dayOf(*due.year, static_cast<unsigned>(month), static_cast<unsigned>(day)) * secondsPerDay;
  if (!due.hour) return timeTextOfWall(dateForm(), wall);
  wall += WallSeconds{*due.hour} * secondsPerHour + due.minute.value_or(0) * 60 +
          due.second.value_or(0);
  if (!due.timeZone) return timeTextOfWall(floatingForm(), wall);
  if (const auto offset = fixedOffsetOf(*due.timeZone)) {
    return timeTextOfWall({TimeForm::Kind::utc, &utcZone(), {}}, wall - *offset);
  }
  return timeTextOfWall(namedForm(*due.timeZone), wall);
}

void setDue(ComponentEditor& editor, const Item& item, const TimeText& due) {
  if (item.todo->due && isSameTime(*item.todo->due, due.moment)) return;
  const ContentLine* const durationLine = editor.find("DURATION");
  if (!editor.find("DUE") && durationLine) {
    editor.replace(*durationLine, "DUE", due.parameters, due.value);
  } else {
    setTime(editor, "DUE", due);
  }
  if (!item.start) return;
  const bool isBefore = item.start->toUtc() < due.moment.toUtc();
  if (!isBefore || !isSameKind(*item.start, due.moment)) moveStart(editor, item, due.moment);
}

}  // namespace tidemark::local
