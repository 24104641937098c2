#include "store/local/text/item_reader.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "store/local/recurrence/recurrence.h"
#include "store/local/recurrence/recurrence_rule.h"
#include "store/local/text/civil.h"
#include "store/local/text/date_value.h"
#include "store/local/text/value_text.h"

namespace tidemark::local {
namespace {

// People's items have one rule, now and then two.
constexpr std::size_t maximumRules = 64;
// What one large item needed is not kept for all the small ones after it.
constexpr std::size_t largestKeptRoom = std::size_t{64} << 10;

template <typename Visit>
void forEachOfList(std::string_view list, Visit visit) {
  while (true) {
    const std::size_t comma = list.find(',');
    visit(list.substr(0, comma));
    if (comma == std::string_view::npos) return;
    list.remove_prefix(comma + 1);
  }
}

// The first of several lines counts. A value that is there but empty is not absent.
void keepFirst(std::string_view& target, std::string_view value) {
  if (!target.data()) target = value;
}

std::optional<std::int8_t> availabilityOf(std::string_view busyStatus) {
  if (equalsIgnoringCase(busyStatus, "BUSY")) return std::int8_t{0};
  if (equalsIgnoringCase(busyStatus, "FREE")) return std::int8_t{1};
  if (equalsIgnoringCase(busyStatus, "TENTATIVE")) return std::int8_t{2};
  if (equalsIgnoringCase(busyStatus, "OOF")) return std::int8_t{3};
  return std::nullopt;
}

TodoStatus todoStatusOf(std::string_view status) {
  if (equalsIgnoringCase(status, "NEEDS-ACTION")) return TodoStatus::needsAction;
  if (equalsIgnoringCase(status, "IN-PROCESS")) return TodoStatus::inProcess;
  if (equalsIgnoringCase(status, "COMPLETED")) return TodoStatus::completed;
  if (equalsIgnoringCase(status, "CANCELLED")) return TodoStatus::cancelled;
  return TodoStatus::none;
}

std::int16_t smallNumberOf(std::string_view value, std::int64_t highest) {
  const auto number = parseInteger(value);
  return number && *number >= 0 && *number <= highest ? static_cast<std::int16_t>(*number)
                                                      : std::int16_t{0};
}

std::int32_t sequenceOf(std::string_view value) {
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(
      parseInteger(value).value_or(0), 0, std::numeric_limits<std::int32_t>::max()));
}

// Exceptions first take single occurrences, then whole days; see Series.
bool isBefore(const Moment& left, const Moment& right) {
  if (left.isDate != right.isDate) return right.isDate;
  return left.isDate ? left.wall < right.wall : left.toUtc() < right.toUtc();
}

bool startsBefore(const RecurrenceDate& left, const RecurrenceDate& right) {
  return left.start.toUtc() < right.start.toUtc();
}

bool isControl(char byte) {
  return (byte >= 0 && byte < ' ') || byte == '\x7F';
}

template <typename List, typename Compare>
void sortBy(List& list, Compare compare) {
  if (!std::is_sorted(list.begin(), list.end(), compare)) {
    std::stable_sort(list.begin(), list.end(), compare);
  }
}

}  // namespace

void ItemReader::beginFile(FileTimeZones& zones, std::string_view fileName, Naming naming) {
  zones_ = &zones;
  fileName_ = fileName;
  naming_ = naming;
  hasUnnamed_ = {};
  needsNamingByContent_ = false;
  lastParameters_ = {};
  if (readable_.size() > largestKeptRoom) readable_ = {};
}

void ItemReader::begin(ItemKind kind) {
  item_ = {};
  item_.kind = kind;
  todo_ = kind == ItemKind::todo ? std::make_unique<Todo>() : nullptr;
  uid_ = title_ = notes_ = location_ = url_ = firstTime_ = {};
  busyStatus_.reset();
  isTransparent_ = false;
  attendees_.clear();
  rules_.clear();
  dates_.clear();
  exceptions_.clear();
}

void ItemReader::read(PropertyName name, const ContentLine& line) {
  if (!line.value.data()) return;
  switch (name) {
    case PropertyName::attendee:
      return readAttendee(line);
    case PropertyName::busyStatus:
      busyStatus_ = availabilityOf(line.value);
      return;
    case PropertyName::completed:
      if (todo_) readInstant(todo_->completed, line);
      return;
    case PropertyName::description:
      return keepFirst(notes_, line.value);
    case PropertyName::dtend:
      return readMoment(item_.end, line);
    case PropertyName::dtstart:
      keepFirst(firstTime_, line.value);
      return readMoment(item_.start, line);
    case PropertyName::due:
      keepFirst(firstTime_, line.value);
      if (todo_) readMoment(todo_->due, line);
      return;
    case PropertyName::duration:
      item_.duration = nullptr;
      if (const auto duration = parseDuration(line.value)) {
        item_.duration = std::make_unique<const Duration>(*duration);
      }
      return;
    case PropertyName::exdate:
      return readExceptions(line);
    case PropertyName::lastModified:
      return readInstant(item_.lastModified, line);
    case PropertyName::location:
      return keepFirst(location_, line.value);
    case PropertyName::percentComplete:
      if (todo_) todo_->percentComplete = smallNumberOf(line.value, 100);
      return;
    case PropertyName::priority:
      if (todo_) todo_->priority = smallNumberOf(line.value, 9);
      return;
    case PropertyName::rdate:
      return readRecurrenceDates(line);
    case PropertyName::recurrenceId:
      readMoment(item_.recurrenceId, line);
      if (const auto range = parameterOf(line.parameters, "RANGE")) {
        item_.thisAndFuture = equalsIgnoringCase(*range, "THISANDFUTURE");
      }
      return;
    case PropertyName::rrule:
      if (rules_.size() < maximumRules) rules_.push_back(line.value);
      return;
    case PropertyName::sequence:
      item_.sequence = sequenceOf(line.value);
      return;
    case PropertyName::status:
      if (todo_) todo_->status = todoStatusOf(line.value);
      return;
    case PropertyName::summary:
      return keepFirst(title_, line.value);
    case PropertyName::transp:
      isTransparent_ = equalsIgnoringCase(line.value, "TRANSPARENT");
      return;
    case PropertyName::uid:
      return keepFirst(uid_, line.value);
    case PropertyName::url:
      return keepFirst(url_, line.value);
    case PropertyName::begin:
    case PropertyName::end:
    case PropertyName::unknown:
      return;
  }
}

std::unique_ptr<Item> ItemReader::finish() {
  if (item_.kind == ItemKind::event && !item_.start) return nullptr;
  item_.availability = busyStatus_.value_or(isTransparent_ ? std::int8_t{1} : std::int8_t{0});
  if (todo_) finishTodo();
  finishSeries();
  item_.todo = std::move(todo_);
  if (uid_.empty() && !item_.recurrenceId) {
    bool& hasUnnamed = hasUnnamed_[item_.kind == ItemKind::todo ? 1 : 0];
    if (std::exchange(hasUnnamed, true)) needsNamingByContent_ = true;
  }
  return Item::make(std::move(item_), readableTexts());
}

std::optional<Moment> ItemReader::momentOf(std::string_view parameters, std::string_view value) {
  const auto date = parseDateValue(value);
  if (!date) return std::nullopt;
  // The value says what it is. A VALUE=DATE before a value with a time of day is an exporter's
  // slip, and the time is what its user entered.
  Moment moment;
  moment.wall = date->wall;
  moment.isDate = date->isDate;
  if (moment.isDate) {
    moment.zone = &localZone();
    return moment;
  }
  moment.zone = date->isUtc ? &utcZone() : zoneOf(parameters);
  moment.isFloating = !moment.zone;
  if (moment.isFloating) moment.zone = &localZone();
  return moment;
}

const Zone* ItemReader::zoneOf(std::string_view parameters) {
  if (parameters.empty()) return nullptr;
  if (parameters == lastParameters_) return lastZone_;
  const auto tzid = parameterOf(parameters, "TZID");
  lastParameters_ = parameters;
  lastZone_ = tzid ? zones_->find(*tzid) : nullptr;
  return lastZone_;
}

void ItemReader::readMoment(OptionalMoment& target, const ContentLine& line) {
  if (!target) target = momentOf(line.parameters, line.value);
}

void ItemReader::readInstant(OptionalSeconds& target, const ContentLine& line) {
  if (const auto moment = momentOf(line.parameters, line.value)) target = moment->toUtc();
}

void ItemReader::readRecurrenceDates(const ContentLine& line) {
  forEachOfList(line.value, [&](std::string_view value) {
    RecurrenceDate date;
    const std::size_t slash = value.find('/');
    const auto start = momentOf(line.parameters, value.substr(0, slash));
    if (!start) return;
    date.start = *start;
    if (slash != std::string_view::npos) {
      const std::string_view rest = value.substr(slash + 1);
      date.duration = parseDuration(rest);
      if (!date.duration) date.end = momentOf(line.parameters, rest);
    }
    dates_.push_back(date);
  });
}

void ItemReader::readExceptions(const ContentLine& line) {
  forEachOfList(line.value, [&](std::string_view value) {
    if (const auto moment = momentOf(line.parameters, value)) exceptions_.push_back(*moment);
  });
}

void ItemReader::readAttendee(const ContentLine& line) {
  if (line.value.empty()) return;
  const auto name = parameterOf(line.parameters, "CN");
  attendees_.push_back({name.value_or(std::string_view()), line.value});
}

void ItemReader::finishTodo() {
  if (todo_->due || !item_.start || !item_.duration) return;
  Moment due = *item_.start;
  due.wall += item_.duration->days * secondsPerDay;
  if (item_.duration->seconds != 0) {
    due.wall = due.zone->toWall(due.toUtc() + item_.duration->seconds);
    if (due.isDate) due.wall = dayOf(due.wall) * secondsPerDay;
  }
  todo_->due = due;
}

void ItemReader::finishSeries() {
  if ((rules_.empty() && dates_.empty()) || item_.recurrenceId) return;
  // A to-do may repeat by its due date alone.
  const OptionalMoment start = item_.start || !todo_ ? item_.start : todo_->due;
  if (!start) return;
  auto series = std::make_unique<Series>();
  for (const std::string_view text : rules_) {
    if (auto rule = parseRecurrenceRule(text, *start)) series->rules.push_back(std::move(rule));
  }
  if (series->rules.empty() && dates_.empty()) return;
  for (RecurrenceDate& date : dates_) {
    if (date.start.isDate == start->isDate) continue;
    // A day says no more than that: the occurrence has the time of the others. Among whole days, a
    // time is its day.
    const WallSeconds reading =
        date.start.isDate ? date.start.wall : start->zone->toWall(date.start.toUtc());
    date.start = *start;
    date.start.wall =
        dayOf(reading) * secondsPerDay + start->wall - dayOf(start->wall) * secondsPerDay;
  }
  addExceptionsOnSeriesClock(*start);
  sortBy(dates_, startsBefore);
  sortBy(exceptions_, isBefore);
  series->dates = dates_;
  series->exceptions = exceptions_;
  item_.series = std::move(series);
}

// Some programs leave the TZID of a series out of its EXDATEs: a floating one takes what starts at
// that reading of the local clock, and of the series' own.
void ItemReader::addExceptionsOnSeriesClock(const Moment& start) {
  if (start.isFloating || start.isDate) return;
  for (std::size_t index = 0, size = exceptions_.size(); index < size; ++index) {
    Moment exception = exceptions_[index];
    if (!exception.isFloating) continue;
    exception.zone = start.zone;
    exception.isFloating = false;
    exceptions_.push_back(exception);
  }
}

ItemTexts& ItemReader::readableTexts() {
  // The title may be in the name, too.
  std::size_t capacity = fileName_.size() + firstTime_.size() + title_.size() + 2;
  for (const std::string_view raw : {uid_, title_, notes_, location_, url_}) capacity += raw.size();
  for (const RawAttendee& attendee : attendees_) {
    capacity += attendee.name.size() + attendee.address.size();
  }
  capacity = readableCapacity(capacity);
  if (readable_.size() < capacity) readable_.resize(capacity);

  char* end = readable_.data();
  const auto write = [&](std::string_view raw, Escapes escapes) {
    if (!raw.data()) return std::string_view();
    char* const begin = std::exchange(end, writeReadable(raw, escapes, end));
    return std::string_view(begin, static_cast<std::size_t>(end - begin));
  };
  texts_.uid = write(uid_, Escapes::text);
  if (texts_.uid.empty()) {
    char* const begin = end;
    write(fileName_, Escapes::none);
    if (naming_ == Naming::byFileAndContent && !item_.recurrenceId) {
      *end++ = '/';
      write(firstTime_, Escapes::none);
      *end++ = '/';
      write(title_, Escapes::text);
      // It may come to stand in a line of its own.
      end = std::remove_if(begin, end, isControl);
    }
    texts_.uid = {begin, static_cast<std::size_t>(end - begin)};
  }
  texts_.title = write(title_, Escapes::text);
  texts_.notes = write(notes_, Escapes::text);
  texts_.location = write(location_, Escapes::text);
  texts_.url = write(url_, Escapes::none);
  texts_.attendees.clear();
  for (const RawAttendee& raw : attendees_) {
    Attendee attendee;
    if (raw.name.data()) attendee.name = write(raw.name, Escapes::parameter);
    attendee.address = write(raw.address, Escapes::none);
    texts_.attendees.push_back(attendee);
  }
  return texts_;
}

}  // namespace tidemark::local
