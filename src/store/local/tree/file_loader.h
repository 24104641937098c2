// Reads files of collections into records, many at a time where there are many.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "store/local/files/descriptor.h"
#include "store/local/files/file_reader.h"
#include "store/local/items/item_groups.h"

namespace tidemark::local {

// Some names of one directory, one after the other.
class FileNames {
 public:
  void add(std::string_view name, bool isLinked);
  std::size_t size() const { return ends_.size(); }
  bool isEmpty() const { return ends_.empty(); }
  const char* name(std::size_t index) const { return text_.data() + begin(index); }
  bool isLinked(std::size_t index) const { return isLinked_[index]; }

 private:
  std::size_t begin(std::size_t index) const { return index == 0 ? 0 : ends_[index - 1]; }

  std::string text_;  // each name with a NUL behind it
  std::vector<std::size_t> ends_;
  std::vector<bool> isLinked_;
};

struct LoadedFile {
  std::string_view name;  // of the order's
  FileText::Outcome outcome = FileText::Outcome::absent;
  // The text was not cut off. Only of a file that was read.
  bool isWhole = false;
  // Never null; without items where there is nothing to show.
  std::unique_ptr<FileRecord> record;
};

// What is to be loaded from one directory.
struct LoadOrder {
  Descriptor directory;
  FileNames names;
  FileReader::Changes changes = FileReader::Changes::toldByWatch;
  // Called for each name, by one thread at a time, in no order.
  std::function<void(LoadedFile)> take;
};

// Returns when all are loaded, and leaves no orders. Large loads are shared with threads that live
// as long as the load.
void loadFiles(std::vector<LoadOrder>& orders);

}  // namespace tidemark::local
