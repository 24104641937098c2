#include "tests/support/command_test.h"

#include "codec/dates.h"
#include "host/dispatcher.h"
#include "store/current_store.h"
#include "tests/support/output_capture.h"

namespace tidemark::test {

Instant at(std::string_view date) {
  return iso.parse(date).value();
}

CalendarRef makeCalendar(std::string identifier, std::string title, CalendarOptions options) {
  auto calendar = std::make_shared<Calendar>();
  calendar->calendarIdentifier = std::move(identifier);
  calendar->title = std::move(title);
  calendar->source = Source{std::move(options.source), 0};
  calendar->allowsContentModifications = options.isWritable;
  calendar->color = std::move(options.color);
  return calendar;
}

MemoryEvent makeEvent(std::string identifier, std::string title, CalendarRef calendar,
                      Instant start) {
  MemoryEvent event;
  event.eventIdentifier = std::move(identifier);
  event.title = std::move(title);
  event.calendar = std::move(calendar);
  event.startDate = start;
  event.endDate = start + std::chrono::hours(1);
  event.occurrenceDate = start;
  return event;
}

DateComponents day(int year, int month, int dayOfMonth) {
  DateComponents components;
  components.year = year;
  components.month = month;
  components.day = dayOfMonth;
  return components;
}

MemoryReminder makeReminder(std::string identifier, std::string title, CalendarRef list, int year,
                            int month, int dayOfMonth) {
  MemoryReminder reminder;
  reminder.calendarItemIdentifier = std::move(identifier);
  reminder.title = std::move(title);
  reminder.calendar = std::move(list);
  reminder.dueDateComponents = day(year, month, dayOfMonth);
  return reminder;
}

CommandTest::CommandTest() {
  useTimeZone("UTC");
}

CommandTest::~CommandTest() {
  store = nullptr;
}

void CommandTest::use(std::unique_ptr<Store> other) {
  store_ = std::move(other);
  store = store_.get();
}

MemoryStore& CommandTest::memory() {
  if (memory_ == nullptr) {
    auto made = makeMemoryStore(contents);
    memory_ = made.get();
    use(std::move(made));
  }
  return *memory_;
}

std::string CommandTest::ask(std::string_view request) {
  memory();
  const std::optional<Json> json = parseJson(request);
  if (!json || json->object() == nullptr) {
    ADD_FAILURE() << "no request: " << request;
    return {};
  }
  OutputCapture output;
  handle(*json->object());
  const std::optional<std::string> answer = output.next();
  const std::string more = output.end();
  EXPECT_TRUE(answer.has_value()) << "no answer to " << request;
  EXPECT_EQ(more, "") << "more than one answer to " << request;
  return normalized(answer.value_or(""));
}

std::string CommandTest::error(std::string_view request) {
  const std::string answer = ask(request);
  const std::optional<Json> json = parseJson(answer);
  const Json* message = json && json->object() != nullptr ? json->object()->find("error") : nullptr;
  if (message == nullptr || message->string() == nullptr) return answer;
  return *message->string();
}

}  // namespace tidemark::test
