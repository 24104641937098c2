// Another process writes while queries run: every answer shows at least what was renamed into place
// before it was asked for, and nothing but whole files, of those rewritten in place as well.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <thread>

#include "store/local/local_store_parts.h"
#include "tests/unit/local/scratch_store.h"

namespace tidemark::local {
namespace {

constexpr int files = 8;
constexpr int generations = 1500;
constexpr int rewritings = 1500;

std::string fileText(int file, int generation) {
  // Two events that must always agree.
  const std::string uid = std::to_string(file);
  const std::string title = std::to_string(generation);
  std::string text = eventText(uid + "-first", title);
  text += eventText(uid + "-second", title);
  return text;
}

class Stress : public ScratchStore {
 public:
  // What the writer has put in place so far, one number a file.
  struct Progress {
    std::atomic<int> generation[files];
    std::atomic<bool> isDone;
  };

  Stress() {
    void* memory = ::mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE,
                          MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    progress_ = new (memory) Progress();
  }
  ~Stress() override { ::munmap(progress_, sizeof(Progress)); }

  [[noreturn]] void writeForAWhile() {
    const std::string directory = root() / "work";
    for (int generation = 1; generation <= generations; ++generation) {
      const int file = generation % files;
      const std::string text = fileText(file, generation);
      const std::string temporary = directory + "/.writing.tmp";
      const std::string name = directory + "/" + std::to_string(file) + ".ics";
      const int descriptor = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
      if (::write(descriptor, text.data(), text.size()) < 0) ::_exit(1);
      ::close(descriptor);
      if (::rename(temporary.c_str(), name.c_str()) != 0) ::_exit(1);
      progress_->generation[file] = generation;
    }
    progress_->isDone = true;
    ::_exit(0);
  }

  // As an editor saves that knows of no renaming.
  [[noreturn]] void rewriteForAWhile(const std::string& text) {
    const std::string name = root() / "work/a.ics";
    const std::size_t half = text.size() / 2;
    for (int count = 0; count < rewritings; ++count) {
      const int descriptor = ::open(name.c_str(), O_WRONLY | O_TRUNC);
      if (::write(descriptor, text.data(), half) < 0) ::_exit(1);
      if (::write(descriptor, text.data() + half, text.size() - half) < 0) ::_exit(1);
      ::close(descriptor);
    }
    progress_->isDone = true;
    ::_exit(0);
  }

 protected:
  Progress* progress_ = nullptr;
};

TEST_F(Stress, NoAnswerIsStaleOrHalf) {
  for (int file = 0; file < files; ++file) {
    write(root() / "work" / (std::to_string(file) + ".ics"), fileText(file, 0));
  }
  // Never destroyed: it is served for ever.
  static auto* const stores = new std::vector<std::unique_ptr<Store>>;
  stores->push_back(makeLocalStore({root()}, makeWatcher()));
  Store* const served = stores->back().get();
  const pid_t writer = ::fork();
  if (writer == 0) writeForAWhile();
  ASSERT_GT(writer, 0);
  served->setChangeObserver([] {});
  std::thread([served] { served->run(); }).detach();

  int answers = 0;
  for (bool isLast = false; !isLast; ++answers) {
    isLast = progress_->isDone;
    int before[files];
    for (int file = 0; file < files; ++file) before[file] = progress_->generation[file];
    const auto found =
        served->eventsMatchingPredicate({instant(2025, 3, 3), instant(2025, 3, 4), std::nullopt});
    ASSERT_EQ(found.size(), 2u * files);
    for (int file = 0; file < files; ++file) {
      const auto index = static_cast<std::size_t>(2 * file);
      const std::string first(*found[index]->title());
      const std::string second(*found[index + 1]->title());
      ASSERT_EQ(first, second);
      ASSERT_GE(std::stoi(first), before[file]);
    }
  }
  int status = 0;
  ASSERT_EQ(::waitpid(writer, &status, 0), writer);
  EXPECT_EQ(status, 0);
  EXPECT_GT(answers, 10);
}

TEST_F(Stress, NoAnswerIsHalfOfWhatIsRewrittenInPlace) {
  const std::string text = eventText("a", "A");
  write(root() / "work/a.ics", text);
  store();
  ASSERT_EQ(titles(), Titles{"A"});
  const pid_t writer = ::fork();
  if (writer == 0) rewriteForAWhile(text);
  ASSERT_GT(writer, 0);
  int answers = 0;
  for (; !progress_->isDone; ++answers) ASSERT_EQ(titles(), Titles{"A"}) << answers;
  int status = 0;
  ASSERT_EQ(::waitpid(writer, &status, 0), writer);
  EXPECT_EQ(status, 0);
  EXPECT_GT(answers, 10);
}

}  // namespace
}  // namespace tidemark::local
