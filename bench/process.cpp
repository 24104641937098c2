#include "process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <utility>

extern char** environ;

namespace tidemark::bench {
namespace {

// A slow disk under the largest store; whoever takes longer hangs.
constexpr double patience = 120;

double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

std::vector<char*> pointers(std::vector<std::string>& strings) {
  std::vector<char*> result;
  for (std::string& string : strings) result.push_back(string.data());
  result.push_back(nullptr);
  return result;
}

}  // namespace

void giveUp(const std::string& why) {
  std::fprintf(stderr, "measure: %s\n", why.c_str());
  std::exit(1);
}

double now() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

Process::Process(std::vector<std::string> arguments, std::vector<std::string> environment)
    : name_(arguments.at(0)), buffer_(1 << 22) {
  for (char** variable = environ; *variable; ++variable) environment.emplace_back(*variable);
  int input[2], output[2];
  if (pipe2(input, O_CLOEXEC) || pipe2(output, O_CLOEXEC)) giveUp("no pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  const int failure = posix_spawn(&id_, name_.c_str(), &actions, nullptr,
                                  pointers(arguments).data(), pointers(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  if (failure) giveUp("cannot start " + name_ + ": " + std::strerror(failure));
  close(input[0]);
  close(output[1]);
  input_ = input[1];
  output_ = output[0];
}

Process::~Process() {
  if (id_ > 0) {
    kill(id_, SIGKILL);
    waitpid(id_, nullptr, 0);
  }
  closeInput();
  close(output_);
}

void Process::closeInput() {
  if (input_ >= 0) close(input_);
  input_ = -1;
}

void Process::send(std::string_view line) {
  line_.assign(line);
  line_ += '\n';
  for (std::string_view rest = line_; !rest.empty();) {
    const ssize_t written = write(input_, rest.data(), rest.size());
    if (written < 0 && errno != EINTR) giveUp(name_ + " does not read");
    if (written > 0) rest.remove_prefix(static_cast<std::size_t>(written));
  }
}

std::optional<std::string_view> Process::receive(double seconds) {
  const double deadline = now() + seconds;
  for (std::size_t searched = begin_;;) {
    if (const void* found = std::memchr(&buffer_[searched], '\n', end_ - searched)) {
      const auto at = static_cast<std::size_t>(static_cast<const char*>(found) - buffer_.data());
      const std::string_view line(&buffer_[begin_], at - begin_);
      begin_ = at + 1;
      return line;
    }
    searched = end_;
    if (begin_ == end_) begin_ = end_ = searched = 0;
    if (end_ + 1 == buffer_.size()) {
      if (begin_ == 0) {
        buffer_.resize(2 * buffer_.size());
      } else {
        std::memmove(buffer_.data(), &buffer_[begin_], end_ - begin_);
        end_ -= begin_;
        searched -= begin_;
        begin_ = 0;
      }
    }
    // A blocking read would do but for the deadline; asking first costs the child and its limit the
    // same.
    pollfd ready{output_, POLLIN, 0};
    const double left = deadline - now();
    if (left <= 0 || poll(&ready, 1, static_cast<int>(left * 1000) + 1) <= 0) return std::nullopt;
    const ssize_t got = read(output_, &buffer_[end_], buffer_.size() - 1 - end_);
    if (got <= 0) giveUp(name_ + " ended early");
    end_ += static_cast<std::size_t>(got);
  }
}

std::string_view Process::receive() {
  const std::optional<std::string_view> line = receive(patience);
  if (!line) giveUp(name_ + " does not answer");
  return *line;
}

double Process::finish() {
  closeInput();
  rusage usage{};
  if (wait4(std::exchange(id_, -1), nullptr, 0, &usage) < 0) giveUp("cannot wait for " + name_);
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

}  // namespace tidemark::bench
