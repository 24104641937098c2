// An item's file as it was read, and the questions by which a writer finds out whether it still is
// that.
//
// One thread.
#pragma once

#include <string>
#include <string_view>

#include "store/local/files/open_directory.h"

namespace tidemark::local {

class CurrentFile {
 public:
  // Follows symbolic links to the real file, locks the directory that it is in, and reads it.
  CurrentFile(const std::string& directory, const std::string& name);

  // Why it could not be read; 0 when it was.
  ErrorNumber error() const { return error_; }
  // The real file's directory, locked as long as this object lives, and its name in there.
  OpenDirectory& directory() { return directory_; }
  const std::string& name() const { return name_; }
  const std::string& text() const { return text_; }
  const FileStatus& status() const { return status_; }

  // The name still leads to the file that was read, and nothing happened to that.
  bool isUntouched() const;
  // The file that was read now has the name `aside` in the same directory, and its bytes are the
  // same. (Its times say nothing any more: renaming changes them, and two writes may fall on one
  // tick of the file system's clock.)
  bool isAside(const std::string& aside) const;
  // The item's own name leads to that file of the directory. Always so without symbolic links.
  bool leadsTo(const FileIdentity& identity) const;
  // Removes the item's own name where that is a symbolic link that leads nowhere any more.
  void removeDanglingLink() const;

 private:
  ErrorNumber followLink();
  ErrorNumber openFile();
  ErrorNumber readText();
  bool holdsItsText() const;

  std::string path_;
  bool isLink_ = false;
  OpenDirectory directory_;
  std::string name_;
  Descriptor descriptor_;
  FileStatus status_{};
  std::string text_;
  ErrorNumber error_ = 0;
};

}  // namespace tidemark::local
