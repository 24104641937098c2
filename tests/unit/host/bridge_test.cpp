#include "host/bridge.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "store/memory/memory_store.h"
#include "tests/support/bridge_process.h"
#include "tests/support/forwarding_store.h"

namespace tidemark {
namespace {

using test::BridgeProcess;
using test::ForwardingStore;

using namespace std::string_literals;

const std::string ready = R"({"event":"ready","status":"fullAccess"})";
const std::string badJson = R"({"error":"bad JSON"})";

std::unique_ptr<Store> makeEmptyStore() {
  return makeMemoryStore({});
}

TEST(Bridge, SaysThatItIsReadyWithTheStatusOfEvents) {
  BridgeProcess bridge([] {
    MemoryContents contents;
    contents.eventsStatus = writeOnly;
    contents.remindersStatus = denied;
    return makeMemoryStore(contents);
  });
  EXPECT_EQ(bridge.next(), R"({"event":"ready","status":"writeOnly"})");
}

TEST(Bridge, EndsWithTheInput) {
  BridgeProcess bridge(makeEmptyStore);
  bridge.endInput();
  const std::string output = bridge.rest();  // the ready line may be missing
  EXPECT_TRUE(output.empty() || output == ready + "\n") << output;
  EXPECT_EQ(bridge.status(), 0);
  EXPECT_EQ(bridge.errors(), "");
}

TEST(Bridge, AnswersALastLineWithoutItsEnd) {
  BridgeProcess bridge(makeEmptyStore);
  EXPECT_EQ(bridge.next(), ready);
  bridge.write(R"({"id":1,"cmd":"status"})");
  bridge.endInput();
  EXPECT_EQ(bridge.next(), R"({"id":1,"status":"fullAccess"})");
  EXPECT_EQ(bridge.status(), 0);
}

TEST(Bridge, PassesOverBlankLinesAndTrimsTheRest) {
  BridgeProcess bridge(makeEmptyStore);
  EXPECT_EQ(bridge.next(), ready);
  bridge.write("\n \t \n\r\n\u00A0\u1680\u2000\u200A\u202F\u205F\u3000\n");
  bridge.write("\u3000\t {\"id\":1,\"cmd\":\"status\"} \u2003\u00A0\r\n");
  EXPECT_EQ(bridge.next(), R"({"id":1,"status":"fullAccess"})");
}

TEST(Bridge, AnswersWhatIsNoRequestAndGoesOn) {
  BridgeProcess bridge(makeEmptyStore);
  EXPECT_EQ(bridge.next(), ready);
  for (const std::string& line :
       {"[]"s, "[{\"id\":1}]"s, "7"s, "\"status\""s, "null"s, "{"s, "{\"id\":1"s, "{\"id\":1}}"s,
        "nonsense"s, "{\"id\":1}\0"s, "{\"id\":\"\xFF\"}"s, "\xFF"s, "\v"s, "\u200B"s, "\r"s,
        "{\"id\":1e999}"s}) {
    bridge.write(line + "\r\n");
    EXPECT_EQ(bridge.next(), badJson) << line;
  }
  bridge.write("{\"id\":1,\"cmd\":\"status\"}\n");
  EXPECT_EQ(bridge.next(), R"({"id":1,"status":"fullAccess"})");
}

TEST(Bridge, AnswersInTheOrderOfTheRequests) {
  BridgeProcess bridge(makeEmptyStore);
  EXPECT_EQ(bridge.next(), ready);
  std::string requests;
  for (int id = 0; id < 2000; ++id)
    requests += "{\"id\":" + std::to_string(id) + ",\"cmd\":\"status\"}\n";
  bridge.write(requests);
  for (int id = 0; id < 2000; ++id) {
    ASSERT_EQ(bridge.next(), "{\"id\":" + std::to_string(id) + R"(,"status":"fullAccess"})");
  }
}

TEST(Bridge, SendsAnIdOfMegabytesBack) {
  BridgeProcess bridge(makeEmptyStore);
  EXPECT_EQ(bridge.next(), ready);
  const std::string id(3000000, 'x');
  bridge.write("{\"id\":\"" + id + "\",\"cmd\":\"status\"}\n");
  EXPECT_EQ(bridge.next(), "{\"id\":\"" + id + R"(","status":"fullAccess"})");
}

// Posts five changes.
class ChangingStore : public ForwardingStore {
 public:
  using ForwardingStore::ForwardingStore;
  void setChangeObserver(std::function<void()> observer) override {
    observer_ = std::move(observer);
  }
  [[noreturn]] void run() override {
    for (int i = 0; i < 5; ++i) observer_();
    while (true) ::pause();
  }

 private:
  std::function<void()> observer_;
};

TEST(Bridge, TellsEachChangeOnALineOfItsOwn) {
  BridgeProcess bridge([] { return std::make_unique<ChangingStore>(makeEmptyStore()); });
  EXPECT_EQ(bridge.next(), ready);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(bridge.next(), R"({"event":"changed"})");
  bridge.endInput();
  EXPECT_EQ(bridge.rest(), "");
}

// Completes an access request for each byte that comes down a pipe of the test's.
class HeldAccess : public ForwardingStore {
 public:
  explicit HeldAccess(int releases) : ForwardingStore(makeEmptyStore()), releases_(releases) {}
  void requestFullAccessToEvents(AccessCompletion completion) override {
    std::thread([this, completion = std::move(completion)] {
      char byte;
      if (::read(releases_, &byte, 1) == 1) completion({true, std::nullopt});
    }).detach();
  }

 private:
  const int releases_;
};

TEST(Bridge, WaitsAtTheEndOfTheInputForOpenAccessRequests) {
  int releases[2];
  ASSERT_EQ(::pipe(releases), 0);
  BridgeProcess bridge([&] { return std::make_unique<HeldAccess>(releases[0]); });
  EXPECT_EQ(bridge.next(), ready);
  bridge.write(
      "{\"id\":1,\"cmd\":\"auth\"}\n{\"id\":2,\"cmd\":\"auth\"}\n{\"id\":3,\"cmd\":\"status\"}\n");
  bridge.endInput();
  EXPECT_EQ(bridge.next(), R"({"id":3,"status":"fullAccess"})");
  std::set<std::string> answers;
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(::write(releases[1], "x", 1), 1);
    answers.insert(bridge.next());
  }
  EXPECT_EQ(answers, (std::set<std::string>{R"({"granted":true,"id":1,"status":"fullAccess"})",
                                            R"({"granted":true,"id":2,"status":"fullAccess"})"}));
  EXPECT_EQ(bridge.rest(), "");
  EXPECT_EQ(bridge.status(), 0);
}

// Never completes a fetch.
class DeafFetches : public ForwardingStore {
 public:
  using ForwardingStore::ForwardingStore;
  void fetchRemindersMatchingPredicate(const ReminderPredicate&,
                                       ReminderCompletion completion) override {
    kept_.push_back(std::move(completion));
  }

 private:
  std::vector<ReminderCompletion> kept_;
};

TEST(Bridge, DoesNotWaitAtTheEndOfTheInputForReminders) {
  BridgeProcess bridge([] { return std::make_unique<DeafFetches>(makeEmptyStore()); });
  EXPECT_EQ(bridge.next(), ready);
  bridge.write(R"({"cmd":"reminders","from":"2025-03-01","to":"2025-04-01"})");
  bridge.endInput();
  EXPECT_EQ(bridge.rest(), "");
  EXPECT_EQ(bridge.status(), 0);
}

TEST(Bridge, ServesNonBlockingPipes) {
  BridgeProcess bridge(makeEmptyStore, BridgeProcess::Pipes::nonBlocking);
  EXPECT_EQ(bridge.next(), ready);
  const std::string id(1000000, 'x');
  bridge.write("{\"id\":\"" + id + "\",\"cmd\":\"status\"}\n");
  EXPECT_EQ(bridge.next(), "{\"id\":\"" + id + R"(","status":"fullAccess"})");
  bridge.endInput();
  EXPECT_EQ(bridge.status(), 0);
}

// A calendar without a source, which cannot be put in order.
std::unique_ptr<Store> makeBrokenStore() {
  MemoryContents contents;
  contents.eventCalendars = {std::make_shared<Calendar>(), std::make_shared<Calendar>()};
  return makeMemoryStore(contents);
}

TEST(Bridge, EndsWithoutAWordForABrokenStore) {
  BridgeProcess bridge(makeBrokenStore);
  EXPECT_EQ(bridge.next(), ready);
  bridge.write("{\"cmd\":\"calendars\"}\n");
  EXPECT_EQ(bridge.rest(), "");
  EXPECT_EQ(bridge.errors(), "");
  EXPECT_EQ(bridge.status(), -SIGABRT);
}

void runWithoutDescriptors() {
  ::close(STDIN_FILENO);
  ::close(STDOUT_FILENO);
  std::_Exit(100 + runBridge([] {
               // What a store opens must not pass for the host's pipes.
               if (::open("/dev/null", O_RDONLY) <= STDERR_FILENO) std::_Exit(99);
               return makeEmptyStore();
             }));
}

TEST(Bridge, TakesDescriptorsThatAreClosedForEmpty) {
  EXPECT_EXIT(runWithoutDescriptors(), testing::ExitedWithCode(0), "^$");
}

}  // namespace
}  // namespace tidemark
