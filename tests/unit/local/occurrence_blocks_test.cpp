// Blocks are kept; what they hold must be what a fresh look would find.
#include "store/local/items/occurrence_blocks.h"

#include <random>

#include "store/local/items/collection_items.h"
#include "store/local/text/calendar_reader.h"
#include "tests/unit/local/scratch_store.h"

namespace tidemark::local {
namespace {

std::unique_ptr<FileRecord> record(const std::string& name, const std::string& text) {
  return makeFileRecord(name, readCalendar(text, name).items);
}

class OccurrenceBlocksTest : public testing::Test {
 public:
  OccurrenceBlocksTest() { index_.order.name(0, "work"); }

  void put(const std::string& uid, const std::string& more, const std::string& start) {
    texts_[uid] = eventText(uid, uid, more, start);
    items_.put(record(uid + ".ics", texts_[uid]));
  }
  void remove(const std::string& uid) {
    texts_.erase(uid);
    items_.remove(uid + ".ics");
  }

  using Found = std::vector<std::tuple<std::string, UtcSeconds, UtcSeconds>>;
  static Found find(ItemIndex& index, Instant from, Instant to) {
    Found found;
    for (const PlacedEvent& event : index.events.find(from, to, {true})) {
      found.emplace_back(event.item->uid(), event.start, event.occurrence);
    }
    return found;
  }
  Found find(Instant from, Instant to) { return find(index_, from, to); }

  // The same from an index that was never asked before.
  Found findAfresh(Instant from, Instant to) const {
    ItemIndex index;
    index.order.name(0, "work");
    CollectionItems items(0, index);
    for (const auto& [uid, text] : texts_) items.put(record(uid + ".ics", text));
    return find(index, from, to);
  }

 private:
  std::map<std::string, std::string> texts_;
  ItemIndex index_;
  CollectionItems items_{0, index_};
};

TEST_F(OccurrenceBlocksTest, StayRightWhileItemsComeAndGo) {
  std::mt19937 random(7);
  const auto upTo = [&](int most) {
    return static_cast<int>(random() % static_cast<unsigned>(most));
  };
  const std::vector<std::string> rules = {"",
                                          "",
                                          "RRULE:FREQ=DAILY;INTERVAL=3\r\n",
                                          "RRULE:FREQ=WEEKLY;COUNT=20\r\n",
                                          "RRULE:FREQ=MONTHLY\r\n",
                                          "RRULE:FREQ=HOURLY;COUNT=500\r\n",
                                          "RRULE:FREQ=YEARLY\r\n"};
  for (int step = 0; step < 1200; ++step) {
    const std::string uid = "uid-" + std::to_string(upTo(40));
    if (upTo(4) == 0) {
      remove(uid);
    } else {
      char start[64];  // what three integers could need, as far as the compiler can tell
      std::snprintf(start, sizeof start, "2025%02d%02dT%02d0000Z", 1 + upTo(12), 1 + upTo(28),
                    upTo(24));
      std::string more = rules[static_cast<std::size_t>(upTo(static_cast<int>(rules.size())))];
      put(uid, more, start);
    }
    if (step % 3 != 0) continue;
    const Instant from = instant(2025, 1, 1) + std::chrono::days(upTo(500));
    const Instant to = from + std::chrono::hours(1 + upTo(24 * 60));
    ASSERT_EQ(find(from, to), findAfresh(from, to)) << step;
  }
}

TEST_F(OccurrenceBlocksTest, NarrowAndWideRangesAgree) {
  put("daily", "RRULE:FREQ=DAILY\r\n", "20200101T233000Z");
  put("single", "", "20250303T100000Z");
  put("dense", "RRULE:FREQ=MINUTELY;COUNT=50000\r\n", "20250101T000000Z");
  const Found wide = find(instant(2021, 1, 1), instant(2031, 1, 1));
  Found narrow;
  for (Instant from = instant(2021, 1, 1); from < instant(2031, 1, 1);
       from += std::chrono::days(7)) {
    const Instant to = std::min(from + std::chrono::days(7), instant(2031, 1, 1));
    for (const auto& event : find(from, to)) {
      // Those that reach in were counted where they began.
      if (instant(1970, 1, 1) + std::chrono::seconds(std::get<1>(event)) >= from ||
          from == instant(2021, 1, 1)) {
        narrow.push_back(event);
      }
    }
  }
  EXPECT_EQ(wide.size(), narrow.size());
  EXPECT_EQ(wide, narrow);
}

TEST_F(OccurrenceBlocksTest, SeriesThatBecomesDenseIsExpandedForEachQuery) {
  put("series", "RRULE:FREQ=DAILY\r\n", "20250101T000000Z");
  EXPECT_EQ(find(instant(2025, 3, 1), instant(2025, 3, 8)).size(), 7u);
  put("series", "RRULE:FREQ=MINUTELY\r\n", "20250101T000000Z");
  EXPECT_EQ(find(instant(2025, 3, 1), instant(2025, 3, 2)).size(), 1440u + 59);
  remove("series");
  EXPECT_EQ(find(instant(2025, 3, 1), instant(2025, 3, 8)).size(), 0u);
}

TEST_F(OccurrenceBlocksTest, ManyChangesBetweenQueriesShow) {
  for (int round = 0; round < 3; ++round) {
    for (int i = 0; i < 400; ++i) {
      put("uid-" + std::to_string(i), "RRULE:FREQ=WEEKLY\r\n", "20250101T000000Z");
    }
    EXPECT_EQ(find(instant(2025, 3, 3), instant(2025, 3, 10)).size(), 400u);
  }
  for (int i = 0; i < 400; ++i) remove("uid-" + std::to_string(i));
  EXPECT_EQ(find(instant(2025, 3, 3), instant(2025, 3, 10)).size(), 0u);
}

}  // namespace
}  // namespace tidemark::local
