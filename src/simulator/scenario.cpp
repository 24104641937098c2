#include "simulator/scenario.h"

#include <map>
#include <memory>
#include <utility>

#include "host/json.h"
#include "simulator/scenario_fields.h"

namespace tidemark {
namespace {

class ScenarioParser {
 public:
  Scenario read(const Json& json) {
    ScenarioFields fields(&json, "", errors_);
    readStatus(fields);
    readAccess(fields);
    // Sources before the calendars that name them, calendars before their items.
    fields.forEach("sources", [&](ScenarioFields& source) { readSource(source); });
    fields.forEach("calendars", [&](ScenarioFields& calendar) { readCalendar(calendar); });
    MemoryContents& contents = scenario_.contents;
    contents.defaultCalendarForNewEvents = eventCalendar(fields, "defaultCalendarForNewEvents");
    contents.defaultCalendarForNewReminders =
        remindersList(fields, "defaultCalendarForNewReminders");
    fields.forEach("events",
                   [&](ScenarioFields& event) { contents.events.push_back(readEvent(event)); });
    fields.forEach("reminders", [&](ScenarioFields& reminder) {
      contents.reminders.push_back(readReminder(reminder));
    });
    readFailures(fields);
    readFetches(fields);
    fields.forEach("changes", [&](ScenarioFields& change) {
      scenario_.changes.push_back(
          {change.delay("afterMs"), change.smallInteger("count", 0).value_or(1)});
    });
    return std::move(scenario_);
  }

  const ScenarioErrors& errors() const { return errors_; }

 private:
  void readStatus(ScenarioFields& fields) {
    ScenarioFields status(fields.object("status"), fields.place("status"), errors_);
    scenario_.contents.eventsStatus = status.smallInteger("events").value_or(fullAccess);
    scenario_.contents.remindersStatus = status.smallInteger("reminders").value_or(fullAccess);
  }

  void readAccess(ScenarioFields& fields) {
    ScenarioFields access(fields.object("access"), fields.place("access"), errors_);
    scenario_.eventsAccess = readAccessTo(access, "events");
    scenario_.remindersAccess = readAccessTo(access, "reminders");
  }

  ScenarioAccess readAccessTo(ScenarioFields& parent, std::string_view key) {
    ScenarioFields fields(parent.object(key), parent.place(key), errors_);
    ScenarioAccess access;
    access.result.granted = fields.flag("granted", true);
    access.result.error = fields.text("error");
    access.delay = fields.delay("delayMs");
    access.status = fields.smallInteger("status").value_or(fullAccess);
    return access;
  }

  // Of two sources with one id the first counts, as everywhere.
  void readSource(ScenarioFields& fields) {
    Source source;
    source.title = fields.text("title").value_or("");
    source.sourceType = fields.smallInteger("type").value_or(0);
    sources_.emplace(fields.text("id").value_or(""), std::move(source));
  }

  void readCalendar(ScenarioFields& fields) {
    auto calendar = std::make_shared<Calendar>();
    calendar->calendarIdentifier = fields.text("id").value_or("");
    calendar->title = fields.text("title").value_or("");
    calendar->allowsContentModifications = fields.flag("writable", true);
    if (const auto id = fields.text("source")) {
      const auto source = sources_.find(*id);
      if (source == sources_.end()) {
        fields.fail("source", "names no source");
      } else {
        calendar->source = source->second;
      }
    }
    if (fields.has("color")) calendar->color = readColor(fields);
    MemoryContents& contents = scenario_.contents;
    const bool isRemindersList = fields.smallInteger("type", 0, 1).value_or(0) == 1;
    (isRemindersList ? contents.remindersLists : contents.eventCalendars).push_back(calendar);
  }

  Color readColor(ScenarioFields& parent) {
    ScenarioFields fields(parent.object("color"), parent.place("color"), errors_);
    Color color;
    const std::string space = fields.text("space").value_or("sRGB");
    if (space == "displayP3") {
      color.space = ColorSpace::displayP3;
    } else if (space == "gray") {
      color.space = ColorSpace::gray;
    } else if (space != "sRGB") {
      fields.fail("space", "must be sRGB, displayP3 or gray");
    }
    color.components = fields.numbers("components");
    return color;
  }

  MemoryEvent readEvent(ScenarioFields& fields) {
    MemoryEvent event;
    event.eventIdentifier = fields.text("id");
    event.title = fields.text("title");
    event.calendar = eventCalendar(fields, "calendar");
    event.startDate = fields.date("start");
    event.endDate = fields.date("end");
    event.isAllDay = fields.flag("isAllDay", false);
    event.occurrenceDate = fields.date("occurrence");
    event.lastModifiedDate = fields.date("lastModified");
    event.notes = fields.text("notes");
    event.url = fields.text("url");
    event.location = fields.text("location");
    event.availability = fields.integer("availability").value_or(0);
    event.hasRecurrenceRules = fields.flag("recurring", false);
    // No list and an empty list are two things.
    if (fields.has("attendees")) event.attendees.emplace();
    fields.forEach("attendees", [&](ScenarioFields& attendee) {
      event.attendees->push_back({attendee.text("name"), attendee.text("url").value_or("")});
    });
    return event;
  }

  MemoryReminder readReminder(ScenarioFields& fields) {
    MemoryReminder reminder;
    reminder.calendarItemIdentifier = fields.text("id").value_or("");
    reminder.title = fields.text("title");
    reminder.calendar = remindersList(fields, "list");
    reminder.isCompleted = fields.flag("completed", false);
    reminder.completionDate = fields.date("completionDate");
    reminder.priority = fields.integer("priority").value_or(0);
    if (fields.has("due")) reminder.dueDateComponents = readDue(fields);
    reminder.notes = fields.text("notes");
    return reminder;
  }

  DateComponents readDue(ScenarioFields& parent) {
    ScenarioFields fields(parent.object("due"), parent.place("due"), errors_);
    DateComponents due;
    due.year = fields.smallInteger("year");
    due.month = fields.smallInteger("month");
    due.day = fields.smallInteger("day");
    due.hour = fields.smallInteger("hour");
    due.minute = fields.smallInteger("minute");
    due.second = fields.smallInteger("second");
    due.timeZone = fields.text("timeZone");
    return due;
  }

  void readFailures(ScenarioFields& parent) {
    ScenarioFields fields(parent.object("fail"), parent.place("fail"), errors_);
    scenario_.saveEventFailure = fields.text("saveEvent");
    scenario_.removeEventFailure = fields.text("removeEvent");
    scenario_.saveReminderFailure = fields.text("saveReminder");
    scenario_.removeReminderFailure = fields.text("removeReminder");
  }

  void readFetches(ScenarioFields& parent) {
    ScenarioFields fields(parent.object("fetch"), parent.place("fetch"), errors_);
    scenario_.incompleteFetch = readFetch(fields, "incomplete");
    scenario_.completedFetch = readFetch(fields, "completed");
  }

  ScenarioFetch readFetch(ScenarioFields& parent, std::string_view key) {
    ScenarioFields fields(parent.object(key), parent.place(key), errors_);
    return {fields.delay("delayMs"), fields.flag("none", false)};
  }

  CalendarRef eventCalendar(ScenarioFields& fields, std::string_view key) {
    return reference(fields, key, scenario_.contents.eventCalendars, "names no event calendar");
  }
  CalendarRef remindersList(ScenarioFields& fields, std::string_view key) {
    return reference(fields, key, scenario_.contents.remindersLists, "names no reminders list");
  }
  static CalendarRef reference(ScenarioFields& fields, std::string_view key,
                               const std::vector<CalendarRef>& calendars,
                               std::string_view problem) {
    const std::optional<std::string> id = fields.text(key);
    if (!id) return nullptr;
    for (const CalendarRef& calendar : calendars) {
      if (calendar->calendarIdentifier == *id) return calendar;
    }
    fields.fail(key, problem);
    return nullptr;
  }

  ScenarioErrors errors_;
  Scenario scenario_;
  std::map<std::string, Source> sources_;
};

}  // namespace

std::variant<Scenario, ScenarioError> parseScenario(std::string_view text) {
  const std::optional<Json> json = parseJson(text);
  if (!json) return ScenarioError{"the scenario is not valid JSON"};
  ScenarioParser parser;
  Scenario scenario = parser.read(*json);
  if (parser.errors().first()) return ScenarioError{*parser.errors().first()};
  return scenario;
}

}  // namespace tidemark
