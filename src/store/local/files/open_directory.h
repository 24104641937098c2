// A directory held open while its files are changed: the calls that put files in place, take them
// away and make that durable, on systems and file systems with and without the newer kinds of
// rename.
//
// One thread. Names are entries of the directory; paths do not belong here. Errors are returned as
// numbers.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

#include "store/local/files/descriptor.h"

namespace tidemark::local {

using FileStatus = struct stat;

// Which file it is, whatever its name. Numbers are used again once a file is gone: compare only
// with a file that is held open or still has a name.
struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;

  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};
FileIdentity identityOf(const FileStatus& status);

// The system or the file system does not know this kind of call.
bool isUnsupported(ErrorNumber error);

class OpenDirectory {
 public:
  explicit OpenDirectory(const std::string& path);

  // Why it could not be opened; 0 when it was.
  ErrorNumber error() const { return error_; }
  int descriptor() const { return descriptor_.get(); }

  // Waits until no other process has this lock on the directory. It ends with this object, or with
  // the process however that ends. File systems without locks go without.
  void lock();

  // The entry itself, not what a symbolic link leads to. Empty when there is none or it cannot be
  // told.
  std::optional<FileStatus> status(const std::string& name) const;
  // Holds on to the entry's file without reading it.
  Descriptor hold(const std::string& name) const;

  // The two files trade names at one instant. ENOENT when either is missing; see isUnsupported.
  ErrorNumber exchange(const std::string& one, const std::string& other);
  // EEXIST when `to` is there.
  ErrorNumber renameIfAbsent(const std::string& from, const std::string& to);
  // Replaces `to`.
  ErrorNumber rename(const std::string& from, const std::string& to);
  ErrorNumber remove(const std::string& name);

  // Makes every change of the entries durable.
  ErrorNumber sync();

 private:
  Descriptor descriptor_;
  ErrorNumber error_ = 0;
};

// Makes a file's content durable, as far as to the medium itself.
ErrorNumber syncFile(int descriptor);

}  // namespace tidemark::local
