#include "figures.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <functional>
#include <thread>

#include "bridge.h"
#include "measuring.h"
#include "sampling.h"

namespace tidemark::bench {
namespace {

namespace fs = std::filesystem;

constexpr int differentWeeks = 26;
constexpr std::size_t smallStore = 1000;
constexpr std::size_t largeStore = 100'000;

std::string rangeRequest(const char* command, int firstDay, int lastDay) {
  return R"({"id":1,"cmd":")" + std::string(command) + R"(","from":")" + date(firstDay) +
         R"(","to":")" + date(lastDay) + R"("})";
}

// From the start of the reading to its one line of answer, and the processor time of all of it.
struct Cost {
  double wall = 0;
  double processor = 0;
};

Cost readAll(const Programs& programs, const StoreUnderTest& store, int threads) {
  Cost cost;
  const double start = now();
  Process reader =
      limitProgram(programs, "read_files", {std::to_string(threads), store.root().string()});
  reader.receive();
  cost.wall = now() - start;
  cost.processor = reader.finish();
  return cost;
}

Cost firstAnswer(const Programs& programs, const StoreUnderTest& store, const std::string& request,
                 std::size_t* size = nullptr) {
  Cost cost;
  const double start = now();
  Bridge bridge(programs, store.dataHome);
  const std::size_t answered = bridge.ask(request).size();
  cost.wall = now() - start;
  cost.processor = bridge.finish();
  if (size) *size = answered;
  return cost;
}

// The number of runs that keeps a figure over the store within some seconds.
int startRuns(const StoreUnderTest& store) {
  return store.itemCount >= largeStore ? 5 : store.itemCount > smallStore ? 11 : 31;
}
int warmRuns(const StoreUnderTest& store) {
  return store.itemCount >= largeStore ? 400 : 2000;
}

// Tells the kernel to forget the files' pages. False where they stay (some file systems keep them).
bool evict(const StoreUnderTest& store) {
  bool gone = true;
  // Only clean pages can go. One sync for all: a hundred thousand single ones take minutes.
  const int folder = open(store.root().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0 || syncfs(folder)) giveUp("cannot sync " + store.root().string());
  close(folder);
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(store.root())) {
    if (!entry.is_regular_file() || entry.file_size() == 0) continue;
    const int file = open(entry.path().c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) continue;
    posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
    const std::size_t size = entry.file_size();
    void* pages = mmap(nullptr, size, PROT_READ, MAP_SHARED, file, 0);
    if (pages != MAP_FAILED) {
      std::vector<unsigned char> resident(size / static_cast<std::size_t>(getpagesize()) + 1);
      if (!mincore(pages, size, resident.data()) && (resident[0] & 1)) gone = false;
      munmap(pages, size);
    }
    close(file);
  }
  return gone;
}

// A request and a sized echo of its answer in turn.
Pair alternate(Bridge& bridge, Process& sizedEcho, int runs,
               const std::function<std::string(int)>& request) {
  Pair pair;
  for (int run = 0; run < runs; ++run) {
    const std::string line = request(run);
    std::size_t size = 0;
    pair.measured.add(timed([&] { size = bridge.ask(line).size(); }));
    pair.limit.add(echoOf(sizedEcho, size));
  }
  return pair;
}

// Puts an event into the middle week the way a sync tool does: written beside, renamed into place.
class ExternalWriter {
 public:
  explicit ExternalWriter(fs::path folder) : folder_(std::move(folder)) {}
  ~ExternalWriter() {
    std::error_code ignored;
    fs::remove(folder_ / "bench-change.ics", ignored);
  }
  ExternalWriter(const ExternalWriter&) = delete;
  ExternalWriter& operator=(const ExternalWriter&) = delete;

  // What the next rename will show.
  std::string prepare() {
    std::string title = "Changed from outside " + std::to_string(++count_);
    const std::string day = date(7 * middleWeek + 2);
    std::string digits;
    std::copy_if(day.begin(), day.end(), std::back_inserter(digits),
                 [](char c) { return c != '-'; });
    std::ofstream(temporary())
        << "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Example//Writer//EN\r\n"
        << "BEGIN:VEVENT\r\nUID:bench-change\r\nDTSTAMP:20250101T000000Z\r\n"
        << "DTSTART:" << digits << "T100000Z\r\nDTEND:" << digits << "T110000Z\r\nSUMMARY:" << title
        << "\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";
    return title;
  }
  void rename() { fs::rename(temporary(), folder_ / "bench-change.ics"); }

 private:
  fs::path temporary() const { return folder_ / ".bench-change.tmp"; }

  fs::path folder_;
  int count_ = 0;
};

double residentBytes(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/statm");
  double pages = 0;
  file >> pages >> pages;
  return pages * getpagesize();
}

double processorTicks(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  std::string field;
  double ticks = 0;
  for (int number = 1; file >> field; ++number) {
    if (number == 14 || number == 15) ticks += std::stod(field);
  }
  return ticks;
}

double contextSwitches(pid_t process) {
  double switches = 0;
  for (const auto& thread : fs::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
    std::ifstream file(thread.path() / "status");
    for (std::string line; std::getline(file, line);) {
      const std::size_t at = line.find("ctxt_switches:");
      if (at != line.npos) switches += std::stod(line.substr(line.find(':') + 1));
    }
  }
  return switches;
}

}  // namespace

std::string weekRequest(int week) {
  return rangeRequest("events", 7 * week, 7 * week + 7);
}
std::string yearRequest() {
  return rangeRequest("events", 0, 365);
}
std::string remindersRequest(int week) {
  return rangeRequest("reminders", 7 * week, 7 * week + 7);
}

std::vector<Figure> measureStart(const Programs& programs, const StoreUnderTest& store) {
  constexpr int readyRuns = 51;
  constexpr int parseRuns = 3;
  constexpr int evictedRuns = 3;
  std::vector<Figure> figures;

  Pair ready;
  for (int run = 0; run < readyRuns; ++run) {
    const double start = now();
    Bridge bridge(programs, store.dataHome);
    bridge.receive();
    ready.measured.add(now() - start);
    bridge.finish();
    const double echoStart = now();
    Process echo = limitProgram(programs, "echo");
    echo.send("x");
    echo.receive();
    ready.limit.add(now() - echoStart);
    echo.finish();
  }
  figures.push_back(
      figure("ready line", store, ready.measured.median(), ready.limit.median(), 1.5));

  const double target = store.itemCount <= smallStore ? 2 : 1.5;
  const std::string week = weekRequest(middleWeek);
  Pair wall, processor;
  for (int run = 0; run < startRuns(store); ++run) {
    const Cost answer = firstAnswer(programs, store, week);
    wall.measured.add(answer.wall);
    processor.measured.add(answer.processor);
    wall.limit.add(readAll(programs, store, 2).wall);
    processor.limit.add(readAll(programs, store, 1).processor);
  }
  figures.push_back(figure("first answer (week), wall", store, wall.measured.median(),
                           wall.limit.median(), target));
  figures.push_back(figure("first answer, CPU", store, processor.measured.median(),
                           processor.limit.median(), target));

  Samples parse;
  for (int run = 0; run < parseRuns; ++run) {
    Process parser = limitProgram(programs, "parse_files", {store.root().string()});
    parser.receive();
    parse.add(parser.finish());
  }
  figures.push_back(figure("first answer, CPU against libical's parse", store,
                           processor.measured.median(), parse.median(), 0.1));

  Samples cold, coldEight, coldTwo;
  bool evicted = true;
  for (int run = 0; run < evictedRuns && evicted; ++run) {
    evicted = evict(store);
    cold.add(firstAnswer(programs, store, week).wall);
    evicted = evict(store) && evicted;
    coldEight.add(readAll(programs, store, 8).wall);
    evicted = evict(store) && evicted;
    coldTwo.add(readAll(programs, store, 2).wall);
  }
  if (evicted) {
    figures.push_back(figure("first answer, pages evicted", store, cold.median(),
                             std::min(coldEight.median(), coldTwo.median()), 1.4));
  } else {
    std::printf("(%s: this file system does not let pages be evicted)\n", store.label.c_str());
  }
  return figures;
}

std::vector<Figure> measureQueries(const Programs& programs, const StoreUnderTest& store) {
  constexpr int statusRuns = 5000;
  constexpr int yearRuns = 20;
  const OneProcessor pinned;
  std::vector<Figure> figures;
  const auto add = [&](const char* name, const Pair& pair, double target) {
    figures.push_back(figure(name, store, pair.measured.median(), pair.limit.median(), target));
  };
  const auto addTail = [&](const char* name, const Pair& pair) {
    figures.push_back(
        figure(name, store, pair.measured.percentile(0.99), pair.limit.percentile(0.99), 2));
  };
  Bridge bridge(programs, store.dataHome);
  Process echo = limitProgram(programs, "echo");
  Process sizedEcho = limitProgram(programs, "sized_echo");
  bridge.ask(weekRequest(middleWeek));

  const std::string status = R"({"id":1,"cmd":"status"})";
  Pair pair;
  for (int run = 0; run < statusRuns; ++run) {
    pair.measured.add(timed([&] { bridge.ask(status); }));
    pair.limit.add(timed([&] {
      echo.send(status);
      echo.receive();
    }));
  }
  add("status round trip", pair, 1.25);
  addTail("status, p99", pair);

  pair = alternate(bridge, sizedEcho, warmRuns(store), [](int) { return weekRequest(middleWeek); });
  add("week, warm", pair, 2);
  addTail("week, p99", pair);
  pair = alternate(bridge, sizedEcho, warmRuns(store),
                   [](int run) { return weekRequest(run % differentWeeks * 2); });
  add("26 weeks in turn", pair, 2);
  pair = alternate(bridge, sizedEcho, warmRuns(store),
                   [](int) { return remindersRequest(middleWeek); });
  add("reminders of a week", pair, 2);
  pair = alternate(bridge, sizedEcho, yearRuns, [](int) { return yearRequest(); });
  add("year, warm", pair, 2);
  return figures;
}

std::vector<Figure> measureFirstYear(const Programs& programs, const StoreUnderTest& store) {
  Process sizedEcho = limitProgram(programs, "sized_echo");
  Pair first;
  for (int run = 0; run < startRuns(store); ++run) {
    std::size_t size = 0;
    first.measured.add(firstAnswer(programs, store, yearRequest(), &size).wall);
    const double reading = readAll(programs, store, 2).wall;
    first.limit.add(reading + echoOf(sizedEcho, size));
  }
  return {figure("year, first", store, first.measured.median(), first.limit.median(), 0.75)};
}

std::vector<Figure> measureChanges(const Programs& programs, const StoreUnderTest& store) {
  constexpr int runs = 200;
  const OneProcessor pinned;
  std::vector<Figure> figures;
  const fs::path watched = store.dataHome / "watched";
  fs::create_directories(watched);
  ExternalWriter writer(store.root() / "work");
  ExternalWriter beside(watched);
  const std::string week = weekRequest(middleWeek);

  Bridge bridge(programs, store.dataHome);
  Process sizedEcho = limitProgram(programs, "sized_echo");
  Process watcher = limitProgram(programs, "watch_folder", {watched.string()});
  watcher.receive();
  bridge.ask(week);
  bridge.drainChanges();

  Pair notice, after, during;
  int missed = 0, stale = 0;
  for (int run = 0; run < runs; ++run) {
    beside.prepare();
    // As long a pause as before the figure: caches and the processor rest alike.
    bridge.drainChanges();
    notice.limit.add(timed([&] {
      beside.rename();
      watcher.receive();
    }));
    std::string title = writer.prepare();
    bridge.drainChanges();
    bool told = false;
    notice.measured.add(timed([&] {
      writer.rename();
      told = bridge.awaitChange();
    }));
    missed += !told;
    std::string_view answer;
    after.measured.add(timed([&] { answer = bridge.ask(week); }));
    after.limit.add(echoOf(sizedEcho, answer.size()));
    stale += answer.find(title) == answer.npos;

    title = writer.prepare();
    bridge.drainChanges();
    writer.rename();
    during.measured.add(timed([&] { answer = bridge.ask(week); }));
    during.limit.add(echoOf(sizedEcho, answer.size()));
    stale += answer.find(title) == answer.npos;
    missed += !bridge.awaitChange();
  }
  figures.push_back(figure("changed line after an external rename", store, notice.measured.median(),
                           notice.limit.median(), 1.3));
  figures.push_back(
      figure("week right after a change", store, after.measured.median(), after.limit.median(), 3));
  figures.push_back(figure("week sent right after an external write", store,
                           during.measured.median(), during.limit.median(), 3));
  figures.push_back({"changes without a notice, of 400", store.label, Unit::count,
                     static_cast<double>(missed), 0, 0});
  figures.push_back(
      {"stale answers, of 400", store.label, Unit::count, static_cast<double>(stale), 0, 0});
  return figures;
}

std::vector<Figure> measureResources(const Programs& programs, const StoreUnderTest& store) {
  std::vector<Figure> figures;
  double textBytes = 0;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(store.root())) {
    if (entry.path().extension() == ".ics") textBytes += static_cast<double>(entry.file_size());
  }
  // What the program itself takes is the same for every store, so it is measured over an empty one
  // and left out.
  const fs::path empty = store.dataHome / "empty";
  fs::create_directories(empty / "calendars" / "calendar");
  Bridge bare(programs, empty);
  bare.ask(weekRequest(middleWeek));
  Bridge bridge(programs, store.dataHome);
  bridge.ask(weekRequest(middleWeek));
  figures.push_back({"memory after load", store.label, Unit::bytes,
                     residentBytes(bridge.id()) - residentBytes(bare.id()), textBytes, 0.6});

  bridge.drainChanges();
  const double ticks = processorTicks(bridge.id());
  const double switches = contextSwitches(bridge.id());
  std::this_thread::sleep_for(std::chrono::seconds(3));
  figures.push_back({"idle for 3 s: clock ticks of CPU", store.label, Unit::count,
                     processorTicks(bridge.id()) - ticks, 0, 0});
  figures.push_back({"idle for 3 s: wake-ups", store.label, Unit::count,
                     contextSwitches(bridge.id()) - switches, 0, 0});
  return figures;
}

}  // namespace tidemark::bench
