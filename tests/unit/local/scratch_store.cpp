#include "tests/unit/local/scratch_store.h"

#include <stdlib.h>

#include <fstream>

#include "store/local/local_store_parts.h"

namespace tidemark::local {
namespace {

template <typename Items>
Titles titlesOf(const Items& items) {
  Titles titles;
  for (const auto& item : items) titles.emplace_back(item->title().value_or("(none)"));
  return titles;
}

}  // namespace

Instant instant(int year, unsigned month, unsigned day, int hour, int minute) {
  using namespace std::chrono;
  return sys_days(std::chrono::year(year) / month / day) + hours(hour) + minutes(minute);
}

std::string calendarText(std::string_view lines) {
  return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Test//EN\r\n" + std::string(lines) +
         "END:VCALENDAR\r\n";
}

std::string eventText(std::string_view uid, std::string_view title, std::string_view more,
                      std::string_view start) {
  std::string lines = "BEGIN:VEVENT\r\nUID:" + std::string(uid);
  lines += "\r\nDTSTART:" + std::string(start) + "\r\nDURATION:PT1H\r\nSUMMARY:";
  lines += std::string(title) + "\r\n" + std::string(more) + "END:VEVENT\r\n";
  return calendarText(lines);
}

std::string todoText(std::string_view uid, std::string_view title, std::string_view more) {
  std::string lines = "BEGIN:VTODO\r\nUID:" + std::string(uid) + "\r\nSUMMARY:";
  lines += std::string(title) + "\r\n" + std::string(more) + "END:VTODO\r\n";
  return calendarText(lines);
}

ScratchStore::ScratchStore() {
  std::string name = std::filesystem::temp_directory_path() / "tidemark-local-XXXXXX";
  scratch_ = ::mkdtemp(name.data());
  root_ = scratch_ / "calendars";
  std::filesystem::create_directory(root_);
  candidates_ = {root_};
  watcher_ = makeWatcher();
}

ScratchStore::~ScratchStore() {
  store_.reset();
  std::error_code ignored;
  std::filesystem::remove_all(scratch_, ignored);
}

void ScratchStore::write(const std::filesystem::path& path, std::string_view text) const {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

void ScratchStore::put(const std::filesystem::path& path, std::string_view text) const {
  std::filesystem::create_directories(path.parent_path());
  const auto temporary = scratch_ / "temporary";
  std::ofstream(temporary, std::ios::binary) << text;
  std::filesystem::rename(temporary, path);
}

Store& ScratchStore::store() {
  if (store_ == nullptr) store_ = makeLocalStore(candidates_, std::move(watcher_));
  return *store_;
}

std::vector<EventRef> ScratchStore::events() {
  return events(instant(2025, 1, 1), instant(2026, 1, 1));
}

std::vector<EventRef> ScratchStore::events(Instant from, Instant to) {
  return store().eventsMatchingPredicate({from, to, std::nullopt});
}

Titles ScratchStore::titles() {
  return titlesOf(events());
}

Titles ScratchStore::titles(Instant from, Instant to) {
  return titlesOf(events(from, to));
}

Titles ScratchStore::openTitles(Instant from, Instant to) {
  return reminderTitles({ReminderPredicate::Kind::incompleteByDueDate, from, to, std::nullopt});
}

Titles ScratchStore::doneTitles(Instant from, Instant to) {
  return reminderTitles(
      {ReminderPredicate::Kind::completedByCompletionDate, from, to, std::nullopt});
}

Titles ScratchStore::reminderTitles(const ReminderPredicate& predicate) {
  Titles titles{"(not completed)"};
  store().fetchRemindersMatchingPredicate(predicate,
                                          [&](std::optional<std::vector<ReminderRef>> reminders) {
                                            titles = titlesOf(reminders.value());
                                          });
  return titles;
}

Titles ScratchStore::identifiers(EntityType type) {
  Titles identifiers;
  for (const CalendarRef& calendar : store().calendarsForEntityType(type)) {
    identifiers.push_back(calendar->calendarIdentifier);
  }
  return identifiers;
}

CalendarRef ScratchStore::calendar(std::string_view identifier) {
  for (const EntityType type : {EntityType::event, EntityType::reminder}) {
    for (const CalendarRef& calendar : store().calendarsForEntityType(type)) {
      if (calendar->calendarIdentifier == identifier) return calendar;
    }
  }
  return nullptr;
}

}  // namespace tidemark::local
