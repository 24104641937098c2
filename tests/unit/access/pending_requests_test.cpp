#include "access/pending_requests.h"

#include <gtest/gtest.h>

#include <csignal>
#include <thread>

namespace tidemark {
namespace {

using Clock = std::chrono::steady_clock;

TEST(PendingRequests, DoesNotWaitForNothing) {
  PendingRequests requests;
  const auto start = Clock::now();
  requests.waitUntilNone(start + std::chrono::hours(1));
  EXPECT_LT(Clock::now() - start, std::chrono::minutes(1));
}

TEST(PendingRequests, WaitsForTheLastOne) {
  PendingRequests requests;
  requests.begin();
  requests.begin();
  bool finished = false;
  std::thread store([&] {
    requests.finish();
    finished = true;
    requests.finish();
  });
  requests.waitUntilNone(Clock::now() + std::chrono::hours(1));
  EXPECT_TRUE(finished);
  store.join();
}

TEST(PendingRequests, WaitsNoLongerThanTheDeadline) {
  PendingRequests requests;
  requests.begin();
  const auto deadline = Clock::now() + std::chrono::milliseconds(20);
  requests.waitUntilNone(deadline);
  EXPECT_GE(Clock::now(), deadline);
}

TEST(PendingRequests, StopsTheProcessWhenMoreFinishThanBegan) {
  PendingRequests requests;
  EXPECT_EXIT(requests.finish(), testing::KilledBySignal(SIGABRT), "^$");
}

}  // namespace
}  // namespace tidemark
