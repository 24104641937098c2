// A thread that runs tasks one after another, each when its time has come.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace tidemark {

class TaskThread {
 public:
  using Clock = std::chrono::steady_clock;
  using Task = std::function<void()>;

  TaskThread() = default;
  // Waits for the task that is running; those that are waiting never run.
  ~TaskThread();
  TaskThread(const TaskThread&) = delete;
  TaskThread& operator=(const TaskThread&) = delete;

  // Any thread. Tasks of one time run in the order in which they were posted.
  void post(Task task, Clock::duration delay = {});

 private:
  void work();

  std::mutex lock_;
  std::condition_variable wakeUp_;
  // By time and, within one, by the order of posting; under lock_.
  std::multimap<Clock::time_point, Task> waiting_;
  bool ending_ = false;  // under lock_
  std::thread thread_;   // started by the first task, under lock_
};

}  // namespace tidemark
