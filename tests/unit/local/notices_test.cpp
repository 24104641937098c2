// What the host is told, and what it is not.
#include <sys/stat.h>

#include <condition_variable>
#include <mutex>
#include <thread>

#include "store/local/local_store_parts.h"
#include "tests/unit/local/scratch_store.h"

namespace tidemark::local {
namespace {

namespace fs = std::filesystem;

class Notices : public ScratchStore {
 public:
  // Serves a store for ever, as the process does; the store is never destroyed.
  Store& listen(std::vector<std::string> candidates) {
    static auto* const stores = new std::vector<std::unique_ptr<Store>>;
    stores->push_back(makeLocalStore(std::move(candidates), makeWatcher()));
    Store& served = *stores->back();
    served_ = &served;
    served.setChangeObserver([heard = heard_] {
      const std::lock_guard guard(heard->lock);
      ++heard->count;
      heard->arrived.notify_all();
    });
    std::thread([&served] { served.run(); }).detach();
    static_cast<void>(served.calendarsForEntityType(EntityType::event));
    return served;
  }
  Store& listen() { return listen({root()}); }

  int count() const {
    const std::lock_guard guard(heard_->lock);
    return heard_->count;
  }
  // False when the deadline passes before one more than `before` came.
  bool comesAfter(int before) const {
    std::unique_lock guard(heard_->lock);
    return heard_->arrived.wait_for(guard, deadline, [&] { return heard_->count > before; });
  }

  template <typename Change>
  void expectNotice(const char* what, const Change& change) {
    // What was changed before is read in, and what it leads to is watched.
    static_cast<void>(served_->calendarsForEntityType(EntityType::event));
    const int before = count();
    change();
    EXPECT_TRUE(comesAfter(before)) << what;
    settle();
  }
  // Further notices of the same change have come: the kernel tells in order.
  void settle() {
    const int before = count();
    put(root() / "marker/m.ics", eventText("m", std::to_string(++markers_)));
    EXPECT_TRUE(comesAfter(before));
  }

 private:
  struct Heard {
    std::mutex lock;
    std::condition_variable arrived;
    int count = 0;
  };
  const std::shared_ptr<Heard> heard_ = std::make_shared<Heard>();
  Store* served_ = nullptr;
  int markers_ = 0;
};

TEST_F(Notices, TellOfEverythingThatAnAnswerShows) {
  write(root() / "work/a.ics", eventText("a", "A"));
  write(root() / "marker/m.ics", eventText("m", "M"));
  listen();
  expectNotice("replaced", [&] { put(root() / "work/a.ics", eventText("a", "B")); });
  expectNotice("new", [&] { put(root() / "work/b.ics", eventText("b", "B")); });
  expectNotice("in place", [&] { write(root() / "work/b.ics", eventText("b", "C")); });
  expectNotice("removed", [&] { fs::remove(root() / "work/b.ics"); });
  expectNotice("metadata", [&] { write(root() / "work/color", "red"); });
  expectNotice("metadata gone", [&] { fs::remove(root() / "work/color"); });
  expectNotice("permissions", [&] { ::chmod((root() / "work").c_str(), 0555); });
  expectNotice("new collection", [&] { fs::create_directory(root() / "home"); });
  expectNotice("renamed collection", [&] { fs::rename(root() / "home", root() / "other"); });
  expectNotice("in a renamed one", [&] { put(root() / "other/c.ics", eventText("c", "C")); });
  expectNotice("removed collection", [&] { fs::remove_all(root() / "other"); });
  expectNotice("linked", [&] {
    write(scratch() / "target.ics", eventText("t", "T"));
    fs::create_symlink(scratch() / "target.ics", root() / "work/t.ics");
  });
  expectNotice("behind a link", [&] { put(scratch() / "target.ics", eventText("t", "U")); });
  expectNotice("hard link", [&] {
    write(scratch() / "aside", eventText("h", "H"));
    fs::create_hard_link(scratch() / "aside", root() / "work/h.ics");
  });
}

TEST_F(Notices, AreOneForOneRename) {
  write(root() / "work/a.ics", eventText("a", "A"));
  listen();
  for (int change = 0; change < 20; ++change) {
    const int before = count();
    put(root() / "work/a.ics", eventText("a", std::to_string(change)));
    ASSERT_TRUE(comesAfter(before));
    EXPECT_EQ(count(), before + 1);
  }
}

TEST_F(Notices, AreOneForWhatTheStoreItselfMakesAndRemoves) {
  write(root() / "work/a.ics", eventText("a", "A"));
  Store& served = listen();
  for (int round = 0; round < 20; ++round) {
    const EventRef event = served.newEvent();
    event->setStartDate(instant(2025, 3, 4));
    event->setEndDate(instant(2025, 3, 5));
    event->setCalendar(served.calendarsForEntityType(EntityType::event).front());
    int before = count();
    ASSERT_TRUE(served.saveEvent(*event));
    ASSERT_TRUE(comesAfter(before));
    EXPECT_EQ(count(), before + 1);
    before = count();
    ASSERT_TRUE(served.removeEvent(*event));
    ASSERT_TRUE(comesAfter(before));
    EXPECT_EQ(count(), before + 1);
  }
}

TEST_F(Notices, AreSilentAboutLitter) {
  write(root() / "work/a.ics", eventText("a", "A"));
  listen();
  const int before = count();
  for (const char* name : {".b.ics", "b.tmp", "b.ics~", "b.sync-conflict-1.ics", "notes.txt"}) {
    write(root() / "work" / name, "x");
    put(root() / "work" / name, "y");
    fs::remove(root() / "work" / name);
  }
  put(root() / "work/a.ics", eventText("a", "B"));
  ASSERT_TRUE(comesAfter(before));
  EXPECT_EQ(count(), before + 1);
}

TEST_F(Notices, ComeThoughAQueryWasFirst) {
  write(root() / "work/a.ics", eventText("a", "A"));
  Store& served = listen();
  for (int change = 0; change < 50; ++change) {
    const int before = count();
    const std::string title = std::to_string(change);
    put(root() / "work/a.ics", eventText("a", title));
    EXPECT_EQ(served.eventWithIdentifier("work:a")->title(), title);
    EXPECT_TRUE(comesAfter(before));
  }
}

TEST_F(Notices, TellThatARootCame) {
  const fs::path later = scratch() / "not/yet/calendars";
  Store& served = listen({later, scratch() / "nor/this"});
  EXPECT_EQ(served.authorizationStatusForEntityType(EntityType::event), notDetermined);
  const auto expectNoticeOf = [&](const char* what, const auto& change) {
    const int before = count();
    change();
    EXPECT_TRUE(comesAfter(before)) << what;
    // A later notice of the change before may have been it: now this one is taken in, too.
    static_cast<void>(served.calendarsForEntityType(EntityType::event));
  };
  expectNoticeOf("a root", [&] { fs::create_directories(later / "work"); });
  expectNoticeOf("a file in it", [&] { put(later / "work/a.ics", eventText("a", "A")); });
  EXPECT_EQ(served.eventWithIdentifier("work:a")->title(), "A");
  expectNoticeOf("it went", [&] { fs::rename(later, scratch() / "not/gone"); });
  expectNoticeOf("it is back", [&] { fs::rename(scratch() / "not/gone", later); });
  expectNoticeOf("it went with what it is in",
                 [&] { fs::rename(scratch() / "not", scratch() / "gone"); });
  expectNoticeOf("and is back", [&] { fs::rename(scratch() / "gone", scratch() / "not"); });
  EXPECT_EQ(served.eventWithIdentifier("work:a")->title(), "A");
}

TEST_F(Notices, TellThatABetterRootCame) {
  const fs::path better = scratch() / "better";
  Store& served = listen({better, root()});
  const int before = count();
  fs::create_directories(better / "first");
  EXPECT_TRUE(comesAfter(before));
  ASSERT_EQ(served.calendarsForEntityType(EntityType::event).size(), 1u);
  EXPECT_EQ(served.calendarsForEntityType(EntityType::event)[0]->title, "first");
}

}  // namespace
}  // namespace tidemark::local
