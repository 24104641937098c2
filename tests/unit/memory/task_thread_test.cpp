#include "store/memory/task_thread.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <memory>
#include <vector>

namespace tidemark {
namespace {

using namespace std::chrono_literals;

TEST(TaskThread, TasksOfOneTimeRunInTheOrderPosted) {
  std::vector<int> order;
  std::promise<void> done;
  TaskThread thread;
  for (int i = 0; i < 100; ++i) thread.post([&order, i] { order.push_back(i); });
  thread.post([&] { done.set_value(); });
  done.get_future().wait();
  EXPECT_EQ(order.size(), 100u);
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(TaskThread, EachTaskRunsWhenItsTimeHasCome) {
  std::vector<int> order;
  std::promise<void> done;
  TaskThread thread;
  const auto start = TaskThread::Clock::now();
  thread.post(
      [&] {
        order.push_back(2);
        done.set_value();
      },
      50ms);
  thread.post([&] { order.push_back(1); }, 10ms);
  thread.post([&] { order.push_back(0); });
  done.get_future().wait();
  EXPECT_GE(TaskThread::Clock::now() - start, 50ms);
  EXPECT_THAT(order, testing::ElementsAre(0, 1, 2));
}

TEST(TaskThread, TaskMayPostAnother) {
  std::promise<void> done;
  TaskThread thread;
  thread.post([&] { thread.post([&] { done.set_value(); }); });
  done.get_future().wait();
}

TEST(TaskThread, EndDropsWhatIsWaiting) {
  const auto held = std::make_shared<int>(1);
  bool ran = false;
  {
    TaskThread thread;
    thread.post([&ran, held] { ran = true; }, 24h);
    EXPECT_EQ(held.use_count(), 2);
  }
  EXPECT_FALSE(ran);
  EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
}  // namespace tidemark
