#include "access/authorization.h"

#include <vector>

#include "host/dispatcher.h"
#include "tests/support/command_test.h"
#include "tests/support/output_capture.h"

namespace tidemark {
namespace {

using test::CommandTest;
using test::ForwardingStore;
using test::normalized;
using test::OutputCapture;

class AuthorizationTest : public CommandTest {};

TEST(StatusName, NamesEveryNumber) {
  const char* names[] = {"unknown",    "notDetermined", "restricted", "denied",
                         "fullAccess", "writeOnly",     "unknown"};
  for (int status = -1; status <= 5; ++status) EXPECT_EQ(statusName(status), names[status + 1]);
}

TEST_F(AuthorizationTest, TellsEachStatusOnItsOwn) {
  contents.eventsStatus = writeOnly;
  contents.remindersStatus = 99;
  EXPECT_EQ(ask(R"({"id":1,"cmd":"status"})"), R"({"id":1,"status":"writeOnly"})");
  EXPECT_EQ(ask(R"({"id":2,"cmd":"reminders-status"})"), R"({"id":2,"status":"unknown"})");
}

TEST_F(AuthorizationTest, ReadsTheStatusAfreshEachTime) {
  EXPECT_EQ(ask(R"({"cmd":"status"})"), R"({"status":"fullAccess"})");
  memory().change([](MemoryContents& changed) { changed.eventsStatus = denied; });
  EXPECT_EQ(ask(R"({"cmd":"status"})"), R"({"status":"denied"})");
}

TEST_F(AuthorizationTest, RefusesEveryEventCommandWithoutFullAccess) {
  for (const char* command : {"calendars", "events", "create", "update", "delete"}) {
    for (const auto& [status, name] : {std::pair(0, "notDetermined"),
                                       {1, "restricted"},
                                       {2, "denied"},
                                       {4, "writeOnly"},
                                       {-3, "unknown"}}) {
      const int value = status;
      memory().change([&](MemoryContents& changed) { changed.eventsStatus = value; });
      EXPECT_EQ(ask(std::string(R"({"id":"x","cmd":")") + command + "\"}"),
                std::string(R"({"error":"no calendar access: )") + name + R"(","id":"x"})");
    }
  }
}

TEST_F(AuthorizationTest, RefusesEveryReminderCommandWithoutFullAccess) {
  contents.remindersStatus = writeOnly;
  for (const char* command : {"reminder-lists", "reminders", "reminder-complete", "reminder-create",
                              "reminder-update", "reminder-delete"}) {
    EXPECT_EQ(error(std::string(R"({"cmd":")") + command + "\"}"),
              "no reminders access: writeOnly");
  }
}

// A status that changes between two readings.
class ChangingStatus : public ForwardingStore {
 public:
  using ForwardingStore::ForwardingStore;
  AuthorizationStatus authorizationStatusForEntityType(EntityType) const override {
    return reading_++ == 0 ? denied : restricted;
  }

 private:
  mutable int reading_ = 0;
};

TEST_F(AuthorizationTest, NamesTheStatusOfTheSecondReading) {
  wrap<ChangingStatus>();
  EXPECT_EQ(error(R"({"cmd":"calendars"})"), "no calendar access: restricted");
}

// Completes access requests when the test says so, and counts resets.
class HeldAccess : public ForwardingStore {
 public:
  using ForwardingStore::ForwardingStore;
  void requestFullAccessToEvents(AccessCompletion completion) override {
    events.push_back(std::move(completion));
  }
  void requestFullAccessToReminders(AccessCompletion completion) override {
    reminders.push_back(std::move(completion));
  }
  void reset() override { ++resets; }

  std::vector<AccessCompletion> events;
  std::vector<AccessCompletion> reminders;
  int resets = 0;
};

void request(const char* text) {
  handle(*parseJson(text)->object());
}

TEST_F(AuthorizationTest, AnswersAGrantAfterAReset) {
  auto& held = wrap<HeldAccess>();
  OutputCapture output;
  request(R"({"id":{"a":1},"cmd":"auth"})");
  request(R"({"id":2,"cmd":"status"})");
  EXPECT_EQ(normalized(output.next().value_or("")), R"({"id":2,"status":"fullAccess"})");
  ASSERT_EQ(held.events.size(), 1U);  // asked, although access is there already
  EXPECT_EQ(held.resets, 0);
  held.events[0]({true, std::nullopt});
  EXPECT_EQ(normalized(output.next().value_or("")),
            R"({"granted":true,"id":{"a":1},"status":"fullAccess"})");
  EXPECT_EQ(held.resets, 1);
  EXPECT_EQ(output.end(), "");
}

TEST_F(AuthorizationTest, AnswersARefusalWithoutAReset) {
  contents.remindersStatus = denied;
  auto& held = wrap<HeldAccess>();
  OutputCapture output;
  request(R"({"cmd":"reminders-auth"})");
  ASSERT_EQ(held.reminders.size(), 1U);
  held.reminders[0]({false, std::nullopt});
  EXPECT_EQ(normalized(output.next().value_or("")), R"({"granted":false,"status":"denied"})");
  EXPECT_EQ(held.resets, 0);
}

TEST_F(AuthorizationTest, AnswersAnErrorWithItsTextAlone) {
  auto& held = wrap<HeldAccess>();
  OutputCapture output;
  request(R"({"id":null,"cmd":"auth"})");
  held.events.at(0)({true, "The calendar service is away."});
  EXPECT_EQ(normalized(output.next().value_or("")),
            R"({"error":"The calendar service is away.","id":null})");
  EXPECT_EQ(held.resets, 0);
}

TEST_F(AuthorizationTest, GoesThroughToTheStore) {
  contents.eventsStatus = notDetermined;
  EXPECT_EQ(ask(R"({"id":1,"cmd":"auth"})"), R"({"granted":true,"id":1,"status":"fullAccess"})");
  EXPECT_EQ(ask(R"({"id":1,"cmd":"reminders-auth"})"),
            R"({"granted":true,"id":1,"status":"fullAccess"})");
}

}  // namespace
}  // namespace tidemark
