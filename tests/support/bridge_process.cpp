#include "tests/support/bridge_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>

#include "host/bridge.h"

namespace tidemark::test {
namespace {

std::array<int, 2> makePipe() {
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) std::abort();
  return ends;
}

}  // namespace

BridgeProcess::BridgeProcess(const std::function<std::unique_ptr<Store>()>& makeStore,
                             Pipes pipes) {
  std::fflush(nullptr);
  const auto input = makePipe();
  const auto output = makePipe();
  const auto errors = makePipe();
  if (pipes == Pipes::nonBlocking) {
    ::fcntl(input[0], F_SETFL, O_NONBLOCK);
    ::fcntl(output[1], F_SETFL, O_NONBLOCK);
  }
  child_ = ::fork();
  if (child_ < 0) std::abort();
  if (child_ == 0) {
    ::dup2(input[0], STDIN_FILENO);
    ::dup2(output[1], STDOUT_FILENO);
    ::dup2(errors[1], STDERR_FILENO);
    for (const auto& ends : {input, output, errors}) {
      ::close(ends[0]);
      ::close(ends[1]);
    }
    ::setenv("TIDEMARK_DESKTOP", "1", 1);  // macOS would start the test program again
    std::_Exit(runBridge(makeStore));
  }
  ::close(input[0]);
  ::close(output[1]);
  ::close(errors[1]);
  // A child that has ended makes write fail, which is enough.
  ::signal(SIGPIPE, SIG_IGN);
  input_ = input[1];
  output_ = std::make_unique<LineCollector>(output[0]);
  errors_ = std::make_unique<LineCollector>(errors[0]);
}

BridgeProcess::~BridgeProcess() {
  endInput();
  if (!status_) {
    ::kill(child_, SIGKILL);
    status();
  }
}

void BridgeProcess::write(std::string_view text) {
  while (!text.empty()) {
    const ssize_t size = ::write(input_, text.data(), text.size());
    if (size < 0) return;
    text.remove_prefix(static_cast<std::size_t>(size));
  }
}

void BridgeProcess::endInput() {
  if (input_ >= 0) ::close(input_);
  input_ = -1;
}

std::string BridgeProcess::next() {
  const auto line = output_->next();
  return line ? normalized(*line) : std::string();
}

int BridgeProcess::status() {
  if (!status_) {
    int wait = 0;
    ::waitpid(child_, &wait, 0);
    status_ = WIFEXITED(wait) ? WEXITSTATUS(wait) : -WTERMSIG(wait);
  }
  return *status_;
}

}  // namespace tidemark::test
