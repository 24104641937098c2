#include "host/line_reader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

namespace tidemark {
namespace {

using Lines = std::vector<std::string>;

class LineReaderTest : public ::testing::Test {
 protected:
  LineReaderTest() { EXPECT_EQ(::pipe(ends_), 0); }
  ~LineReaderTest() override { ::close(ends_[0]); }

  void write(std::string_view text) {
    while (!text.empty()) {
      const ssize_t size = ::write(ends_[1], text.data(), text.size());
      ASSERT_GT(size, 0);
      text.remove_prefix(static_cast<std::size_t>(size));
    }
  }
  void end() { ::close(ends_[1]); }
  int input() const { return ends_[0]; }

  Lines read(const std::string& text) {
    std::thread writer([&] {
      write(text);
      end();
    });
    LineReader reader(input());
    Lines lines;
    while (const auto line = reader.next()) lines.emplace_back(*line);
    writer.join();
    EXPECT_FALSE(reader.next());  // the end stays the end
    return lines;
  }

 private:
  int ends_[2];
};

using namespace std::string_literals;

TEST_F(LineReaderTest, EndsLinesWithLineFeedsWithOrWithoutReturns) {
  EXPECT_EQ(read("a\nb\r\n\n\r\nc\n"), (Lines{"a", "b", "", "", "c"}));
}

TEST_F(LineReaderTest, KeepsReturnsThatEndNoLine) {
  EXPECT_EQ(read("a\rb\n\r\r\nc\r"), (Lines{"a\rb", "\r", "c\r"}));
}

TEST_F(LineReaderTest, CountsALastLineWithoutItsEnd) {
  EXPECT_EQ(read("a\nb"), (Lines{"a", "b"}));
}

TEST_F(LineReaderTest, ReadsNothingFromNothing) {
  EXPECT_EQ(read(""), Lines{});
}

TEST_F(LineReaderTest, KeepsZeroBytes) {
  EXPECT_EQ(read("a\0b\n\0\n"s), (Lines{"a\0b"s, "\0"s}));
}

TEST_F(LineReaderTest, ReadsLinesOfAnyLength) {
  Lines lines;
  std::string text;
  for (const std::size_t length : {1, 65535, 65536, 65537, 3000000, 2, 131072, 0, 1500000, 5}) {
    lines.emplace_back(length, static_cast<char>('a' + lines.size()));
    text += lines.back() + (lines.size() % 2 == 0 ? "\n" : "\r\n");
  }
  EXPECT_EQ(read(text), lines);
}

TEST_F(LineReaderTest, GivesALineAsSoonAsItIsThere) {
  LineReader reader(input());
  write("a\nb\nc");
  EXPECT_EQ(reader.next(), "a");
  EXPECT_EQ(reader.next(), "b");
  write("d\n");
  EXPECT_EQ(reader.next(), "cd");
  end();
  EXPECT_FALSE(reader.next());
}

TEST_F(LineReaderTest, WaitsWhereTheHostMadeThePipeNonBlocking) {
  ASSERT_EQ(::fcntl(input(), F_SETFL, O_NONBLOCK), 0);
  LineReader reader(input());
  std::thread writer([&] {
    write("a");
    write("b\n");
    end();
  });
  EXPECT_EQ(reader.next(), "ab");
  EXPECT_FALSE(reader.next());
  writer.join();
}

TEST_F(LineReaderTest, TakesAFailureForTheEnd) {
  LineReader reader(-1);
  EXPECT_FALSE(reader.next());
  end();
}

}  // namespace
}  // namespace tidemark
