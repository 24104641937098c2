// Which directories are calendars, and what kind.
#include <sys/stat.h>

#include "tests/unit/local/scratch_store.h"

namespace tidemark::local {
namespace {

namespace fs = std::filesystem;

class Collections : public ScratchStore {
 public:
  void makeDirectory(const fs::path& path) { fs::create_directories(root() / path); }
};

TEST_F(Collections, StandOneOrTwoLevelsBelowTheRoot) {
  makeDirectory("empty");
  write(root() / "office/team/a.ics", eventText("a", "A"));
  makeDirectory("office/deep/deeper/deepest");
  write(root() / "office/mixed/a.ics", eventText("a", "A"));
  makeDirectory("office/mixed/below");
  makeDirectory(".hidden");
  makeDirectory("office/.hidden");
  write(root() / "loose.ics", eventText("loose", "Loose"));
  EXPECT_EQ(identifiers(EntityType::event), (Titles{"empty", "office/mixed", "office/team"}));
  EXPECT_EQ(titles(), (Titles{"A", "A"}));
}

TEST_F(Collections, MayHoldOthers) {
  write(root() / "both/a.ics", eventText("a", "A"));
  write(root() / "both/inner/b.ics", eventText("b", "B"));
  EXPECT_EQ(identifiers(EntityType::event), (Titles{"both", "both/inner"}));
  EXPECT_EQ(calendar("both")->source->title, "On This Computer");
  EXPECT_EQ(calendar("both/inner")->source->title, "both");
}

TEST_F(Collections, InAccountsBearTheAccountsName) {
  makeDirectory("office/team");
  EXPECT_EQ(calendar("office/team")->source->title, "office");
  put(root() / "office/displayname", "The Office\n");
  EXPECT_EQ(calendar("office/team")->source->title, "The Office");
  EXPECT_EQ(calendar("office/team")->title, "team");
  EXPECT_EQ(calendar("office"), nullptr);
}

TEST_F(Collections, AreWhatTheyHoldWithoutMetadata) {
  write(root() / "events/a.ics", eventText("a", "A"));
  write(root() / "todos/a.ics", todoText("a", "A"));
  write(root() / "mixed/a.ics", eventText("a", "A"));
  write(root() / "mixed/b.ics", todoText("b", "B"));
  makeDirectory("nothing");
  EXPECT_EQ(identifiers(EntityType::event), (Titles{"events", "mixed", "nothing"}));
  EXPECT_EQ(identifiers(EntityType::reminder), (Titles{"mixed", "nothing", "todos"}));
  put(root() / "todos/b.ics", eventText("b", "B"));
  EXPECT_EQ(identifiers(EntityType::event), (Titles{"events", "mixed", "nothing", "todos"}));
}

TEST_F(Collections, AreWhatIsLeftInThem) {
  write(root() / "mixed/a.ics", eventText("a", "A"));
  write(root() / "mixed/b.ics", todoText("b", "B"));
  write(root() / "outer/a.ics", eventText("a", "A"));
  makeDirectory("outer/inner");
  EXPECT_EQ(identifiers(EntityType::event), (Titles{"mixed", "outer", "outer/inner"}));
  fs::remove(root() / "mixed/a.ics");
  EXPECT_EQ(identifiers(EntityType::event), (Titles{"outer", "outer/inner"}));
  fs::remove(root() / "mixed/b.ics");
  EXPECT_EQ(identifiers(EntityType::event), (Titles{"mixed", "outer", "outer/inner"}));
  fs::remove(root() / "outer/a.ics");
  EXPECT_EQ(identifiers(EntityType::event), (Titles{"mixed", "outer/inner"}));
}

TEST_F(Collections, ShowOnlyWhatTheySay) {
  write(root() / "events/supported-calendar-component-set", "VEVENT");
  write(root() / "events/a.ics", eventText("a", "A"));
  write(root() / "events/b.ics", todoText("b", "B", "DUE:20250303T100000Z\r\n"));
  EXPECT_EQ(titles(), Titles{"A"});
  EXPECT_EQ(openTitles(instant(2025, 1, 1), instant(2026, 1, 1)), Titles{});
  EXPECT_EQ(store().calendarItemWithIdentifier("events:b"), nullptr);
}

TEST_F(Collections, DefaultsPreferOneKind) {
  makeDirectory("a-both");
  write(root() / "b-events/supported-calendar-component-set", "VEVENT");
  write(root() / "c-todos/supported-calendar-component-set", "VTODO");
  EXPECT_EQ(store().defaultCalendarForNewEvents()->calendarIdentifier, "b-events");
  EXPECT_EQ(store().defaultCalendarForNewReminders()->calendarIdentifier, "c-todos");
  ASSERT_EQ(::chmod((root() / "b-events").c_str(), 0555), 0);
  ASSERT_EQ(::chmod((root() / "c-todos").c_str(), 0555), 0);
  EXPECT_EQ(store().defaultCalendarForNewEvents()->calendarIdentifier, "a-both");
  EXPECT_EQ(store().defaultCalendarForNewReminders()->calendarIdentifier, "a-both");
  ASSERT_EQ(::chmod((root() / "a-both").c_str(), 0555), 0);
  EXPECT_EQ(store().defaultCalendarForNewEvents(), nullptr);
  EXPECT_EQ(store().defaultCalendarForNewReminders(), nullptr);
}

TEST_F(Collections, AreFoundThroughLinks) {
  write(scratch() / "elsewhere/a.ics", eventText("a", "A"));
  fs::create_directory_symlink(scratch() / "elsewhere", root() / "linked");
  fs::create_directory_symlink(scratch() / "elsewhere", root() / "again");
  fs::create_directory_symlink(scratch() / "nowhere", root() / "dangling");
  fs::create_directory_symlink(root() / "loop", root() / "loop");
  EXPECT_EQ(identifiers(EntityType::event), (Titles{"again", "linked"}));
  EXPECT_EQ(titles(), (Titles{"A", "A"}));
  put(scratch() / "elsewhere/a.ics", eventText("a", "B"));
  EXPECT_EQ(titles(), (Titles{"B", "B"}));
  fs::create_directory(scratch() / "nowhere");
  EXPECT_EQ(identifiers(EntityType::event), (Titles{"again", "dangling", "linked"}));
}

TEST_F(Collections, ReachingUpwardsThroughALinkEnd) {
  write(root() / "work/a.ics", eventText("a", "A"));
  fs::create_directory_symlink(root(), root() / "work/up");
  EXPECT_EQ(identifiers(EntityType::event), Titles{"work"});
  EXPECT_EQ(titles(), Titles{"A"});
}

TEST_F(Collections, MayHaveAnyName) {
  write(root() / "a:b/x.ics", eventText("x", "Colon"));
  write(root() / "Caf\xE9/x.ics", eventText("x", "Latin"));
  write(root() / "Cafe\xCC\x81/x.ics", eventText("u\xC3\xA9", "Decomposed"));
  EXPECT_EQ(store().eventWithIdentifier("a:b:x")->title(), "Colon");
  EXPECT_EQ(identifiers(EntityType::event), (Titles{"Cafe\xCC\x81", "Caf\xC3\xA9", "a:b"}));
  // Identifiers are the same in every normal form.
  EXPECT_EQ(store().eventWithIdentifier("Cafe\xCC\x81:ue\xCC\x81")->title(), "Decomposed");
  EXPECT_EQ(store().eventWithIdentifier("Caf\xC3\xA9:u\xC3\xA9")->title(), "Decomposed");
}

}  // namespace
}  // namespace tidemark::local
