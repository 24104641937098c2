// A child process behind two pipes, and the clock it is measured with. One thread.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidemark::bench {

// Seconds of a clock that only goes forward.
double now();

// The program at arguments[0]. Its standard error goes nowhere. Ended and waited for by the
// destructor at the latest. What cannot be done (no program, no memory, an end of its output where
// a line is due) ends the measurement with a message.
class Process {
 public:
  // `environment` is added to this process's own.
  explicit Process(std::vector<std::string> arguments, std::vector<std::string> environment = {});
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t id() const { return id_; }
  // Writes the line and a line feed.
  void send(std::string_view line);
  // The next line without its line feed, valid until the next call. Absent when none came in time.
  std::optional<std::string_view> receive(double seconds);
  // As above, but a line that does not come ends the measurement.
  std::string_view receive();
  // Ends the child's input and waits for its end; the processor seconds (user and system) that it
  // took.
  double finish();

 private:
  void closeInput();

  std::string name_;
  pid_t id_ = -1;
  int input_ = -1;
  int output_ = -1;
  std::string line_;
  std::vector<char> buffer_;
  std::size_t begin_ = 0;  // of what was read and not yet given out
  std::size_t end_ = 0;
};

// Says why on standard error and ends this process.
[[noreturn]] void giveUp(const std::string& why);

}  // namespace tidemark::bench
