#include "host/reply_channel.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include "host/process_end.h"
#include "tests/support/output_capture.h"

namespace tidemark {
namespace {

using test::OutputCapture;

std::string replied(RequestId id, void (*build)(ReplyObject&)) {
  OutputCapture output;
  ReplyObject object;
  build(object);
  reply(id, std::move(object));
  return output.end();
}

void addNothing(ReplyObject&) {}

TEST(ReplyChannel, WritesOneLineWithTheIdAsItWasSent) {
  for (const char* id : {"7", "1.50", "\"a\\/b\"", "null", "true", "{\"a\":[1,null]}", "[]"}) {
    const Json json = *parseJson(id);
    EXPECT_EQ(replied(&json, addNothing), "{\"id\":" + std::string(id) + "}\n");
  }
}

TEST(ReplyChannel, LeavesOutAnIdThatWasNotSent) {
  EXPECT_EQ(replied(nullptr, addNothing), "{}\n");
  EXPECT_EQ(replied(nullptr, [](ReplyObject& object) { object.add("ok", true); }),
            "{\"ok\":true}\n");
}

TEST(ReplyChannel, AnswersFailuresWithTheMessageAlone) {
  OutputCapture output;
  const Json id = *parseJson("7");
  fail(&id, "no such \"thing\": a/b");
  fail(nullptr, "bad");
  EXPECT_EQ(output.end(),
            "{\"error\":\"no such \\\"thing\\\": a\\/b\",\"id\":7}\n{\"error\":\"bad\"}\n");
}

TEST(ReplyChannel, DropsALineThatIsNoUtf8AndGoesOn) {
  OutputCapture output;
  fail(nullptr, "\xFF");
  fail(nullptr, "fine");
  EXPECT_EQ(output.end(), "{\"error\":\"fine\"}\n");
}

TEST(ReplyChannel, KeepsLinesOfManyThreadsWhole) {
  constexpr int threads = 4;
  constexpr int lines = 200;
  const std::string text(20000, 'x');  // more than a pipe takes at once
  OutputCapture output;
  std::vector<std::thread> writers;
  for (int i = 0; i < threads; ++i) {
    writers.emplace_back([&] {
      for (int line = 0; line < lines; ++line) fail(nullptr, text);
    });
  }
  for (std::thread& writer : writers) writer.join();
  const std::string all = output.end();
  const std::string expected = "{\"error\":\"" + text + "\"}\n";
  ASSERT_EQ(all.size(), threads * lines * expected.size());
  for (std::size_t at = 0; at < all.size(); at += expected.size()) {
    ASSERT_EQ(all.compare(at, expected.size(), expected), 0);
  }
}

TEST(ReplyChannel, WaitsWhereTheHostMadeThePipeNonBlocking) {
  OutputCapture output;
  ASSERT_EQ(::fcntl(STDOUT_FILENO, F_SETFL, O_NONBLOCK), 0);
  const std::string text(5000000, 'x');
  fail(nullptr, text);
  EXPECT_EQ(output.end().size(), text.size() + std::string("{\"error\":\"\"}\n").size());
}

void writeToNobody() {
  int ends[2];
  if (::pipe(ends) != 0) std::_Exit(3);
  std::signal(SIGPIPE, SIG_IGN);
  ::dup2(ends[1], STDOUT_FILENO);
  ::close(ends[0]);
  fail(nullptr, "hello");
  std::_Exit(4);
}

TEST(ReplyChannel, EndsQuietlyWhenTheHostIsGone) {
  EXPECT_EXIT(writeToNobody(), testing::ExitedWithCode(0), "^$");
}

void writeToAClosedDescriptor() {
  ::close(STDOUT_FILENO);
  fail(nullptr, "hello");
  std::_Exit(4);
}

TEST(ReplyChannel, EndsQuietlyWhenWritingFails) {
  EXPECT_EXIT(writeToAClosedDescriptor(), testing::ExitedWithCode(0), "^$");
}

// Ends while another thread is stuck in a line that nobody reads.
void endWithALineUnderWay() {
  outputLock.lock();
  std::thread([] {
    endAfterLastLine(std::chrono::steady_clock::now() + std::chrono::milliseconds(50));
  }).join();
}

TEST(ReplyChannel, DoesNotWaitForALineBeyondTheDeadline) {
  EXPECT_EXIT(endWithALineUnderWay(), testing::ExitedWithCode(0), "^$");
}

}  // namespace
}  // namespace tidemark
