// Of what several files hold under one UID, the file whose name is first counts, whatever the files
// are called and in whatever order they come and go.
#include "store/local/items/collection_items.h"

#include <map>
#include <random>
#include <set>

#include "store/local/text/calendar_reader.h"
#include "tests/unit/local/scratch_store.h"

namespace tidemark::local {
namespace {

using Name = std::pair<ItemKind, std::string>;

class CollectionItemsTest : public testing::Test {
 public:
  CollectionItemsTest() { index_.order.name(0, "work"); }

  void put(const std::string& fileName, const std::set<Name>& names) {
    std::string text;
    for (const auto& [kind, uid] : names) {
      text += kind == ItemKind::event ? eventText(uid, fileName)
                                      : todoText(uid, fileName, "DUE:20250303T100000Z\r\n");
    }
    const bool isNew = !files_.contains(fileName);
    files_[fileName] = names;
    const auto former = items_.put(makeFileRecord(fileName, readCalendar(text, fileName).items));
    EXPECT_EQ(former == nullptr, isNew);
  }
  void remove(const std::string& fileName) {
    EXPECT_EQ(items_.remove(fileName), files_.erase(fileName) > 0);
  }

  // The file that each UID counts from.
  using Counted = std::map<Name, std::string>;
  Counted expected() const {
    Counted counted;
    for (const auto& [fileName, names] : files_) {
      for (const Name& name : names) counted.emplace(name, fileName);
    }
    return counted;
  }
  Counted found(const std::set<std::string>& uids) const {
    Counted counted;
    for (const ItemKind kind : {ItemKind::event, ItemKind::todo}) {
      for (const std::string& uid : uids) {
        const auto group = items_.find(kind, uid);
        if (group) counted.emplace(Name(kind, uid), group->file().name());
        const auto equivalent = items_.findEquivalent(kind, uid);
        EXPECT_EQ(group ? group->master() : nullptr, equivalent ? equivalent->master() : nullptr);
      }
    }
    return counted;
  }
  // The same by what queries show. A title is the name of its file.
  Counted shown() {
    Counted counted;
    const Instant from = instant(2025, 3, 1);
    const Instant to = instant(2025, 4, 1);
    const auto add = [&](ItemKind kind, const Item& item) {
      const Name name(kind, item.uid());
      EXPECT_TRUE(counted.emplace(name, item.title()).second) << item.uid() << " shows twice";
    };
    for (const auto& event : index_.events.find(from, to, {true})) {
      add(ItemKind::event, *event.item);
    }
    for (const auto& todo : index_.reminders.findIncomplete(from, to, {true})) {
      add(ItemKind::todo, *todo.item);
    }
    return counted;
  }

 private:
  std::map<std::string, std::set<Name>> files_;
  ItemIndex index_;
  CollectionItems items_{0, index_};
};

TEST_F(CollectionItemsTest, CountFromTheFirstFileThatHoldsThem) {
  std::mt19937 random(3);
  const auto oneOf = [&](const std::set<std::string>& texts) {
    return *std::next(texts.begin(), static_cast<std::ptrdiff_t>(random() % texts.size()));
  };
  const std::set<std::string> uids = {"a", "b", "c", "d"};
  // Some are named after what they may hold.
  const std::set<std::string> fileNames = {"a.ics", "b.ics", "c.ics", "bb.ics", "z.ics"};
  for (int step = 0; step < 2000; ++step) {
    const std::string fileName = oneOf(fileNames);
    if (random() % 4 == 0) {
      remove(fileName);
    } else {
      std::set<Name> names;
      for (auto count = random() % 4; count > 0; --count) {
        names.emplace(random() % 2 == 0 ? ItemKind::event : ItemKind::todo, oneOf(uids));
      }
      put(fileName, names);
    }
    ASSERT_EQ(found(uids), expected()) << "after step " << step;
    ASSERT_EQ(shown(), expected()) << "after step " << step;
  }
}

}  // namespace
}  // namespace tidemark::local
