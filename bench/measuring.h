// What the figures have in common: clock, limit programs, one processor. One thread.
#pragma once

#include <sched.h>

#include <functional>
#include <string>
#include <vector>

#include "figures.h"
#include "process.h"

namespace tidemark::bench {

// The week of 2025 that most requests ask for.
inline constexpr int middleWeek = 24;

// YYYY-MM-DD; 0 is 1 January 2025.
std::string date(int dayOfYear);

// The seconds that it takes.
double timed(const std::function<void()>& action);

Process limitProgram(const Programs& programs, const char* name,
                     std::vector<std::string> arguments = {});

// The seconds until `sizedEcho` has answered with a line as long as one of `size` bytes.
double echoOf(Process& sizedEcho, std::size_t size);

Figure figure(const char* name, const StoreUnderTest& store, double measured, double limit,
              double target);

// Keeps this process, and what it starts meanwhile, on one processor. Whether a line has to wake
// another processor decides between 7 and 50 microseconds, and the scheduler decides anew for each
// pair of processes; the ratio would be chance.
class OneProcessor {
 public:
  OneProcessor();
  ~OneProcessor();
  OneProcessor(const OneProcessor&) = delete;
  OneProcessor& operator=(const OneProcessor&) = delete;

 private:
  cpu_set_t before_;
};

}  // namespace tidemark::bench
