// Tells which directories' contents changed, as far as the system has a way to tell.
//
// One thread at a time, but for descriptor(), which never changes. What happened before a call of
// drain() is in the batch that it returns.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tidemark::local {

// The same number for the same directory, by whatever path it is reached.
using WatchId = int;

struct WatchEvent {
  enum class Kind {
    created,     // made in place, perhaps still being written
    modified,    // written to, perhaps still being written
    written,     // closed by somebody who wrote
    appeared,    // renamed into place: whole
    gone,        // removed or renamed away
    attributes,  // permissions, or the number of its names
    watchEnded,  // the directory itself was moved or is gone
  };
  WatchId watch = 0;
  Kind kind = Kind::modified;
  bool isDirectory = false;
  std::string name;  // empty: the watched directory itself
};

struct WatchBatch {
  std::vector<WatchEvent> events;
  // More happened than the system kept: anything may have changed.
  bool isIncomplete = false;
};

class Watcher {
 public:
  enum class Interest {
    names,     // entries that come and go
    contents,  // what is written into entries as well
    place,     // only that the directory itself is moved or goes
  };

  virtual ~Watcher() = default;

  // Absent when there is no watch to be had: no such directory, no watches left, or a file system
  // that does not tell what other machines do to it. Watching one directory twice adds the
  // interests up.
  virtual std::optional<WatchId> watch(const std::string& directory, Interest interest) = 0;
  virtual void unwatch(WatchId watch) = 0;
  virtual WatchBatch drain() = 0;
  // Readable whenever drain() has something to tell; -1 when it never has.
  virtual int descriptor() const = 0;
};

// The system's own way.
std::unique_ptr<Watcher> makeWatcher();
// Has no watch to give: everything is then compared at every query.
std::unique_ptr<Watcher> makeBlindWatcher();

}  // namespace tidemark::local
