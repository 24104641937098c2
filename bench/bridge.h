// The bridge as a host sees it, for the measurements. One thread.
#pragma once

#include <string>
#include <string_view>

#include "figures.h"
#include "process.h"

namespace tidemark::bench {

class Bridge : public Process {
 public:
  Bridge(const Programs& programs, const std::filesystem::path& dataHome)
      : Process({programs.bridge},
                {"XDG_DATA_HOME=" + dataHome.string(), "TZ=Europe/Berlin", "TIDEMARK_DESKTOP=1"}) {}

  // Sends the request and gives the next line that is no notice.
  std::string_view ask(std::string_view request) {
    send(request);
    for (;;) {
      const std::string_view line = receive();
      if (!isNotice(line)) return line;
      changeCount_ += isChange(line);
    }
  }

  // Waits for the next notice of a change, unless one came meanwhile. False when none comes.
  bool awaitChange() {
    constexpr double patience = 5;
    while (changeCount_ == 0) {
      const auto line = receive(patience);
      if (!line) return false;
      changeCount_ += isChange(*line);
    }
    changeCount_ = 0;
    return true;
  }
  // Forgets notices that have come; used before a change whose notice is waited for.
  void drainChanges() {
    constexpr double quiet = 0.02;
    while (receive(quiet)) {
    }
    changeCount_ = 0;
  }

 private:
  // Notices are short and have no id; an event record among the answers is neither.
  static bool isNotice(std::string_view line) {
    return line.size() < 64 && line.find("\"event\":\"") != line.npos &&
           line.find("\"id\"") == line.npos;
  }
  static bool isChange(std::string_view line) {
    return isNotice(line) && line.find("changed") != line.npos;
  }

  int changeCount_ = 0;
};

// The n-th week of 2025 and all of it, as requests.
std::string weekRequest(int week);
std::string yearRequest();
std::string remindersRequest(int week);

}  // namespace tidemark::bench
