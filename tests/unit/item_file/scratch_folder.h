// A folder of its own for one test, removed afterwards, and what is in it.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace tidemark::local {

class ScratchFolder : public testing::Test {
 protected:
  ScratchFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "item-file-XXXXXX").string();
    folder_ = ::mkdtemp(pattern.data());
  }
  ~ScratchFolder() override {
    ::chmod(folder_.c_str(), 0700);
    std::filesystem::remove_all(folder_);
  }

  const std::string& folder() const { return folder_; }
  std::string path(const std::string& name) const { return folder_ + '/' + name; }

  void put(const std::string& name, const std::string& text) const {
    std::ofstream(path(name), std::ios::binary) << text;
  }
  // The way most programs save: a file beside it, renamed over.
  void renameIntoPlace(const std::string& name, const std::string& text) const {
    put("other-program", text);
    std::filesystem::rename(path("other-program"), path(name));
  }
  std::string textOf(const std::string& name) const {
    std::ifstream stream(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  struct stat statusOf(const std::string& name) const {
    struct stat status {};
    EXPECT_EQ(::stat(path(name).c_str(), &status), 0) << name;
    return status;
  }
  std::set<std::string> names() const {
    std::set<std::string> result;
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
      result.insert(entry.path().filename().string());
    }
    return result;
  }

 private:
  std::string folder_;
};

}  // namespace tidemark::local
