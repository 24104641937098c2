#include "store/local/tree/metadata.h"

#include <cmath>

#include "store/local/tree/file_names.h"
#include "tests/unit/local/scratch_store.h"

namespace tidemark::local {
namespace {

// As hosts see it: three bytes.
std::string hex(std::string_view text) {
  const auto color = parseColor(text);
  if (!color) return "none";
  char digits[8];
  std::snprintf(digits, sizeof digits, "%02X%02X%02X",
                static_cast<unsigned>(std::lround(color->components[0] * 255)),
                static_cast<unsigned>(std::lround(color->components[1] * 255)),
                static_cast<unsigned>(std::lround(color->components[2] * 255)));
  return digits;
}

TEST(Color, HasEveryFormThatToolsWrite) {
  EXPECT_EQ(hex("#336699"), "336699");
  EXPECT_EQ(hex("#AbCdEf"), "ABCDEF");
  EXPECT_EQ(hex("#33669980"), "336699");
  EXPECT_EQ(hex("#369"), "336699");
  EXPECT_EQ(hex("#0f8"), "00FF88");
  EXPECT_EQ(hex("cornflowerblue"), "6495ED");
  EXPECT_EQ(hex("RebeccaPurple"), "663399");
  EXPECT_EQ(hex("aliceblue"), "F0F8FF");
  EXPECT_EQ(hex("yellowgreen"), "9ACD32");
}

TEST(Color, IsNoneWhereItSaysNothing) {
  for (const char* text : {"", "#", "#12", "#1234", "#12345", "#1234567", "#123456789", "#GGGGGG",
                           "336699", "light blue", "blau", "rgb(1,2,3)", "#-12345", "0"}) {
    EXPECT_EQ(hex(text), "none") << text;
  }
}

TEST(FileNames, LitterIsNoItem) {
  for (const char* name : {".x.ics", "x.ics.tmp", "x.tmp", "x.ics~", "#x.ics#", ".#x.ics",
                           "x.sync-conflict-20250303-101010-ABCDEFG.ics", "", "."}) {
    EXPECT_EQ(kindOfName(name), NameKind::ignored) << name;
  }
  for (const char* name : {"x.ics", "a b.ics", "#x.ics", "x.ics.ics"}) {
    EXPECT_EQ(kindOfName(name), NameKind::item) << name;
  }
  EXPECT_EQ(kindOfName("color"), NameKind::metadata);
  EXPECT_EQ(kindOfName("work"), NameKind::other);
  EXPECT_EQ(kindOfName("x.ics.bak"), NameKind::other);
}

using MetadataFiles = ScratchStore;

TEST_F(MetadataFiles, SayWhatACalendarIs) {
  write(root() / "work/displayname", "\n  The Work \t\r\n");
  write(root() / "work/color", " #FF8000\n");
  write(root() / "work/supported-calendar-component-set", "VEVENT\n");
  const CalendarRef work = calendar("work");
  ASSERT_NE(work, nullptr);
  EXPECT_EQ(work->title, "The Work");
  ASSERT_TRUE(work->color.has_value());
  EXPECT_EQ(work->color->components[0], 1.0);
  EXPECT_EQ(work->source->title, "On This Computer");
  EXPECT_EQ(work->source->sourceType, 0);
  EXPECT_EQ(identifiers(EntityType::event), Titles{"work"});
  EXPECT_EQ(identifiers(EntityType::reminder), Titles{});
}

TEST_F(MetadataFiles, FallBackToTheDirectoryName) {
  write(root() / "work/displayname", "  \n");
  write(root() / "work/color", "no colour at all");
  const CalendarRef work = calendar("work");
  ASSERT_NE(work, nullptr);
  EXPECT_EQ(work->title, "work");
  EXPECT_FALSE(work->color.has_value());
}

TEST_F(MetadataFiles, AreReadableTextWhateverTheyHold) {
  write(root() / "work/displayname", std::string("Caf\xE9 \x00 Bar", 10));
  const CalendarRef work = calendar("work");
  ASSERT_NE(work, nullptr);
  EXPECT_EQ(work->title, "Caf\xC3\xA9  Bar");
}

TEST_F(MetadataFiles, MayNameBothComponents) {
  write(root() / "a/supported-calendar-component-set", "VEVENT,VTODO");
  write(root() / "b/supported-calendar-component-set", "vevent\nVTODO\n");
  write(root() / "c/supported-calendar-component-set", "VTODO");
  write(root() / "d/supported-calendar-component-set", "VJOURNAL");
  EXPECT_EQ(identifiers(EntityType::event), (Titles{"a", "b", "d"}));
  EXPECT_EQ(identifiers(EntityType::reminder), (Titles{"a", "b", "c", "d"}));
}

TEST_F(MetadataFiles, OrderCalendars) {
  for (const auto& [name, order] : {std::pair("a", "none"),
                                    {"b", "10"},
                                    {"c", "-3"},
                                    {"d", "9\n"},
                                    {"e", "10"},
                                    {"f", "1.5"},
                                    {"B", ""}}) {
    write(root() / name / "order", order);
  }
  EXPECT_EQ(identifiers(EntityType::event), (Titles{"c", "d", "b", "e", "B", "a", "f"}));
}

}  // namespace
}  // namespace tidemark::local
