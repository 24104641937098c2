#include "measuring.h"

#include <chrono>
#include <cstdio>

namespace tidemark::bench {

std::string date(int dayOfYear) {
  using namespace std::chrono;
  const year_month_day day{sys_days{2025y / January / 1} + days{dayOfYear}};
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02u-%02u", static_cast<int>(day.year()),
                static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()));
  return text;
}

double timed(const std::function<void()>& action) {
  const double start = now();
  action();
  return now() - start;
}

Process limitProgram(const Programs& programs, const char* name,
                     std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), programs.limits / name);
  return Process(std::move(arguments));
}

double echoOf(Process& sizedEcho, std::size_t size) {
  const std::string line = std::to_string(size + 1);
  return timed([&] {
    sizedEcho.send(line);
    sizedEcho.receive();
  });
}

Figure figure(const char* name, const StoreUnderTest& store, double measured, double limit,
              double target) {
  return {name, store.label, Unit::seconds, measured, limit, target};
}

OneProcessor::OneProcessor() {
  sched_getaffinity(0, sizeof before_, &before_);
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(sched_getcpu(), &one);
  sched_setaffinity(0, sizeof one, &one);
}

OneProcessor::~OneProcessor() {
  sched_setaffinity(0, sizeof before_, &before_);
}

}  // namespace tidemark::bench
