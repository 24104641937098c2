#include "host/dispatcher.h"

#include <string>

#include "tests/support/command_test.h"

namespace tidemark {
namespace {

using test::CommandTest;

class DispatcherTest : public CommandTest {};

class BrokenStore : public test::ForwardingStore {
 public:
  using ForwardingStore::ForwardingStore;
  std::vector<CalendarRef> calendarsForEntityType(EntityType) override { throw StoreError("torn"); }
  std::vector<EventRef> eventsMatchingPredicate(const EventPredicate&) override {
    throw StoreError("worn");
  }
};

TEST_F(DispatcherTest, NamesTheCommandThatItDoesNotKnow) {
  EXPECT_EQ(ask(R"({"id":1,"cmd":"Status"})"), R"({"error":"unknown command: Status","id":1})");
  EXPECT_EQ(error(R"({"cmd":""})"), "unknown command: ");
  EXPECT_EQ(error(R"({"cmd":"none"})"), "unknown command: none");
  EXPECT_EQ(error(R"({"cmd":" status"})"), "unknown command:  status");
  EXPECT_EQ(error(R"({"cmd":"stat"})"), "unknown command: stat");
  EXPECT_EQ(error(R"({"cmd":"status\u0000"})"), std::string("unknown command: status\0", 24));
}

TEST_F(DispatcherTest, TakesACommandThatIsNoTextForNone) {
  EXPECT_EQ(ask(R"({"id":1})"), R"({"error":"unknown command: none","id":1})");
  for (const char* command : {"5", "null", "true", "[\"status\"]", "{}"}) {
    EXPECT_EQ(ask(std::string(R"({"id":1,"cmd":)") + command + "}"),
              R"({"error":"unknown command: none","id":1})");
  }
}

TEST_F(DispatcherTest, SendsTheIdBackAsItCame) {
  EXPECT_EQ(ask(R"({"cmd":"status"})"), R"({"status":"fullAccess"})");
  for (const char* id :
       {"null", "0", "1.50", "12345678901234567890", "\"\"", "{\"a\":1}", "[1,[2]]", "false"}) {
    EXPECT_EQ(ask(std::string(R"({"cmd":"status","id":)") + id + "}"),
              std::string(R"({"id":)") + id + R"(,"status":"fullAccess"})");
  }
}

TEST_F(DispatcherTest, AnswersAQueryThatIsBrokenOffWithTheStoresWords) {
  wrap<BrokenStore>();
  EXPECT_EQ(ask(R"({"id":1,"cmd":"calendars"})"), R"({"error":"torn","id":1})");
  EXPECT_EQ(ask(R"({"id":2,"cmd":"events","from":"2025-03-01","to":"2025-03-02"})"),
            R"({"error":"worn","id":2})");
  EXPECT_EQ(error(R"({"cmd":"delete","eventId":"e","occurrence":"2025-03-01"})"), "worn");
  EXPECT_EQ(ask(R"({"id":3,"cmd":"status"})"), R"({"id":3,"status":"fullAccess"})");
}

TEST_F(DispatcherTest, KnowsEveryCommand) {
  for (const char* command :
       {"auth", "status", "calendars", "events", "create", "update", "delete", "reminders-auth",
        "reminders-status", "reminder-lists", "reminders", "reminder-complete", "reminder-create",
        "reminder-update", "reminder-delete"}) {
    const std::string answer = ask(std::string(R"({"cmd":")") + command + "\"}");
    EXPECT_EQ(answer.find("unknown command"), std::string::npos) << command;
  }
}

}  // namespace
}  // namespace tidemark
