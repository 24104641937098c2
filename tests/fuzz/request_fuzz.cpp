// Request lines through the dispatcher, over the in-memory store. Whatever a line says, it has
// exactly one answer: one line, a JSON object, with the id that was sent.
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <memory>
#include <string>

#include "fuzz_check.h"
#include "host/dispatcher.h"
#include "host/json.h"
#include "host/json_writer.h"
#include "host/text_buffer.h"
#include "store/current_store.h"
#include "store/memory/memory_store.h"

namespace {

using namespace tidemark;
using namespace std::chrono_literals;

CalendarRef makeCalendar(const std::string& identifier, bool isWritable) {
  auto calendar = std::make_shared<Calendar>();
  calendar->calendarIdentifier = identifier;
  calendar->title = "Calendar " + identifier;
  calendar->source = Source{"On This Computer", 0};
  calendar->allowsContentModifications = isWritable;
  calendar->color = Color{ColorSpace::displayP3, {0.2, 0.4, 0.6}};
  return calendar;
}

MemoryEvent makeEvent(const std::string& identifier, const CalendarRef& calendar, Instant start) {
  MemoryEvent event;
  event.eventIdentifier = identifier;
  event.title = "Event";
  event.calendar = calendar;
  event.startDate = event.occurrenceDate = start;
  event.endDate = start + 3600s;
  event.url = "https://example.org/a";
  return event;
}

MemoryContents makeContents() {
  MemoryContents contents;
  contents.eventCalendars = {makeCalendar("c1", true), makeCalendar("c2", false)};
  contents.remindersLists = {makeCalendar("l1", true), makeCalendar("l2", false)};
  contents.defaultCalendarForNewEvents = contents.eventCalendars[0];
  contents.defaultCalendarForNewReminders = contents.remindersLists[0];
  const Instant start{std::chrono::sys_days{std::chrono::year{2025} / 6 / 2}};
  contents.events = {makeEvent("e1", contents.eventCalendars[0], start),
                     makeEvent("e1", contents.eventCalendars[0], start + 86400s),
                     makeEvent("e2", contents.eventCalendars[1], start)};
  for (const auto& list : contents.remindersLists) {
    MemoryReminder reminder;
    reminder.calendarItemIdentifier = list == contents.remindersLists[0] ? "r1" : "r2";
    reminder.title = "Reminder";
    reminder.calendar = list;
    reminder.dueDateComponents = DateComponents{2025, 6, 2, 9, 30, 0, "Europe/Berlin"};
    contents.reminders.push_back(reminder);
  }
  contents.start = start;
  return contents;
}

// Standard output of this process, to be read by it.
class Answers {
 public:
  void redirect() {
    std::array<int, 2> ends{};
    check(::pipe(ends.data()) == 0 && ::dup2(ends[1], STDOUT_FILENO) >= 0, "there is a pipe");
    ::close(ends[1]);
    readEnd_ = ends[0];
  }

  // The next line, without its end. Some answers come from other threads.
  std::string next() {
    while (true) {
      if (const std::size_t end = text_.find('\n'); end != std::string::npos) {
        std::string line = text_.substr(0, end);
        text_.erase(0, end + 1);
        return line;
      }
      // The fuzzer's own timer may interrupt, now and then.
      pollfd wait{readEnd_, POLLIN, 0};
      const int ready = ::poll(&wait, 1, 10'000);
      if (ready == -1 && errno == EINTR) continue;
      check(ready == 1, "there is an answer");
      const ssize_t count = ::read(readEnd_, buffer_.data(), buffer_.size());
      text_.append(buffer_.data(), static_cast<std::size_t>(count));
    }
  }

  bool isEmpty() const {
    pollfd wait{readEnd_, POLLIN, 0};
    return text_.empty() && ::poll(&wait, 1, 0) <= 0;
  }

 private:
  int readEnd_ = -1;
  std::string text_;
  std::array<char, 65536> buffer_{};
};

Answers& answers = *new Answers;
MemoryStore* memoryStore = nullptr;

std::string textOf(const Json* json) {
  if (json == nullptr) return "absent";
  TextBuffer text;
  JsonWriter(text).value(*json);
  return std::string(text.view());
}

}  // namespace

int LLVMFuzzerInitialize(int*, char***) {
  ::setenv("TZ", "Europe/Berlin", 1);  // NOLINT(concurrency-mt-unsafe): the only thread
  answers.redirect();
  memoryStore = makeMemoryStore(makeContents()).release();
  store = memoryStore;
  store->setChangeObserver([] {});
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  memoryStore->change([](MemoryContents& contents) { contents = makeContents(); });
  std::string_view rest = asText(data, size);
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    const std::optional<Json> request = parseJson(line);
    if (!request || request->object() == nullptr) continue;

    handle(*request->object());
    const std::string answer = answers.next();
    const std::optional<Json> reply = parseJson(answer);
    check(reply && reply->object() != nullptr, "an answer is an object", answer);
    check(textOf(reply->object()->find("id")) == textOf(request->object()->find("id")),
          "the id comes back", answer);
    check(answers.isEmpty(), "there is one answer", answer);
  }
  return 0;
}
