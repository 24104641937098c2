#include <sys/resource.h>

#include <csignal>

#include "scratch_folder.h"
#include "store/local/files/item_file.h"

namespace tidemark::local {
namespace {

using Names = std::set<std::string>;
using CreateItemFile = ScratchFolder;

TEST_F(CreateItemFile, HoldsTheText) {
  EXPECT_TRUE(createItemFile(folder(), "a.ics", "one\r\ntwo\r\n"));
  EXPECT_EQ(textOf("a.ics"), "one\r\ntwo\r\n");
  EXPECT_EQ(names(), Names{"a.ics"});
}

TEST_F(CreateItemFile, IsForItsOwnerAlone) {
  const mode_t old = ::umask(0);
  EXPECT_TRUE(createItemFile(folder(), "a.ics", "text"));
  ::umask(old);
  EXPECT_EQ(statusOf("a.ics").st_mode & 07777, 0600U);
}

TEST_F(CreateItemFile, NeverReplacesAFile) {
  put("a.ics", "old");
  EXPECT_EQ(createItemFile(folder(), "a.ics", "new").error, "File exists");
  EXPECT_EQ(textOf("a.ics"), "old");
  EXPECT_EQ(names(), Names{"a.ics"});
}

TEST_F(CreateItemFile, NeverReplacesALinkThatLeadsNowhere) {
  std::filesystem::create_symlink("nowhere", path("a.ics"));
  EXPECT_EQ(createItemFile(folder(), "a.ics", "new").error, "File exists");
  EXPECT_EQ(names(), Names{"a.ics"});
}

TEST_F(CreateItemFile, WritesThroughALinkedFolder) {
  std::filesystem::create_directory(path("real"));
  std::filesystem::create_directory_symlink("real", path("link"));
  EXPECT_TRUE(createItemFile(path("link"), "a.ics", "text"));
  EXPECT_EQ(textOf("real/a.ics"), "text");
}

TEST_F(CreateItemFile, SaysThatTheFolderIsMissing) {
  EXPECT_EQ(createItemFile(path("none"), "a.ics", "text").error, "No such file or directory");
}

// The limit on a file's size stands for a disk that takes only part of the text.
TEST_F(CreateItemFile, LeavesNothingWhenTheTextDoesNotFit) {
  rlimit old{};
  ::getrlimit(RLIMIT_FSIZE, &old);
  rlimit small = old;
  small.rlim_cur = 1000;
  const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &small);
  const StoreResult result = createItemFile(folder(), "a.ics", std::string(5000, 'x'));
  ::setrlimit(RLIMIT_FSIZE, &old);
  (void)std::signal(SIGXFSZ, oldHandler);

  EXPECT_EQ(result.error, "File too large");
  EXPECT_EQ(names(), Names{});
}

}  // namespace
}  // namespace tidemark::local
