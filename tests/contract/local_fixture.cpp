// The local store under the contract: directories of iCalendar files in a scratch data directory.
#include <sys/stat.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string_view>

#include "store/local/local_store.h"
#include "tests/contract/store_contract.h"

namespace tidemark {
namespace {

namespace files = std::filesystem;

std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c == '\n') {
      result += "\\n";
      continue;
    }
    if (c == '\\' || c == ';' || c == ',') result += '\\';
    result += c;
  }
  return result;
}

std::string formatted(const char* format, int a, int b, int c) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), format, a, b, c);
  return text.data();
}

std::string utc(Instant instant) {
  using namespace std::chrono;
  const auto seconds = floor<std::chrono::seconds>(instant);
  const auto day = floor<days>(seconds);
  const year_month_day date(day);
  const hh_mm_ss time(seconds - day);
  return formatted("%04d%02d%02d", static_cast<int>(date.year()),
                   static_cast<int>(static_cast<unsigned>(date.month())),
                   static_cast<int>(static_cast<unsigned>(date.day()))) +
         formatted("T%02d%02d%02dZ", static_cast<int>(time.hours().count()),
                   static_cast<int>(time.minutes().count()),
                   static_cast<int>(time.seconds().count()));
}

// Floating, in UTC, or a day alone.
std::string dueLine(const DateComponents& due) {
  const std::string date =
      formatted("%04d%02d%02d", due.year.value_or(0), due.month.value_or(0), due.day.value_or(0));
  if (!due.hour) return "DUE;VALUE=DATE:" + date + "\r\n";
  return "DUE:" + date +
         formatted("T%02d%02d%02d", *due.hour, due.minute.value_or(0), due.second.value_or(0)) +
         (due.timeZone == "UTC" ? "Z\r\n" : "\r\n");
}

class LocalFixture final : public StoreFixture {
 public:
  LocalFixture() {
    std::string path = (files::temp_directory_path() / "tidemark-contract-XXXXXX").string();
    scratch_ = ::mkdtemp(path.data());
    root_ = scratch_ / "data" / "calendars";
    files::create_directories(root_);
    ::setenv("HOME", scratch_.c_str(), 1);
    ::setenv("XDG_DATA_HOME", (scratch_ / "data").c_str(), 1);
  }
  ~LocalFixture() override { removeScratch(); }

  std::string addCalendar(const SeedCalendar& seed) override {
    const std::string name = nextName("calendar");
    // Made aside: a name with a dot in front is no collection yet.
    const files::path aside = root_ / ("." + name);
    files::create_directory(aside);
    std::ofstream(aside / "displayname") << seed.title << "\n";
    std::ofstream(aside / "supported-calendar-component-set")
        << (seed.type == EntityType::event ? "VEVENT\n" : "VTODO\n");
    if (!seed.writable) ::chmod(aside.c_str(), 0555);
    files::rename(aside, root_ / name);
    return name;
  }

  std::string addEvent(const SeedEvent& seed) override {
    const std::string uid = nextName("event");
    std::string item = "BEGIN:VEVENT\r\nUID:" + uid +
                       "\r\nDTSTAMP:20250101T000000Z\r\nDTSTART:" + utc(seed.start) +
                       "\r\nDTEND:" + utc(seed.end) + "\r\nSUMMARY:" + escaped(seed.title) + "\r\n";
    if (seed.days > 1) item += "RRULE:FREQ=DAILY;COUNT=" + std::to_string(seed.days) + "\r\n";
    if (seed.notes) item += "DESCRIPTION:" + escaped(*seed.notes) + "\r\n";
    if (seed.location) item += "LOCATION:" + escaped(*seed.location) + "\r\n";
    if (seed.url) item += "URL:" + *seed.url + "\r\n";
    if (seed.attendees) {
      for (const std::string& name : *seed.attendees) {
        item += "ATTENDEE;CN=" + name + ":mailto:" + name + "@example.org\r\n";
      }
    }
    return addItem(seed.calendar, uid, item + "END:VEVENT\r\n");
  }

  std::string addReminder(const SeedReminder& seed) override {
    const std::string uid = nextName("reminder");
    std::string item = "BEGIN:VTODO\r\nUID:" + uid +
                       "\r\nDTSTAMP:20250101T000000Z\r\nSUMMARY:" + escaped(seed.title) + "\r\n";
    if (seed.due) item += dueLine(*seed.due);
    if (seed.completed) {
      item +=
          "STATUS:COMPLETED\r\nPERCENT-COMPLETE:100\r\nCOMPLETED:" + utc(*seed.completed) + "\r\n";
    }
    if (seed.priority != 0) item += "PRIORITY:" + std::to_string(seed.priority) + "\r\n";
    if (seed.notes) item += "DESCRIPTION:" + escaped(*seed.notes) + "\r\n";
    return addItem(seed.list, uid, item + "END:VTODO\r\n");
  }

  void removeEvent(const std::string& identifier) override { files::remove(files_.at(identifier)); }

  Store& store() override {
    if (!store_) store_ = makeLocalStore();
    return *store_;
  }

  // The store reads; its saves and removals are not there yet.
  bool canWrite() const override { return true; }
  void abandon() override { removeScratch(); }

 private:
  // As a sync tool puts it there: written aside and renamed into place.
  std::string addItem(const std::string& calendar, const std::string& uid,
                      const std::string& item) {
    const files::path collection = root_ / calendar;
    const files::perms before = files::status(collection).permissions();
    files::permissions(collection, files::perms::owner_write, files::perm_options::add);
    const files::path aside = collection / ("." + uid + ".tmp");
    std::ofstream(aside, std::ios::binary)
        << "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//contract//EN\r\n"
        << item << "END:VCALENDAR\r\n";
    const files::path file = collection / (uid + ".ics");
    files::rename(aside, file);
    files::permissions(collection, before);
    const std::string identifier = calendar + ":" + uid;
    files_[identifier] = file;
    return identifier;
  }

  void removeScratch() {
    std::error_code ignored;
    for (const auto& entry : files::directory_iterator(root_, ignored)) {
      files::permissions(entry.path(), files::perms::owner_all, ignored);
    }
    files::remove_all(scratch_, ignored);
  }

  std::string nextName(const char* kind) {
    return kind + std::string("-") + std::to_string(++named_);
  }

  files::path scratch_;
  files::path root_;
  std::map<std::string, files::path> files_;
  int named_ = 0;
  std::unique_ptr<Store> store_;
};

const StoreForm local{"local", [] { return std::make_unique<LocalFixture>(); }};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Local, StoreContract, testing::Values(local));

}  // namespace tidemark
