// Every answer shows what was on disk before it was asked for: over watches, and over none.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/unit/local/scratch_store.h"

namespace tidemark::local {
namespace {

namespace fs = std::filesystem;

// Says that more happened than it kept, whenever something did.
class OverflowingWatcher final : public Watcher {
 public:
  std::optional<WatchId> watch(const std::string& directory, Interest interest) override {
    return watcher_->watch(directory, interest);
  }
  void unwatch(WatchId watch) override { watcher_->unwatch(watch); }
  WatchBatch drain() override {
    const WatchBatch batch = watcher_->drain();
    return {{}, !batch.events.empty()};
  }
  int descriptor() const override { return watcher_->descriptor(); }

 private:
  std::unique_ptr<Watcher> watcher_ = makeWatcher();
};

// Has a single watch to give.
class MeagreWatcher final : public Watcher {
 public:
  std::optional<WatchId> watch(const std::string& directory, Interest interest) override {
    if (isGiven_) return std::nullopt;
    isGiven_ = true;
    return watcher_->watch(directory, interest);
  }
  void unwatch(WatchId watch) override { watcher_->unwatch(watch); }
  WatchBatch drain() override { return watcher_->drain(); }
  int descriptor() const override { return watcher_->descriptor(); }

 private:
  bool isGiven_ = false;
  std::unique_ptr<Watcher> watcher_ = makeWatcher();
};

struct Watching {
  const char* name;
  std::unique_ptr<Watcher> (*make)();
};
void PrintTo(const Watching& watching, std::ostream* out) {
  *out << watching.name;
}

class LiveChanges : public ScratchStore, public testing::WithParamInterface<Watching> {
 public:
  LiveChanges() {
    setWatcher(GetParam().make());
    write(root() / "work/a.ics", eventText("a", "A"));
    EXPECT_EQ(titles(), Titles{"A"});
  }
};

TEST_P(LiveChanges, RenamedIntoPlace) {
  put(root() / "work/a.ics", eventText("a", "Changed"));
  EXPECT_EQ(titles(), Titles{"Changed"});
  put(root() / "work/b.ics", eventText("b", "New"));
  EXPECT_EQ(titles(), (Titles{"Changed", "New"}));
}

TEST_P(LiveChanges, WrittenInPlace) {
  write(root() / "work/a.ics", eventText("a", "B"));
  EXPECT_EQ(titles(), Titles{"B"});
  // Of the same size and in the same instant, as far as clocks can tell.
  for (char title = 'C'; title <= 'Z'; ++title) {
    write(root() / "work/a.ics", eventText("a", std::string(1, title)));
    ASSERT_EQ(titles(), Titles{std::string(1, title)});
  }
}

TEST_P(LiveChanges, LinkedIntoPlace) {
  write(scratch() / "aside", eventText("b", "Linked"));
  fs::create_hard_link(scratch() / "aside", root() / "work/b.ics");
  fs::remove(scratch() / "aside");
  EXPECT_EQ(titles(), (Titles{"A", "Linked"}));
}

TEST_P(LiveChanges, RemovedAndRenamedAway) {
  write(root() / "work/b.ics", eventText("b", "B"));
  EXPECT_EQ(titles(), (Titles{"A", "B"}));
  fs::remove(root() / "work/a.ics");
  EXPECT_EQ(titles(), Titles{"B"});
  fs::rename(root() / "work/b.ics", scratch() / "b.ics");
  EXPECT_EQ(titles(), Titles{});
}

TEST_P(LiveChanges, RenamedWithinItsCollection) {
  fs::rename(root() / "work/a.ics", root() / "work/z.ics");
  EXPECT_EQ(titles(), Titles{"A"});
  fs::rename(root() / "work/z.ics", root() / "work/.z.ics");
  EXPECT_EQ(titles(), Titles{});
}

TEST_P(LiveChanges, NewCollections) {
  write(root() / "home/b.ics", eventText("b", "B"));
  EXPECT_EQ(titles(), (Titles{"B", "A"}));
  write(root() / "account/team/c.ics", eventText("c", "C"));
  EXPECT_EQ(titles(), (Titles{"C", "B", "A"}));
  EXPECT_EQ(identifiers(EntityType::event), (Titles{"account/team", "home", "work"}));
}

TEST_P(LiveChanges, RenamedAndRemovedCollections) {
  fs::rename(root() / "work", root() / "office");
  EXPECT_EQ(identifiers(EntityType::event), Titles{"office"});
  EXPECT_NE(store().eventWithIdentifier("office:a"), nullptr);
  EXPECT_EQ(store().eventWithIdentifier("work:a"), nullptr);
  put(root() / "office/a.ics", eventText("a", "B"));
  EXPECT_EQ(titles(), Titles{"B"});
  fs::create_directory(root() / "account");
  fs::rename(root() / "office", root() / "account/office");
  EXPECT_EQ(identifiers(EntityType::event), Titles{"account/office"});
  fs::remove_all(root() / "account");
  EXPECT_EQ(identifiers(EntityType::event), Titles{});
}

TEST_P(LiveChanges, CollectionInThePlaceOfAnother) {
  write(scratch() / "other/a.ics", eventText("a", "Other"));
  fs::rename(root() / "work", scratch() / "away");
  fs::rename(scratch() / "other", root() / "work");
  EXPECT_EQ(titles(), Titles{"Other"});
}

TEST_P(LiveChanges, Metadata) {
  put(root() / "work/displayname", "Title");
  EXPECT_EQ(calendar("work")->title, "Title");
  write(root() / "work/displayname", "Other title");
  EXPECT_EQ(calendar("work")->title, "Other title");
  fs::remove(root() / "work/displayname");
  EXPECT_EQ(calendar("work")->title, "work");
  write(root() / "work/supported-calendar-component-set", "VTODO");
  EXPECT_EQ(titles(), Titles{});
}

TEST_P(LiveChanges, Permissions) {
  EXPECT_TRUE(calendar("work")->allowsContentModifications);
  ASSERT_EQ(::chmod((root() / "work").c_str(), 0555), 0);
  EXPECT_FALSE(calendar("work")->allowsContentModifications);
  ASSERT_EQ(::chmod((root() / "work").c_str(), 0755), 0);
  EXPECT_TRUE(calendar("work")->allowsContentModifications);
}

TEST_P(LiveChanges, NothingIsWrittenWhereNothingIsFound) {
  if (::geteuid() == 0) GTEST_SKIP() << "root searches every directory";
  ASSERT_EQ(::chmod((root() / "work").c_str(), 0600), 0);
  EXPECT_FALSE(calendar("work")->allowsContentModifications);
  ASSERT_EQ(::chmod((root() / "work").c_str(), 0), 0);
  EXPECT_FALSE(calendar("work")->allowsContentModifications);
  ASSERT_EQ(::chmod((root() / "work").c_str(), 0755), 0);
  EXPECT_TRUE(calendar("work")->allowsContentModifications);
  ASSERT_EQ(::chmod((root() / "work").c_str(), 0), 0);
  EXPECT_FALSE(calendar("work")->allowsContentModifications);
  ASSERT_EQ(::chmod((root() / "work").c_str(), 0755), 0);
}

TEST_P(LiveChanges, RootThatGoesAndComes) {
  fs::rename(root(), scratch() / "away");
  EXPECT_EQ(titles(), Titles{});
  EXPECT_EQ(store().authorizationStatusForEntityType(EntityType::event), notDetermined);
  write(root() / "home/b.ics", eventText("b", "B"));
  EXPECT_EQ(titles(), Titles{"B"});
  fs::remove_all(root());
  EXPECT_EQ(titles(), Titles{});
  fs::rename(scratch() / "away", root());
  EXPECT_EQ(titles(), Titles{"A"});
}

TEST_P(LiveChanges, BehindLinkedFiles) {
  write(scratch() / "target.ics", eventText("b", "B"));
  fs::create_symlink(scratch() / "target.ics", root() / "work/b.ics");
  EXPECT_EQ(titles(), (Titles{"A", "B"}));
  write(scratch() / "target.ics", eventText("b", "C"));
  EXPECT_EQ(titles(), (Titles{"A", "C"}));
  put(scratch() / "target.ics", eventText("b", "Renamed"));
  EXPECT_EQ(titles(), (Titles{"A", "Renamed"}));
  fs::remove(scratch() / "target.ics");
  EXPECT_EQ(titles(), Titles{"A"});
  write(scratch() / "target.ics", eventText("b", "Back"));
  EXPECT_EQ(titles(), (Titles{"A", "Back"}));
  write(scratch() / "other.ics", eventText("b", "Other"));
  fs::create_symlink(scratch() / "other.ics", scratch() / "link");
  fs::rename(scratch() / "link", root() / "work/b.ics");
  EXPECT_EQ(titles(), (Titles{"A", "Other"}));
}

TEST_P(LiveChanges, ItemsThatBecomeDirectories) {
  fs::remove(root() / "work/a.ics");
  fs::create_directory(root() / "work/a.ics");
  EXPECT_EQ(titles(), Titles{});
  fs::remove(root() / "work/a.ics");
  write(root() / "work/a.ics", eventText("a", "Again"));
  EXPECT_EQ(titles(), Titles{"Again"});
}

TEST_P(LiveChanges, NeverShowHalfAFile) {
  const std::string text = eventText("a", "Whole") + eventText("b", "Second");
  const int file = ::open((root() / "work/a.ics").c_str(), O_WRONLY | O_TRUNC);
  ASSERT_GE(file, 0);
  for (std::size_t size = 0; size + 1 < text.size(); size += 50) {
    ASSERT_GE(::write(file, text.data() + size, std::min<std::size_t>(50, text.size() - size)), 0);
    const Titles found = titles();
    EXPECT_TRUE(found == Titles{"A"} || found == Titles{"Whole"} ||
                found == (Titles{"Whole", "Second"}))
        << testing::PrintToString(found);
  }
  ::close(file);
  EXPECT_EQ(titles(), (Titles{"Whole", "Second"}));
}

TEST_P(LiveChanges, LitterIsNothing) {
  for (const char* name : {".b.ics", "b.ics.tmp", "b.ics~", "b.sync-conflict-1.ics", "b.txt"}) {
    write(root() / "work" / name, eventText("b", name));
  }
  EXPECT_EQ(titles(), Titles{"A"});
}

TEST_P(LiveChanges, ManyAtOnce) {
  Titles expected;
  for (int i = 0; i < 1500; ++i) {
    const std::string name = std::to_string(10'000 + i);
    put(root() / "work" / (name + ".ics"), eventText(name, name));
    expected.push_back(name);
  }
  expected.push_back("A");
  EXPECT_EQ(titles(), expected);
  for (int i = 0; i < 1500; ++i) {
    fs::remove(root() / "work" / (std::to_string(10'000 + i) + ".ics"));
  }
  EXPECT_EQ(titles(), Titles{"A"});
}

INSTANTIATE_TEST_SUITE_P(Watchers, LiveChanges,
                         testing::Values(Watching{"watched", makeWatcher},
                                         Watching{"blind", makeBlindWatcher},
                                         Watching{"overflowing",
                                                  []() -> std::unique_ptr<Watcher> {
                                                    return std::make_unique<OverflowingWatcher>();
                                                  }},
                                         Watching{"meagre",
                                                  []() -> std::unique_ptr<Watcher> {
                                                    return std::make_unique<MeagreWatcher>();
                                                  }}),
                         [](const auto& information) {
                           return std::string(information.param.name);
                         });

}  // namespace
}  // namespace tidemark::local
