#include <fcntl.h>
#include <unistd.h>

#include "scratch_folder.h"
#include "store/local/files/item_file.h"

namespace tidemark::local {
namespace {

using Names = std::set<std::string>;
using RewriteItemFile = ScratchFolder;

Rewrite become(std::string text) {
  return {.text = std::move(text), .refusal = {}};
}
Rewrite vanish() {
  return {};
}

RewriteText append(const std::string& addition) {
  return [=](std::string_view current) { return become(std::string(current) + addition); };
}

TEST_F(RewriteItemFile, GivesTheFileItsNewText) {
  put("a.ics", "old");
  EXPECT_TRUE(rewriteItemFile(folder(), "a.ics", append(" and new")));
  EXPECT_EQ(textOf("a.ics"), "old and new");
  EXPECT_EQ(names(), Names{"a.ics"});
}

TEST_F(RewriteItemFile, ReadsEmptyAndLargeFilesWhole) {
  const std::string large(300'000, 'x');
  for (const std::string& text : {std::string(), large}) {
    put("a.ics", text);
    EXPECT_TRUE(rewriteItemFile(folder(), "a.ics", append("y")));
    EXPECT_EQ(textOf("a.ics"), text + "y");
  }
}

TEST_F(RewriteItemFile, RemovesTheFile) {
  put("a.ics", "old");
  EXPECT_TRUE(rewriteItemFile(folder(), "a.ics", [](std::string_view) { return vanish(); }));
  EXPECT_EQ(names(), Names{});
}

TEST_F(RewriteItemFile, LeavesARefusedFileAlone) {
  put("a.ics", "old");
  const auto before = statusOf("a.ics");
  const StoreResult result = rewriteItemFile(folder(), "a.ics", [](std::string_view) {
    return Rewrite{.text = "new", .refusal = "The item cannot change."};
  });
  EXPECT_EQ(result.error, "The item cannot change.");
  EXPECT_EQ(textOf("a.ics"), "old");
  EXPECT_EQ(statusOf("a.ics").st_ino, before.st_ino);
}

TEST_F(RewriteItemFile, LeavesAFileAloneThatSaysItAlready) {
  put("a.ics", "old");
  const auto before = statusOf("a.ics");
  EXPECT_TRUE(rewriteItemFile(folder(), "a.ics", append("")));
  EXPECT_EQ(statusOf("a.ics").st_ino, before.st_ino);
}

TEST_F(RewriteItemFile, KeepsTheMode) {
  for (const mode_t mode : {0600U, 0644U, 0660U, 0400U, 0604U}) {
    put("a.ics", "old");
    ::chmod(path("a.ics").c_str(), mode);
    EXPECT_TRUE(rewriteItemFile(folder(), "a.ics", append("+")));
    EXPECT_EQ(statusOf("a.ics").st_mode & 07777, mode);
    std::filesystem::remove(path("a.ics"));
  }
}

TEST_F(RewriteItemFile, KeepsTheOwner) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  put("a.ics", "old");
  ASSERT_EQ(::chown(path("a.ics").c_str(), 1234, 2345), 0);
  ::chmod(path("a.ics").c_str(), 02640);
  EXPECT_TRUE(rewriteItemFile(folder(), "a.ics", append("+")));
  const auto status = statusOf("a.ics");
  EXPECT_EQ(status.st_uid, 1234U);
  EXPECT_EQ(status.st_gid, 2345U);
  EXPECT_EQ(status.st_mode & 07777, 02640U);
}

TEST_F(RewriteItemFile, WritesThroughLinksToTheFileBehind) {
  std::filesystem::create_directory(path("real"));
  put("real/file.ics", "old");
  std::filesystem::create_symlink("real/file.ics", path("middle.ics"));
  std::filesystem::create_symlink("middle.ics", path("a.ics"));
  EXPECT_TRUE(rewriteItemFile(folder(), "a.ics", append("+")));
  EXPECT_EQ(textOf("real/file.ics"), "old+");
  EXPECT_TRUE(std::filesystem::is_symlink(path("a.ics")));
  EXPECT_EQ(names(), (Names{"a.ics", "middle.ics", "real"}));
}

TEST_F(RewriteItemFile, RemovesTheFileBehindALinkAndTheLink) {
  std::filesystem::create_directory(path("real"));
  put("real/file.ics", "old");
  std::filesystem::create_symlink("real/file.ics", path("a.ics"));
  EXPECT_TRUE(rewriteItemFile(folder(), "a.ics", [](std::string_view) { return vanish(); }));
  EXPECT_FALSE(std::filesystem::exists(path("real/file.ics")));
  EXPECT_EQ(names(), Names{"real"});
}

TEST_F(RewriteItemFile, SaysWhatTheSystemSays) {
  const auto errorOf = [&](const std::string& name) {
    return rewriteItemFile(folder(), name, append("+")).error;
  };
  EXPECT_EQ(errorOf("none.ics"), "No such file or directory");
  std::filesystem::create_symlink("nowhere", path("dangling.ics"));
  EXPECT_EQ(errorOf("dangling.ics"), "No such file or directory");
  std::filesystem::create_symlink("circle.ics", path("circle.ics"));
  EXPECT_EQ(errorOf("circle.ics"), "Too many levels of symbolic links");
  std::filesystem::create_directory(path("folder.ics"));
  EXPECT_EQ(errorOf("folder.ics"), "Is a directory");
  ASSERT_EQ(::mkfifo(path("pipe.ics").c_str(), 0600), 0);
  EXPECT_EQ(errorOf("pipe.ics"), "Invalid argument");
}

TEST_F(RewriteItemFile, ChangesWhatAnotherProgramRenamedIntoPlace) {
  put("a.ics", "old");
  int calls = 0;
  EXPECT_TRUE(rewriteItemFile(folder(), "a.ics", [&](std::string_view current) {
    if (++calls == 1) renameIntoPlace("a.ics", "theirs");
    return become(std::string(current) + " and ours");
  }));
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(textOf("a.ics"), "theirs and ours");
  EXPECT_EQ(names(), Names{"a.ics"});
}

TEST_F(RewriteItemFile, ChangesWhatAnotherProgramWroteInPlace) {
  put("a.ics", "old");
  int calls = 0;
  EXPECT_TRUE(rewriteItemFile(folder(), "a.ics", [&](std::string_view current) {
    if (++calls == 1) put("a.ics", "now");
    return become(std::string(current) + " and ours");
  }));
  EXPECT_EQ(textOf("a.ics"), "now and ours");
}

TEST_F(RewriteItemFile, RemovesNothingThatItDidNotRead) {
  put("a.ics", "old");
  const StoreResult result = rewriteItemFile(folder(), "a.ics", [&](std::string_view current) {
    if (current != "old") return Rewrite{.text = {}, .refusal = "There is more in it."};
    renameIntoPlace("a.ics", "theirs");
    return vanish();
  });
  EXPECT_EQ(result.error, "There is more in it.");
  EXPECT_EQ(textOf("a.ics"), "theirs");
  EXPECT_EQ(names(), Names{"a.ics"});
}

TEST_F(RewriteItemFile, ChangesTheFileThatTookALinksPlace) {
  std::filesystem::create_directory(path("real"));
  put("real/file.ics", "old");
  std::filesystem::create_symlink("real/file.ics", path("a.ics"));
  int calls = 0;
  EXPECT_TRUE(rewriteItemFile(folder(), "a.ics", [&](std::string_view current) {
    if (++calls == 1) renameIntoPlace("a.ics", "theirs");
    return become(std::string(current) + " and ours");
  }));
  EXPECT_EQ(textOf("a.ics"), "theirs and ours");
  EXPECT_EQ(textOf("real/file.ics"), "old");
}

TEST_F(RewriteItemFile, FailsWhenTheFileWentMeanwhile) {
  put("a.ics", "old");
  const StoreResult result = rewriteItemFile(folder(), "a.ics", [&](std::string_view current) {
    std::filesystem::remove(path("a.ics"));
    return become(std::string(current) + "+");
  });
  EXPECT_EQ(result.error, "No such file or directory");
  EXPECT_EQ(names(), Names{});
}

TEST_F(RewriteItemFile, GivesUpOnAFileThatNeverRests) {
  put("a.ics", "0");
  int calls = 0;
  const StoreResult result = rewriteItemFile(folder(), "a.ics", [&](std::string_view) {
    renameIntoPlace("a.ics", std::to_string(++calls));
    return become("ours");
  });
  EXPECT_EQ(result.error, "The file is being changed by another program all the time.");
  EXPECT_GT(calls, 1);
  EXPECT_EQ(textOf("a.ics"), std::to_string(calls));
  EXPECT_EQ(names(), Names{"a.ics"});
}

}  // namespace
}  // namespace tidemark::local
