// What a directory holds, by the names that this store knows.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "store/local/files/descriptor.h"
#include "store/local/tree/file_loader.h"

namespace tidemark::local {

struct DirectoryListing {
  // Regular files, and links to such or to nothing yet.
  FileNames items;
  std::vector<std::string> directories;
  // Links to nothing yet, which may come to be directories.
  std::vector<std::string> danglingLinks;
};

// Reads the directory that is open as `directory`; absent when it cannot be listed.
std::optional<DirectoryListing> listDirectory(int directory);

enum class EntryKind { absent, item, linkedItem, danglingLink, directory, other };
// What the name stands for, links followed.
EntryKind entryKindOf(int directory, const std::string& name);

// Invalid when there is no such directory, or it may not be listed.
Descriptor openDirectory(const std::string& path);

}  // namespace tidemark::local
