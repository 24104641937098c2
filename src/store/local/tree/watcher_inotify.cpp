// Watches by inotify(7).
#include <sys/inotify.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "store/local/files/descriptor.h"
#include "store/local/tree/watcher.h"

namespace tidemark::local {
namespace {

constexpr std::uint32_t placeEvents = IN_DELETE_SELF | IN_MOVE_SELF;
constexpr std::uint32_t nameEvents =
    placeEvents | IN_CREATE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE;
constexpr std::uint32_t contentEvents = nameEvents | IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB;

std::uint32_t eventsOf(Watcher::Interest interest) {
  switch (interest) {
    case Watcher::Interest::place:
      return placeEvents;
    case Watcher::Interest::names:
      return nameEvents;
    case Watcher::Interest::contents:
      break;
  }
  return contentEvents;
}

// File systems on which other machines, or a process that serves the files, make changes that no
// watch here sees (statfs(2), f_type). All of FUSE counts, whatever is behind it.
constexpr std::array<std::uint32_t, 18> farFileSystems = {
    0x00006969,  // NFS
    0x0000517B,  // SMB
    0xFE534D42,  // SMB 2
    0xFF534D42,  // CIFS
    0x65735546,  // FUSE, virtiofs among them
    0x01021997,  // 9P
    0x5346414F,  // AFS
    0x6B414653,  // AFS, the kernel's own
    0x73757245,  // Coda
    0x00C36400,  // Ceph
    0x0BD00BD0,  // Lustre
    0x47504653,  // GPFS
    0x01161970,  // GFS2
    0x7461636F,  // OCFS2
    0x0000564C,  // NCP
    0x786F4256,  // VirtualBox shared folders
    0xBACBACBC,  // VMware shared folders
    0x00C0FFEE,  // hostfs of user-mode Linux
};

bool isFar(const std::string& directory) {
  struct statfs status {};
  if (::statfs(directory.c_str(), &status) != 0) return true;
  const auto type = static_cast<std::uint32_t>(status.f_type);
  return std::find(farFileSystems.begin(), farFileSystems.end(), type) != farFileSystems.end();
}

// Absent for events that say nothing by themselves.
std::optional<WatchEvent::Kind> kindOf(std::uint32_t mask) {
  using Kind = WatchEvent::Kind;
  if (mask & (IN_IGNORED | IN_UNMOUNT | IN_DELETE_SELF | IN_MOVE_SELF)) return Kind::watchEnded;
  if (mask & (IN_DELETE | IN_MOVED_FROM)) return Kind::gone;
  if (mask & IN_MOVED_TO) return Kind::appeared;
  if (mask & IN_CREATE) return Kind::created;
  if (mask & IN_CLOSE_WRITE) return Kind::written;
  if (mask & IN_MODIFY) return Kind::modified;
  if (mask & IN_ATTRIB) return Kind::attributes;
  return std::nullopt;
}

class InotifyWatcher final : public Watcher {
 public:
  InotifyWatcher() : inotify_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

  std::optional<WatchId> watch(const std::string& directory, Interest interest) override {
    if (!inotify_ || isFar(directory)) return std::nullopt;
    constexpr std::uint32_t flags = IN_ONLYDIR | IN_EXCL_UNLINK | IN_MASK_ADD;
    const int watch =
        ::inotify_add_watch(inotify_.get(), directory.c_str(), eventsOf(interest) | flags);
    return watch < 0 ? std::nullopt : std::optional(watch);
  }

  // A watch that ended by itself is no longer known: nothing to do then.
  void unwatch(WatchId watch) override {
    static_cast<void>(::inotify_rm_watch(inotify_.get(), watch));
  }

  WatchBatch drain() override {
    WatchBatch batch;
    // One read is one batch, but for what did not fit: queries must see all that happened.
    for (ssize_t size = fill(); size > 0; size = fill()) {
      append(batch, static_cast<std::size_t>(size));
      if (static_cast<std::size_t>(size) < buffer_.size() - sizeof(inotify_event) - NAME_MAX) break;
    }
    return batch;
  }

  int descriptor() const override { return inotify_.get(); }

 private:
  ssize_t fill() {
    if (!inotify_) return 0;
    return ::read(inotify_.get(), buffer_.data(), buffer_.size());
  }

  void append(WatchBatch& batch, std::size_t size) {
    for (std::size_t position = 0; position + sizeof(inotify_event) <= size;) {
      inotify_event event{};
      std::memcpy(&event, buffer_.data() + position, sizeof event);
      const char* name = buffer_.data() + position + sizeof event;
      position += sizeof event + event.len;
      if (event.mask & IN_Q_OVERFLOW) batch.isIncomplete = true;
      const auto kind = kindOf(event.mask);
      if (!kind) continue;
      // The name is padded with NUL bytes.
      const std::size_t length = event.len == 0 ? 0 : ::strnlen(name, event.len);
      batch.events.push_back(
          {event.wd, *kind, (event.mask & IN_ISDIR) != 0, std::string(name, length)});
    }
  }

  Descriptor inotify_;
  std::array<char, std::size_t{64} * 1024> buffer_;
};

}  // namespace

std::unique_ptr<Watcher> makeWatcher() {
  return std::make_unique<InotifyWatcher>();
}

}  // namespace tidemark::local
