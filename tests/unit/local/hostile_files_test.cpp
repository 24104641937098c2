// Whatever lies in a collection: the good file beside it is still answered, and soon.
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

#include "tests/unit/local/scratch_store.h"

namespace tidemark::local {
namespace {

namespace fs = std::filesystem;

class HostileFiles : public ScratchStore {
 public:
  HostileFiles() { write(root() / "work/good.ics", eventText("good", "Good")); }
  fs::path bad() const { return root() / "work/bad.ics"; }

  // Nothing that takes longer is bounded work. Sanitizers slow everything down a great deal.
  void expectTheGoodOneSoon() {
    const auto begin = std::chrono::steady_clock::now();
    const auto found = titles(instant(2025, 3, 3), instant(2025, 3, 4));
    EXPECT_EQ(std::count(found.begin(), found.end(), "Good"), 1);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, deadline);
    EXPECT_NE(store().eventWithIdentifier("work:good"), nullptr);
  }
};

TEST_F(HostileFiles, Empty) {
  write(bad(), "");
  expectTheGoodOneSoon();
}

TEST_F(HostileFiles, Binary) {
  std::string bytes;
  unsigned state = 1;
  for (int i = 0; i < 100'000; ++i) {
    state = state * 1664525u + 1013904223u;
    bytes += static_cast<char>(state >> 24);
  }
  write(bad(), bytes);
  expectTheGoodOneSoon();
}

TEST_F(HostileFiles, CutOff) {
  const std::string text = eventText("bad", "Bad") + eventText("worse", "Worse");
  for (std::size_t size = 0; size < text.size(); size += 7) {
    put(bad(), text.substr(0, size));
    expectTheGoodOneSoon();
  }
}

TEST_F(HostileFiles, CutOffAfterGoodEvents) {
  std::string text = eventText("first", "First");
  text += "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nUID:second\r\nDTSTART:2025";
  put(bad(), text);
  EXPECT_EQ(titles(), (Titles{"First", "Good"}));
}

TEST_F(HostileFiles, EndlessLines) {
  write(bad(), eventText("bad", "Bad", "DESCRIPTION:" + std::string(2'000'000, 'x') + "\r\n"));
  expectTheGoodOneSoon();
  EXPECT_EQ(store().eventWithIdentifier("work:bad")->notes()->size(), 2'000'000u);
}

TEST_F(HostileFiles, NestedBeyondReason) {
  std::string text;
  for (int depth = 0; depth < 20'000; ++depth) text += "BEGIN:VEVENT\r\nBEGIN:X\r\n";
  write(bad(), calendarText(text));
  expectTheGoodOneSoon();
}

TEST_F(HostileFiles, EverySecondForACentury) {
  write(bad(), eventText("bad", "Bad", "RRULE:FREQ=SECONDLY\r\n", "19000101T000000Z"));
  expectTheGoodOneSoon();
  // One rule gives no more than a hundred thousand to one answer, those included that are looked at
  // because they could reach into the range.
  const std::size_t found = events(instant(2025, 1, 1), instant(2026, 1, 1)).size();
  EXPECT_GT(found, 90'000u);
  EXPECT_LE(found, 100'001u);
}

TEST_F(HostileFiles, RuleThatNeverHits) {
  write(bad(), eventText("bad", "Bad", "RRULE:FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=30\r\n"));
  expectTheGoodOneSoon();
}

TEST_F(HostileFiles, HundredThousandExceptions) {
  std::string dates = "EXDATE:20250303T100000Z";
  for (int i = 1; i < 100'000; ++i) {
    dates += ",2025" + std::to_string(1000 + i % 300) + "T" + std::to_string(100000 + i) + "Z";
  }
  write(bad(), eventText("bad", "Bad", "RRULE:FREQ=HOURLY\r\n" + dates + "\r\n"));
  expectTheGoodOneSoon();
}

TEST_F(HostileFiles, HundredThousandOverrides) {
  std::string components;
  for (int i = 0; i < 100'000; ++i) {
    components += "BEGIN:VEVENT\r\nUID:bad\r\nRECURRENCE-ID:2025" + std::to_string(1000 + i % 200) +
                  "T" + std::to_string(100000 + i % 130'000) +
                  "Z\r\nDTSTART:20250303T100000Z\r\nEND:VEVENT\r\n";
  }
  write(bad(), calendarText("BEGIN:VEVENT\r\nUID:bad\r\nDTSTART:20250101T100000Z\r\n"
                            "RRULE:FREQ=DAILY\r\nEND:VEVENT\r\n" +
                            components));
  expectTheGoodOneSoon();
}

TEST_F(HostileFiles, OneUidInThousandsOfFiles) {
  for (int i = 0; i < 3000; ++i) {
    write(root() / "work" / ("same-" + std::to_string(i) + ".ics"),
          eventText("same", std::to_string(i)));
  }
  EXPECT_EQ(titles(), (Titles{"Good", "0"}));
}

TEST_F(HostileFiles, WrongCharset) {
  write(bad(), eventText("bad", "Caf\xE9"));
  EXPECT_EQ(titles(), (Titles{"Caf\xC3\xA9", "Good"}));
}

TEST_F(HostileFiles, NulBytes) {
  write(bad(), eventText("bad", std::string("a\0b", 3)) + std::string(5000, '\0'));
  expectTheGoodOneSoon();
}

TEST_F(HostileFiles, DirectoryOfThatName) {
  fs::create_directory(bad());
  expectTheGoodOneSoon();
}

TEST_F(HostileFiles, LinksToNothingAndToThemselves) {
  fs::create_symlink("nowhere", bad());
  fs::create_symlink("loop.ics", root() / "work/loop.ics");
  expectTheGoodOneSoon();
}

TEST_F(HostileFiles, PipeNeitherBlocksNorCounts) {
  ASSERT_EQ(::mkfifo(bad().c_str(), 0600), 0);
  fs::create_symlink("bad.ics", root() / "work/link.ics");
  expectTheGoodOneSoon();
}

TEST_F(HostileFiles, PipeMayComeInThePlaceOfAFile) {
  write(bad(), eventText("bad", "Bad"));
  EXPECT_EQ(titles(), (Titles{"Bad", "Good"}));
  fs::remove(bad());
  ASSERT_EQ(::mkfifo(bad().c_str(), 0600), 0);
  EXPECT_EQ(titles(), Titles{"Good"});
}

TEST_F(HostileFiles, Devices) {
  fs::create_symlink("/dev/zero", bad());
  fs::create_symlink("/dev/tty", root() / "work/terminal.ics");
  expectTheGoodOneSoon();
}

TEST_F(HostileFiles, Sockets) {
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  ASSERT_LT(bad().string().size(), sizeof address.sun_path);
  std::strcpy(address.sun_path, bad().c_str());
  ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  expectTheGoodOneSoon();
  ::close(socket);
}

TEST_F(HostileFiles, HugeFilesArePassedOver) {
  write(bad(), eventText("bad", "Bad"));
  fs::resize_file(bad(), std::uintmax_t{2} << 30);
  expectTheGoodOneSoon();
  EXPECT_EQ(store().eventWithIdentifier("work:bad"), nullptr);
  // It may be cut to size again.
  fs::resize_file(bad(), eventText("bad", "Bad").size());
  EXPECT_NE(store().eventWithIdentifier("work:bad"), nullptr);
}

TEST_F(HostileFiles, AreNeverChanged) {
  const std::string text = "\xFF\xFE" + eventText("bad", "Caf\xE9") + "trailing\n";
  write(bad(), text);
  const auto before = fs::last_write_time(bad());
  expectTheGoodOneSoon();
  EXPECT_EQ(fs::last_write_time(bad()), before);
  EXPECT_EQ(fs::file_size(bad()), text.size());
}

}  // namespace
}  // namespace tidemark::local
