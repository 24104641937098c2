#include "store/local/tree/file_loader.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "store/local/text/calendar_reader.h"

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace tidemark::local {
namespace {

// So many files are read in the time that it takes to start a thread a few times over.
constexpr std::size_t filesWorthAThread = 256;
// Taken at once, so that threads seldom meet.
constexpr std::size_t filesAtATime = 32;
// What one thread keeps at most while another hands on.
constexpr std::size_t maximumKeptPortions = 16;
// Where pages are cold, reading waits for the disk, and a disk answers eight as fast as one. (Ten
// thousand files there, with 1, 2, 4 and 8 readers: 1.0, 0.75, 0.35 and 0.29 s.)
constexpr std::size_t readersOfColdFiles = 8;
// Warm ones are bound by the processors. A file takes some five microseconds then, a disk a
// hundred.
constexpr std::chrono::microseconds warmFile{25};

std::size_t readersFor(std::size_t files, bool isCold) {
  // Asking for the processors reads a file, which takes longer than the one file of most changes.
  if (files < 2 * filesWorthAThread) return 1;
  const std::size_t processors = std::max(1u, std::thread::hardware_concurrency());
  const std::size_t most = isCold ? readersOfColdFiles : std::min(processors, readersOfColdFiles);
  return std::clamp<std::size_t>(files / filesWorthAThread, 1, most);
}

struct LoadedPortion {
  LoadOrder* order;
  std::vector<LoadedFile> files;
};

// Hands out the names of all orders in small portions.
class Portions {
 public:
  explicit Portions(std::vector<LoadOrder>& orders) : orders_(orders) {}

  struct Portion {
    LoadOrder* order = nullptr;
    std::size_t begin = 0;
    std::size_t end = 0;
  };

  // Without an order when there is nothing left.
  Portion next() {
    const std::lock_guard lock(lock_);
    while (order_ < orders_.size() && position_ == orders_[order_].names.size()) {
      ++order_;
      position_ = 0;
    }
    if (order_ == orders_.size()) return {};
    LoadOrder& order = orders_[order_];
    const std::size_t begin = position_;
    position_ = std::min(begin + filesAtATime, order.names.size());
    return {&order, begin, position_};
  }

  // Hands on what was loaded, one thread at a time. A thread that is not `patient` keeps what it
  // has while another one hands on, and reads meanwhile.
  void deliver(std::vector<LoadedPortion>& loaded, bool isPatient) {
    std::unique_lock lock(delivery_, std::defer_lock);
    if (isPatient) lock.lock();
    if (!isPatient && !lock.try_lock()) return;
    for (LoadedPortion& portion : loaded) {
      for (LoadedFile& file : portion.files) portion.order->take(std::move(file));
    }
    loaded.clear();
  }

 private:
  std::vector<LoadOrder>& orders_;
  std::mutex lock_;
  std::size_t order_ = 0;
  std::size_t position_ = 0;
  std::mutex delivery_;
};

// One thread's: what it reads with keeps its room from one file to the next.
class FileLoader {
 public:
  LoadedFile load(int directory, const char* name, bool isLinked, FileReader::Changes changes) {
    // No watch on the directory tells of what is behind a link.
    if (isLinked) changes = FileReader::Changes::compared;
    const FileText file = files_.read(directory, name, changes);
    CalendarText text;
    if (file.outcome == FileText::Outcome::read) text = calendars_.read(file.text, name);
    LoadedFile loaded;
    loaded.name = name;
    loaded.outcome = file.outcome;
    loaded.isWhole = text.isWhole;
    loaded.record = makeFileRecord(name, std::move(text.items));
    loaded.record->tag = file.tag & lastFileTag;
    loaded.record->isYoung = file.isYoung;
    loaded.record->isLinked = isLinked;
    return loaded;
  }

 private:
  FileReader files_;
  CalendarReader calendars_;
};

// False when there was nothing left.
bool loadPortion(Portions& portions, FileLoader& loader, std::vector<LoadedPortion>& loaded) {
  const auto portion = portions.next();
  if (portion.order == nullptr) return false;
  LoadOrder& order = *portion.order;
  loaded.push_back({&order, {}});
  std::vector<LoadedFile>& files = loaded.back().files;
  files.reserve(portion.end - portion.begin);
  for (std::size_t index = portion.begin; index < portion.end; ++index) {
    files.push_back(loader.load(order.directory.get(), order.names.name(index),
                                order.names.isLinked(index), order.changes));
  }
  portions.deliver(loaded, loaded.size() == maximumKeptPortions);
  return true;
}

void loadPortions(Portions& portions) {
  FileLoader loader;
  std::vector<LoadedPortion> loaded;
  while (loadPortion(portions, loader, loaded)) continue;
  portions.deliver(loaded, true);
}

bool areCold(Portions& portions) {
  FileLoader loader;
  std::vector<LoadedPortion> loaded;
  const auto begin = std::chrono::steady_clock::now();
  loadPortion(portions, loader, loaded);
  return std::chrono::steady_clock::now() - begin > filesAtATime * warmFile;
}

// What many names took stands between what was read, where the C library would keep it.
void returnFreeMemory() {
#if defined(__GLIBC__)
  ::malloc_trim(0);
#endif
}

}  // namespace

void FileNames::add(std::string_view name, bool isLinked) {
  text_ += name;
  text_ += '\0';
  ends_.push_back(text_.size());
  isLinked_.push_back(isLinked);
}

void loadFiles(std::vector<LoadOrder>& orders) {
  std::size_t files = 0;
  for (const LoadOrder& order : orders) files += order.names.size();
  Portions portions(orders);
  const std::size_t readers = readersFor(files, areCold(portions));
  std::vector<std::thread> helpers;
  while (helpers.size() + 1 < readers) {
    try {
      helpers.emplace_back(loadPortions, std::ref(portions));
    } catch (const std::system_error&) {
      break;  // no more threads to be had: those that there are do it
    }
  }
  loadPortions(portions);
  for (std::thread& helper : helpers) helper.join();
  orders.clear();
  if (files >= filesWorthAThread) returnFreeMemory();
}

}  // namespace tidemark::local
