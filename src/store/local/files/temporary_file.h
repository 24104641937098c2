// A file on its way into a directory: written under a name that no calendar program takes for an
// item, whole and durable before it gets its real name.
//
// One thread. Errors are returned as numbers.
#pragma once

#include <string>
#include <string_view>

#include "store/local/files/open_directory.h"

namespace tidemark::local {

// ".<random>.tmp", never the same twice.
std::string temporaryName();

class TemporaryFile {
 public:
  // The directory outlives the file. Nothing is made yet.
  explicit TemporaryFile(OpenDirectory& directory);
  // Removes whatever has the temporary name by then, unless it was released.
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  // Makes the file with that text and syncs it. Its mode and owner are those of the file that it
  // will replace; for a new one 0600 and this process's own, which is what the tools that share
  // these directories leave behind.
  //
  // Only root may give a file to somebody else. Where the owner cannot be kept, the file belongs to
  // who wrote it and keeps its group, where this process may give it that, and its mode. Nobody
  // loses sight of it: who reads the old file by its group may give the new one that group, and who
  // reads it as anybody leaves it open to anybody.
  ErrorNumber write(std::string_view text, const FileStatus* replaced = nullptr);

  const std::string& name() const { return name_; }
  // The file that was written, held open and so never mistaken for another.
  FileIdentity identity() const { return identity_; }
  // The name no longer holds a file that may go.
  void release() { isOwned_ = false; }

 private:
  ErrorNumber adopt(const FileStatus& own, const FileStatus& replaced);

  OpenDirectory& directory_;
  std::string name_;
  Descriptor descriptor_;
  FileIdentity identity_;
  bool isOwned_ = false;
};

}  // namespace tidemark::local
