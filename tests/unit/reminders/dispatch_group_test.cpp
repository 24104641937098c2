#include "reminders/dispatch_group.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include "reminders/global_queue.h"
#include "tests/support/lines.h"

namespace tidemark {
namespace {

using test::patience;

TEST(GlobalQueue, RunsEachTaskOnceOnAnotherThread) {
  constexpr int tasks = 1000;
  std::atomic<int> runs = 0;
  std::promise<void> done;
  const auto here = std::this_thread::get_id();
  std::atomic<bool> ranHere = false;
  for (int i = 0; i < tasks; ++i) {
    runOnGlobalQueue([&] {
      if (std::this_thread::get_id() == here) ranHere = true;
      if (++runs == tasks) done.set_value();
    });
  }
  ASSERT_EQ(done.get_future().wait_for(patience), std::future_status::ready);
  EXPECT_FALSE(ranHere);
}

TEST(GlobalQueue, RunsATaskBesideOneThatWaits) {
  std::promise<void> release;
  std::promise<void> ran;
  runOnGlobalQueue([waiting = release.get_future().share()] { waiting.wait(); });
  runOnGlobalQueue([&] { ran.set_value(); });
  EXPECT_EQ(ran.get_future().wait_for(patience), std::future_status::ready);
  release.set_value();
}

TEST(DispatchGroup, RunsAtOnceWhenNothingEntered) {
  DispatchGroup group;
  bool ran = false;
  group.notify([&] { ran = true; });
  EXPECT_TRUE(ran);
}

TEST(DispatchGroup, RunsOnAnotherThreadWhenTheLastHasLeft) {
  DispatchGroup group;
  std::atomic<bool> left = false;
  std::promise<bool> ran;
  std::thread::id thread;
  group.enter();
  group.enter();
  group.notify([&] {
    thread = std::this_thread::get_id();
    ran.set_value(left);
  });
  group.leave();
  left = true;
  group.leave();
  auto result = ran.get_future();
  ASSERT_EQ(result.wait_for(patience), std::future_status::ready);
  EXPECT_TRUE(result.get());
  EXPECT_NE(thread, std::this_thread::get_id());
}

TEST(DispatchGroup, RunsAtOnceWhenAllLeftBeforeItWasAsked) {
  DispatchGroup group;
  group.enter();
  group.leave();
  bool ran = false;
  group.notify([&] { ran = true; });
  EXPECT_TRUE(ran);
}

TEST(DispatchGroup, RunsOnceHoweverItsThreadsMeet) {
  for (int round = 0; round < 200; ++round) {
    const auto group = std::make_shared<DispatchGroup>();
    auto runs = std::make_shared<std::atomic<int>>(0);
    std::promise<void> ran;
    group->enter();
    group->enter();
    std::thread first([group] { group->leave(); });
    std::thread second([group] { group->leave(); });
    group->notify([&ran, runs] {
      if (++*runs == 1) ran.set_value();
    });
    ASSERT_EQ(ran.get_future().wait_for(patience), std::future_status::ready);
    first.join();
    second.join();
    EXPECT_EQ(*runs, 1);
  }
}

}  // namespace
}  // namespace tidemark
