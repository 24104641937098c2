#include "store/local/tree/root.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <future>

#include "tests/unit/local/scratch_store.h"

namespace tidemark::local {
namespace {

class Root : public ScratchStore {
 public:
  Root() {
    ::setenv("HOME", (scratch() / "home").c_str(), 1);
    ::setenv("XDG_DATA_HOME", (scratch() / "data").c_str(), 1);
  }

  static AccessResult request(Store& store) {
    std::promise<AccessResult> promise;
    store.requestFullAccessToEvents([&](AccessResult result) { promise.set_value(result); });
    auto future = promise.get_future();
    EXPECT_EQ(future.wait_for(deadline), std::future_status::ready);
    return future.get();
  }

  void makeDirectory(const std::filesystem::path& path) {
    std::filesystem::create_directories(path);
  }
};

TEST_F(Root, IsTheFirstCandidateThatExists) {
  const auto candidates = rootCandidates();
  EXPECT_EQ(candidates, (Titles{scratch() / "data/calendars", scratch() / "home/.calendars",
                                scratch() / "home/calendars"}));
  EXPECT_EQ(findRoot(candidates), std::nullopt);
  makeDirectory(scratch() / "home/calendars");
  EXPECT_EQ(findRoot(candidates), scratch() / "home/calendars");
  makeDirectory(scratch() / "home/.calendars");
  EXPECT_EQ(findRoot(candidates), scratch() / "home/.calendars");
  makeDirectory(scratch() / "data/calendars");
  EXPECT_EQ(findRoot(candidates), scratch() / "data/calendars");
}

TEST_F(Root, NeedsAnAbsoluteDataHome) {
  for (const char* value : {"", "relative/data"}) {
    ::setenv("XDG_DATA_HOME", value, 1);
    EXPECT_EQ(rootCandidates().front(), scratch() / "home/.local/share/calendars");
  }
  ::unsetenv("XDG_DATA_HOME");
  EXPECT_EQ(rootCandidates().front(), scratch() / "home/.local/share/calendars");
}

TEST_F(Root, StatusSaysWhetherItCanBeUsed) {
  const auto candidates = rootCandidates();
  EXPECT_EQ(rootStatus(candidates), notDetermined);
  makeDirectory(candidates.front());
  EXPECT_EQ(rootStatus(candidates), fullAccess);
  for (const mode_t mode : {0000, 0333, 0666, 0222, 0200}) {
    ASSERT_EQ(::chmod(candidates.front().c_str(), mode), 0);
    EXPECT_EQ(rootStatus(candidates), denied) << std::oct << mode;
  }
  ASSERT_EQ(::chmod(candidates.front().c_str(), 0500), 0);
  EXPECT_EQ(rootStatus(candidates), fullAccess);
  std::filesystem::remove(candidates.front());
  write(candidates.front(), "a file");
  EXPECT_EQ(rootStatus(candidates), restricted);
}

TEST_F(Root, RequestMakesIt) {
  setCandidates(rootCandidates());
  EXPECT_EQ(store().authorizationStatusForEntityType(EntityType::reminder), notDetermined);
  EXPECT_EQ(store().defaultCalendarForNewEvents(), nullptr);
  const AccessResult result = request(store());
  EXPECT_TRUE(result.granted);
  EXPECT_EQ(result.error, std::nullopt);
  EXPECT_EQ(store().authorizationStatusForEntityType(EntityType::event), fullAccess);
  struct stat status {};
  ASSERT_EQ(::stat(rootCandidates().front().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0700u);

  EXPECT_EQ(identifiers(EntityType::event), Titles{"calendar"});
  EXPECT_EQ(identifiers(EntityType::reminder), Titles{"reminders"});
  EXPECT_EQ(store().defaultCalendarForNewEvents()->title, "Calendar");
  EXPECT_EQ(store().defaultCalendarForNewReminders()->title, "Reminders");
  // Nothing is left beside it.
  const std::filesystem::directory_iterator entries(scratch() / "data");
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 1);
}

TEST_F(Root, RequestGrantsWhatTheStatusSays) {
  setCandidates(rootCandidates());
  makeDirectory(rootCandidates().front());
  EXPECT_TRUE(request(store()).granted);
  EXPECT_TRUE(std::filesystem::is_empty(rootCandidates().front()));
  ASSERT_EQ(::chmod(rootCandidates().front().c_str(), 0), 0);
  const AccessResult refused = request(store());
  EXPECT_FALSE(refused.granted);
  EXPECT_EQ(refused.error, std::nullopt);
  ASSERT_EQ(::chmod(rootCandidates().front().c_str(), 0700), 0);
}

TEST_F(Root, RequestThatFailsSaysWhatTheSystemSays) {
  write(scratch() / "data", "a file where a directory should be");
  setCandidates(rootCandidates());
  const AccessResult result = request(store());
  EXPECT_FALSE(result.granted);
  EXPECT_EQ(result.error, "Not a directory");
}

TEST_F(Root, TwoRequestsAtOnceMakeOneRoot) {
  setCandidates(rootCandidates());
  std::promise<AccessResult> first;
  std::promise<AccessResult> second;
  store().requestFullAccessToEvents([&](AccessResult result) { first.set_value(result); });
  store().requestFullAccessToReminders([&](AccessResult result) { second.set_value(result); });
  for (auto* promise : {&first, &second}) {
    auto future = promise->get_future();
    ASSERT_EQ(future.wait_for(deadline), std::future_status::ready);
    const AccessResult result = future.get();
    EXPECT_TRUE(result.granted);
    EXPECT_EQ(result.error, std::nullopt);
  }
  const std::filesystem::directory_iterator entries(scratch() / "data");
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 1);
}

}  // namespace
}  // namespace tidemark::local
