// What EventKit does and other stores do not.
#include "store/eventkit/eventkit_store.h"

#include <gmock/gmock.h>

#include <atomic>
#include <mutex>
#include <set>
#include <thread>

#include "tests/eventkit/eventkit_fixture.h"
#include "tests/eventkit/main_thread.h"
#include "tests/eventkit/stand_in/stand_in.h"

namespace tidemark {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using namespace std::string_literals;

const Instant ten = instant(2025, 3, 3, 10);
const Instant eleven = instant(2025, 3, 3, 11);

class EventKit : public testing::Test {
 protected:
  EventKit() { StoreContract::setLocalZone("UTC"); }

  Store& store() { return fixture_.store(); }
  EventKitFixture& fixture() { return fixture_; }
  CalendarRef calendar(const std::string& identifier) {
    for (const EntityType type : {EntityType::event, EntityType::reminder}) {
      for (const CalendarRef& candidate : store().calendarsForEntityType(type)) {
        if (candidate->calendarIdentifier == identifier) return candidate;
      }
    }
    return nullptr;
  }
  std::vector<std::string> titlesFrom(Instant from, Instant to) {
    return titles(store().eventsMatchingPredicate({from, to, std::nullopt}));
  }
  // An event, and one reminder, that are in the store.
  EventRef savedEvent() {
    const std::string work = fixture().addCalendar({"Work"});
    return store().eventWithIdentifier(fixture().addEvent({work, "Tea", ten, eleven}));
  }
  ReminderRef savedReminder() {
    const std::string tasks = fixture().addCalendar({"Tasks", EntityType::reminder});
    return store().calendarItemWithIdentifier(fixture().addReminder({tasks, "Todo"}));
  }

 private:
  EventKitFixture fixture_;
};

DateComponents day(int year, int month, int dayOfMonth) {
  DateComponents components;
  components.year = year;
  components.month = month;
  components.day = dayOfMonth;
  return components;
}

std::string errorOf(const StoreResult& result) {
  return result.error.value_or("(none)");
}

// --- long ranges

TEST_F(EventKit, LongRangeIsAskedForInPiecesThatMeet) {
  const Instant from = instant(1990, 1, 1);
  const Instant to = instant(2030, 6, 1);
  store().eventsMatchingPredicate({from, to, std::nullopt});
  const auto ranges = eventkit::takeRanges();
  ASSERT_FALSE(ranges.empty());
  EXPECT_EQ(ranges.front().first, from.time_since_epoch().count());
  EXPECT_EQ(ranges.back().second, to.time_since_epoch().count());
  for (std::size_t i = 0; i < ranges.size(); ++i) {
    EXPECT_LE(ranges[i].second - ranges[i].first, 4 * 365.0 * 86400);
    if (i > 0) {
      EXPECT_EQ(ranges[i].first, ranges[i - 1].second);
    }
  }
}

TEST_F(EventKit, RangeOfFourYearsIsAskedForOnce) {
  store().eventsMatchingPredicate({ten, ten + std::chrono::days(4 * 365), std::nullopt});
  EXPECT_EQ(eventkit::takeRanges().size(), 1u);
}

TEST_F(EventKit, EventWherePiecesMeetIsAnsweredOnce) {
  const Instant from = instant(2000, 1, 1);
  const Instant seam = from + std::chrono::days(4 * 365);
  const std::string work = fixture().addCalendar({"Work"});
  const auto hour = std::chrono::hours(1);
  fixture().addEvent({work, "Across", seam - hour, seam + hour});
  fixture().addEvent({work, "Across all", from - hour, seam + std::chrono::days(4000)});
  fixture().addEvent({work, "At", seam, seam + hour});
  fixture().addEvent({work, "Before", seam - hour, seam});
  fixture().addEvent({work, "Moment", seam, seam});
  EXPECT_THAT(titlesFrom(from, from + std::chrono::days(3000)),
              testing::UnorderedElementsAre("Across", "Across all", "At", "Before", "Moment"));
}

TEST_F(EventKit, DailyEventOfTwelveYearsIsAnsweredEachDay) {
  const std::string work = fixture().addCalendar({"Work"});
  constexpr int days = 12 * 365;
  fixture().addEvent({work, "Daily", ten, eleven, days});
  const auto found =
      store().eventsMatchingPredicate({instant(2020, 1, 1), instant(2045, 1, 1), std::nullopt});
  EXPECT_EQ(found.size(), static_cast<std::size_t>(days));
  std::set<double> occurrences;
  for (const EventRef& event : found) {
    occurrences.insert(event->occurrenceDate()->time_since_epoch().count());
  }
  EXPECT_EQ(occurrences.size(), static_cast<std::size_t>(days));
}

TEST_F(EventKit, RangeWithoutLengthIsNotAskedFor) {
  EXPECT_THAT(titlesFrom(eleven, ten), IsEmpty());
  EXPECT_THAT(titlesFrom(ten, ten), IsEmpty());
  EXPECT_THAT(eventkit::takeRanges(), IsEmpty());
}

// --- failures

TEST_F(EventKit, NoWithoutAnErrorIsSuccess) {
  const EventRef event = savedEvent();
  const ReminderRef reminder = savedReminder();
  eventkit::refuseNextWithoutError();
  EXPECT_TRUE(store().saveEvent(*event));
  eventkit::refuseNextWithoutError();
  EXPECT_TRUE(store().removeEvent(*event));
  eventkit::refuseNextWithoutError();
  EXPECT_TRUE(store().saveReminder(*reminder));
  eventkit::refuseNextWithoutError();
  EXPECT_TRUE(store().removeReminder(*reminder));
}

TEST_F(EventKit, ExceptionOfASaveOrRemovalIsItsFailure) {
  const EventRef event = savedEvent();
  const ReminderRef reminder = savedReminder();
  eventkit::raiseOnNext("saveEvent", "one");
  EXPECT_EQ(errorOf(store().saveEvent(*event)), "one");
  eventkit::raiseOnNext("removeEvent", "two");
  EXPECT_EQ(errorOf(store().removeEvent(*event)), "two");
  eventkit::raiseOnNext("saveReminder", "three");
  EXPECT_EQ(errorOf(store().saveReminder(*reminder)), "three");
  eventkit::raiseOnNext("removeReminder", "four");
  EXPECT_EQ(errorOf(store().removeReminder(*reminder)), "four");
  EXPECT_TRUE(store().saveEvent(*event));  // the lock was given back
}

TEST_F(EventKit, ExceptionOfASetterIsTheFailureOfTheSave) {
  const EventRef event = savedEvent();
  eventkit::raiseOnNext("setAvailability", "no such availability");
  event->setAvailability(7);
  event->setTitle("Coffee");
  EXPECT_EQ(errorOf(store().saveEvent(*event)), "no such availability");
  EXPECT_THAT(titlesFrom(ten, eleven), ElementsAre("Tea"));

  const ReminderRef reminder = savedReminder();
  eventkit::raiseOnNext("setDueDate", "no such date");
  reminder->setDueDateComponents(day(2025, 3, 3));
  EXPECT_EQ(errorOf(store().saveReminder(*reminder)), "no such date");
}

TEST_F(EventKit, ExceptionOfAQueryIsAStoreError) {
  const auto words = [](const auto& question) -> std::string {
    try {
      question();
    } catch (const StoreError& error) {
      return error.what();
    }
    return "(none)";
  };
  eventkit::raiseOnNext("calendarsForEntityType", "one");
  EXPECT_EQ(words([&] { store().calendarsForEntityType(EntityType::event); }), "one");
  eventkit::raiseOnNext("eventsMatchingPredicate", "two");
  EXPECT_EQ(words([&] { titlesFrom(ten, eleven); }), "two");
  eventkit::raiseOnNext("eventWithIdentifier", "three");
  EXPECT_EQ(words([&] { store().eventWithIdentifier("e"); }), "three");
  eventkit::raiseOnNext("calendarItemWithIdentifier", "four");
  EXPECT_EQ(words([&] { store().calendarItemWithIdentifier("r"); }), "four");
  eventkit::raiseOnNext("defaultCalendar", "five");
  EXPECT_EQ(words([&] { store().defaultCalendarForNewEvents(); }), "five");
  EXPECT_EQ(words([&] { titlesFrom(ten, eleven); }), "(none)");
}

TEST_F(EventKit, ExceptionOfAFetchDeliversNothing) {
  eventkit::raiseOnNext("fetchReminders", "no");
  Arrivals arrivals;
  bool delivered = true;
  store().fetchRemindersMatchingPredicate(
      {ReminderPredicate::Kind::incompleteByDueDate, ten, eleven, std::nullopt},
      [&](std::optional<std::vector<ReminderRef>> reminders) {
        delivered = reminders.has_value();
        arrivals.arrive();
      });
  ASSERT_TRUE(arrivals.waitFor(1));
  EXPECT_FALSE(delivered);
}

TEST_F(EventKit, ExceptionOfAnAccessRequestIsItsErrorOnAnotherThread) {
  eventkit::raiseOnNext("requestFullAccess", "no usage string");
  struct Completion {
    Arrivals arrivals;
    AccessResult result;
    std::thread::id thread;
  };
  // The other thread may still be in arrive() when this test is over.
  const auto completion = std::make_shared<Completion>();
  store().requestFullAccessToEvents([completion](AccessResult given) {
    completion->result = std::move(given);
    completion->thread = std::this_thread::get_id();
    completion->arrivals.arrive();
  });
  ASSERT_TRUE(completion->arrivals.waitFor(1));
  EXPECT_EQ(completion->result.error, "no usage string");
  EXPECT_NE(completion->thread, std::this_thread::get_id());
}

// --- resets

TEST_F(EventKit, EventOutlivesAReset) {
  const EventRef event = savedEvent();
  event->setTitle("Coffee");
  store().reset();
  EXPECT_EQ(event->title(), "Coffee");
  event->setLocation("Here");
  ASSERT_EQ(errorOf(store().saveEvent(*event)), "(none)");
  const auto stored = store().eventsMatchingPredicate({ten, eleven, std::nullopt});
  ASSERT_EQ(stored.size(), 1u);
  EXPECT_EQ(stored.front()->title(), "Coffee");
  EXPECT_EQ(stored.front()->location(), "Here");
}

TEST_F(EventKit, OccurrenceOutlivesAReset) {
  const std::string work = fixture().addCalendar({"Work"});
  fixture().addEvent({work, "Daily", ten, eleven, 5});
  const Instant third = instant(2025, 3, 5);
  const EventRef event =
      store().eventsMatchingPredicate({third, third + std::chrono::days(1), std::nullopt}).front();
  event->setStartDate(third + std::chrono::hours(15));
  event->setEndDate(third + std::chrono::hours(16));
  store().reset();
  ASSERT_EQ(errorOf(store().saveEvent(*event)), "(none)");
  EXPECT_EQ(store().eventsMatchingPredicate({ten, ten + std::chrono::days(9), std::nullopt}).size(),
            5u);
  const auto moved = store().eventsMatchingPredicate(
      {third + std::chrono::hours(15), third + std::chrono::hours(16), std::nullopt});
  ASSERT_EQ(moved.size(), 1u);
  EXPECT_EQ(moved.front()->occurrenceDate(), third + std::chrono::hours(10));
}

TEST_F(EventKit, NewItemsAndCalendarsOutliveAReset) {
  const CalendarRef work = calendar(fixture().addCalendar({"Work"}));
  const CalendarRef tasks = calendar(fixture().addCalendar({"Tasks", EntityType::reminder}));
  const EventRef event = store().newEvent();
  event->setTitle("Tea");
  event->setCalendar(work);
  event->setStartDate(ten);
  const ReminderRef reminder = store().newReminder();
  reminder->setTitle("Todo");
  store().reset();
  event->setEndDate(eleven);
  reminder->setCalendar(tasks);
  ASSERT_EQ(errorOf(store().saveEvent(*event)), "(none)");
  ASSERT_EQ(errorOf(store().saveReminder(*reminder)), "(none)");
  EXPECT_THAT(titles(store().eventsMatchingPredicate({ten, eleven, {{work}}})), ElementsAre("Tea"));
  EXPECT_NE(store().calendarItemWithIdentifier(std::string(reminder->calendarItemIdentifier())),
            nullptr);
}

TEST_F(EventKit, EventThatIsGoneAfterAResetIsNotSaved) {
  const EventRef event = savedEvent();
  fixture().removeEvent(std::string(*event->eventIdentifier()));
  store().reset();
  event->setTitle("Back again");
  EXPECT_EQ(event->title(), "Tea");
  EXPECT_NE(event->calendar(), nullptr);
  EXPECT_EQ(errorOf(store().saveEvent(*event)), "The item does not exist.");
  EXPECT_THAT(titlesFrom(ten, eleven), IsEmpty());
}

TEST_F(EventKit, ResetsBesideRequestsSpoilNothing) {
  const std::string identifier(*savedEvent()->eventIdentifier());
  std::atomic<bool> isOver{false};
  std::thread resets([&] {
    while (!isOver) store().reset();
  });
  for (int i = 0; i < 100; ++i) {
    const EventRef event = store().eventWithIdentifier(identifier);
    event->setTitle("Tea " + std::to_string(i));
    event->setNotes("n");
    EXPECT_EQ(errorOf(store().saveEvent(*event)), "(none)");
    EXPECT_THAT(titlesFrom(ten, eleven), ElementsAre("Tea " + std::to_string(i)));
  }
  isOver = true;
  resets.join();
}

// --- values

TEST_F(EventKit, DueComponentsAreGregorianAndNoMoreThanGiven) {
  const ReminderRef reminder = savedReminder();
  reminder->setDueDateComponents(day(2025, 3, 3));
  EXPECT_EQ(reminder->dueDateComponents(), day(2025, 3, 3));
  DateComponents timed = day(2025, 3, 4);
  timed.hour = 0;
  timed.minute = 15;
  reminder->setDueDateComponents(timed);
  ASSERT_EQ(errorOf(store().saveReminder(*reminder)), "(none)");
  EXPECT_EQ(reminder->dueDateComponents(), timed);
  EXPECT_THAT(eventkit::takeDueCalendars(), ElementsAre("gregorian", "gregorian"));
}

TEST_F(EventKit, TextsComeBackWhole) {
  const EventRef event = savedEvent();
  const std::string text = "zero\0, \xF0\x9F\x8D\xB5, e\xCC\x81"s;
  event->setTitle(text);
  event->setNotes(text);
  event->setLocation("");
  ASSERT_EQ(errorOf(store().saveEvent(*event)), "(none)");
  EXPECT_EQ(event->title(), text);
  EXPECT_EQ(event->notes(), text);
  EXPECT_EQ(event->location(), "");
}

// --- notices

TEST(EventKitNotices, EachChangeIsToldOnceOnTheMainThread) {
  struct Main {
    Arrivals posted;
    std::thread::id thread;
  };
  const auto main = std::make_shared<Main>();
  eventkit::runOnMainThread([main] {
    main->thread = std::this_thread::get_id();
    main->posted.arrive();
  });
  ASSERT_TRUE(main->posted.waitFor(1));

  const auto arrivals = std::make_shared<Arrivals>();
  const auto threads = std::make_shared<std::set<std::thread::id>>();
  // The loop goes on when this test is over, so the store must too.
  static auto* const served = new EventKitFixture;
  served->store().setChangeObserver([=] {
    threads->insert(std::this_thread::get_id());  // always the same thread, or the count fails
    arrivals->arrive();
  });
  served->startMainLoop();
  constexpr int changes = 50;
  for (int i = 0; i < changes; ++i) served->addCalendar({"Work"});
  ASSERT_TRUE(arrivals->waitFor(changes));
  EXPECT_EQ(arrivals->count(), changes);
  EXPECT_THAT(*threads, ElementsAre(main->thread));
}

}  // namespace
}  // namespace tidemark
