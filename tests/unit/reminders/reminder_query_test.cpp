#include "reminders/reminder_query.h"

#include <set>
#include <string>
#include <thread>
#include <vector>

#include "host/dispatcher.h"
#include "tests/support/command_test.h"
#include "tests/support/output_capture.h"

namespace tidemark {
namespace {

using test::at;
using test::CommandTest;
using test::ForwardingStore;
using test::makeCalendar;
using test::makeReminder;
using test::normalized;
using test::OutputCapture;

using Identifiers = std::multiset<std::string>;

// Keeps what was fetched, and what the test delivers in its place, if anything.
class FetchingStore : public ForwardingStore {
 public:
  using ForwardingStore::ForwardingStore;
  void fetchRemindersMatchingPredicate(const ReminderPredicate& predicate,
                                       ReminderCompletion completion) override {
    predicates.push_back(predicate);
    if (!isHolding)
      return ForwardingStore::fetchRemindersMatchingPredicate(predicate, std::move(completion));
    held.push_back(std::move(completion));
  }

  bool isHolding = false;
  std::vector<ReminderPredicate> predicates;
  std::vector<ReminderCompletion> held;
};

class ReminderQueryTest : public CommandTest {
 protected:
  ReminderQueryTest() {
    contents.eventCalendars = {makeCalendar("work", "Work")};
    contents.remindersLists = {food, home};
    contents.reminders = {makeReminder("bread", "Bread", food, 2025, 3, 5),
                          makeReminder("water", "Water", home, 2025, 3, 6),
                          makeReminder("late", "Late", home, 2025, 2, 1),
                          makeReminder("later", "Later", home, 2025, 4, 1)};
  }

  static Identifiers identifiers(const std::string& answer) {
    const Json json = *parseJson(answer);
    const Json* reminders = json.object()->find("reminders");
    if (reminders == nullptr) return {answer};
    Identifiers found;
    for (const Json& record : *reminders->array())
      found.insert(*record.object()->find("id")->string());
    return found;
  }

  // The identifiers in the answer about March 2025, with more members for the request.
  Identifiers listed(const std::string& members = "") {
    return identifiers(
        ask(R"({"cmd":"reminders","from":"2025-03-01","to":"2025-04-01")" + members + "}"));
  }

  const CalendarRef food = makeCalendar("food", "Food");
  const CalendarRef home = makeCalendar("home", "Home");
};

TEST_F(ReminderQueryTest, AnswersRecords) {
  contents.reminders.resize(1);
  EXPECT_EQ(
      ask(R"({"id":[1],"cmd":"reminders","from":"2025-03-01","to":"2025-04-01"})"),
      normalized(
          R"({"id":[1],"reminders":[{"id":"bread","title":"Bread","listId":"food","list":"Food",
                       "isCompleted":false,"priority":0,"hasDueTime":false,"writable":true,
                       "dueDate":"2025-03-05T00:00:00Z"}]})"));
}

TEST_F(ReminderQueryTest, NeedsBothDates) {
  auto& store = wrap<FetchingStore>();
  for (const char* members :
       {"", R"(,"from":"2025-03-01")", R"(,"to":"2025-03-01")", R"(,"from":"2025-03-01","to":"x")",
        R"(,"from":false,"to":"2025-03-01")", R"(,"lists":[])"}) {
    EXPECT_EQ(error(std::string(R"({"cmd":"reminders")") + members + "}"),
              "reminders needs `from` and `to`")
        << members;
  }
  EXPECT_TRUE(store.predicates.empty());
}

TEST_F(ReminderQueryTest, WidensToWhatIsOverdue) {
  EXPECT_EQ(listed(), (Identifiers{"bread", "water"}));
  EXPECT_EQ(listed(R"(,"overdue":true)"), (Identifiers{"bread", "water", "late"}));
  for (const char* other : {"false", "null", "1", R"("true")"}) {
    EXPECT_EQ(listed(std::string(R"(,"overdue":)") + other), (Identifiers{"bread", "water"}))
        << other;
  }
}

TEST_F(ReminderQueryTest, AsksForBothKindsInTheirOrder) {
  auto& store = wrap<FetchingStore>();
  listed();
  listed(R"(,"overdue":true,"lists":["home","home","nothing"])");
  ASSERT_EQ(store.predicates.size(), 4U);
  const Instant from = at("2025-03-01T00:00:00Z");
  const Instant to = at("2025-04-01T00:00:00Z");
  using Kind = ReminderPredicate::Kind;
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(store.predicates[i].kind,
              i % 2 == 0 ? Kind::incompleteByDueDate : Kind::completedByCompletionDate);
    EXPECT_EQ(store.predicates[i].ending, to);
  }
  EXPECT_EQ(store.predicates[0].starting, from);
  EXPECT_EQ(store.predicates[1].starting, from);
  EXPECT_EQ(store.predicates[2].starting, std::nullopt);
  EXPECT_EQ(store.predicates[3].starting, from);
  EXPECT_EQ(store.predicates[0].calendars, std::nullopt);
  EXPECT_EQ(store.predicates[2].calendars, std::vector<CalendarRef>{home});
  EXPECT_EQ(store.predicates[3].calendars, std::vector<CalendarRef>{home});
}

TEST_F(ReminderQueryTest, RestrictsToTheChosenLists) {
  EXPECT_EQ(listed(R"(,"lists":["food","nothing"])"), (Identifiers{"bread"}));
  EXPECT_EQ(listed(R"(,"lists":"food")"), (Identifiers{"bread", "water"}));
  EXPECT_EQ(listed(R"(,"lists":["food",null])"), (Identifiers{"bread", "water"}));
}

TEST_F(ReminderQueryTest, AnswersAChoiceOfNothingWithoutAFetch) {
  auto& store = wrap<FetchingStore>();
  for (const char* choice : {"[]", R"(["nothing"])", R"(["work"])"}) {
    EXPECT_EQ(
        ask(std::string(
                R"({"id":1,"cmd":"reminders","from":"2025-03-01","to":"2025-04-01","lists":)") +
            choice + "}"),
        R"({"id":1,"reminders":[]})")
        << choice;
  }
  EXPECT_TRUE(store.predicates.empty());
}

TEST_F(ReminderQueryTest, PassesOverRemindersWithoutADueDate) {
  for (const bool isCompleted : {false, true}) {
    MemoryReminder undated;
    undated.calendarItemIdentifier = isCompleted ? "done" : "open";
    undated.calendar = home;
    undated.isCompleted = isCompleted;
    undated.completionDate = at("2025-03-10T00:00:00Z");
    contents.reminders.push_back(undated);
  }
  MemoryReminder completed = makeReminder("completed", "Completed", home, 2024, 1, 1);
  completed.isCompleted = true;
  completed.completionDate = at("2025-03-10T00:00:00Z");
  contents.reminders.push_back(completed);
  EXPECT_EQ(listed(R"(,"overdue":true)"), (Identifiers{"bread", "water", "late", "completed"}));
}

TEST_F(ReminderQueryTest, AnswersOnceBothFetchesHaveCompleted) {
  auto& store = wrap<FetchingStore>();
  const ReminderRef bread = store.calendarItemWithIdentifier("bread");
  const ReminderRef again = store.calendarItemWithIdentifier("bread");
  again->setTitle("Later bread");
  store.isHolding = true;

  OutputCapture output;
  handle(
      *parseJson(R"({"id":1,"cmd":"reminders","from":"2025-03-01","to":"2025-04-01"})")->object());
  handle(*parseJson(R"({"id":2,"cmd":"reminders-status"})")->object());
  EXPECT_EQ(normalized(output.next().value_or("")), R"({"id":2,"status":"fullAccess"})");
  ASSERT_EQ(store.held.size(), 2U);
  store.held[1](std::vector{bread});
  store.held[0](std::vector{again});
  store.held.clear();
  const std::string answer = output.next().value_or("");
  // Delivered by both: once, as it was last.
  EXPECT_EQ(identifiers(answer), Identifiers{"bread"});
  EXPECT_NE(answer.find("Later bread"), std::string::npos);
  EXPECT_EQ(output.end(), "");
}

TEST_F(ReminderQueryTest, TakesAFetchThatFailedForEmpty) {
  auto& store = wrap<FetchingStore>();
  const ReminderRef bread = store.calendarItemWithIdentifier("bread");
  store.isHolding = true;
  OutputCapture output;
  handle(*parseJson(R"({"cmd":"reminders","from":"2025-03-01","to":"2025-04-01"})")->object());
  std::thread([&] { store.held[0](std::nullopt); }).join();
  std::thread([&] { store.held[1](std::vector{bread}); }).join();
  EXPECT_EQ(identifiers(output.next().value_or("{}")), Identifiers{"bread"});
}

}  // namespace
}  // namespace tidemark
