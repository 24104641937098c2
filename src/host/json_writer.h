// Writes JSON text into one growing buffer: compact, every slash escaped, other characters as they
// are.
//
// The records of a big answer are written straight into the line that goes out; nothing is built in
// between.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "host/json.h"
#include "host/text_buffer.h"

namespace tidemark {

// Calls must make a well-formed value: inside an object a key before each value. One thread.
class JsonWriter {
 public:
  explicit JsonWriter(TextBuffer& out) : out_(out) {}

  void beginObject() { open('{'); }
  void endObject() { close('}'); }
  void beginArray() { open('['); }
  void endArray() { close(']'); }
  // One of the protocol's own keys, as a literal: ASCII that needs no escaping. Inline, so that its
  // length is known where it is copied.
  template <std::size_t size>
  void key(const char (&name)[size]) {
    out_.setEnd(writeKey(name, beginToken(roomForKey<size>)));
    commaSize_ = 0;
  }

  void value(std::string_view text) { endToken(writeText(text, beginToken(roomForText(text)))); }
  void value(const char* text) { value(std::string_view(text)); }
  void value(bool flag) { literal(flag ? std::string_view("true") : std::string_view("false")); }
  void value(std::int64_t number);
  void value(const Json& json);

  template <std::size_t size, typename T>
  void member(const char (&name)[size], const T& v) {
    key(name);
    value(v);
  }
  // In one step, since most of a record are texts.
  template <std::size_t size>
  void member(const char (&name)[size], std::string_view text) {
    char* end = writeKey(name, beginToken(roomForKey<size> + roomForText(text)));
    endToken(writeText(text, end));
  }
  // A string of ASCII characters none of which needs escaping: dates, colours.
  template <std::size_t size, std::size_t length>
  void plainMember(const char (&name)[size], const std::array<char, length>& text) {
    char* end = writeKey(name, beginToken(roomForKey<size> + length + 2));
    *end++ = '"';
    std::memcpy(end, text.data(), length);
    end += length;
    *end++ = '"';
    endToken(end);
  }

  // How much was written by now; and once more what was written between two such moments: whole
  // members, neither time the first of their object.
  std::size_t size() const { return out_.view().size(); }
  void repeat(std::size_t begin, std::size_t end) {
    char* out = out_.reserve(end - begin);
    std::memcpy(out, out_.view().data() + begin, end - begin);
    endToken(out + (end - begin));
  }

  // False once a string was not valid UTF-8: the text must not be sent.
  bool isValid() const { return valid_; }

 private:
  // Text is written in pieces of this size, so that room for the worst case is bounded and made
  // once a piece.
  static constexpr std::size_t pieceSize = 4096;
  // The longest that a character gets: \u00xx.
  static constexpr std::size_t longestEscape = 6;
  // The name with the end of its array, two quotes and a colon.
  template <std::size_t size>
  static constexpr std::size_t roomForKey = size + 2;

  static std::size_t roomForText(std::string_view text) {
    return longestEscape * std::min(text.size(), pieceSize) + 2;
  }

  // Room for a comma, if one is due, and that many bytes more: where to write them.
  char* beginToken(std::size_t room) {
    char* end = out_.reserve(room + 1);
    // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): where there is room it is not null
    *end = ',';
    return end + commaSize_;
  }
  // After the token, a comma is due.
  void endToken(const char* end) {
    out_.setEnd(end);
    commaSize_ = 1;
  }
  template <std::size_t size>
  static char* writeKey(const char (&name)[size], char* out) {
    constexpr std::size_t length = size - 1;
    *out++ = '"';
    std::memcpy(out, name, length);
    out += length;
    *out++ = '"';
    *out++ = ':';
    return out;
  }
  // The text and its quotes, to where roomForText is. Returns their end, which is elsewhere when
  // the text is long.
  char* writeText(std::string_view text, char* out);

  void open(char bracket) {
    char* end = beginToken(1);
    *end++ = bracket;
    out_.setEnd(end);
    commaSize_ = 0;
  }
  void close(char bracket) {
    out_.append(bracket);
    commaSize_ = 1;
  }
  void literal(std::string_view text) {
    char* end = beginToken(text.size());
    std::memcpy(end, text.data(), text.size());
    endToken(end + text.size());
  }

  TextBuffer& out_;
  bool valid_ = true;
  std::size_t commaSize_ = 0;  // 1 when a comma is due before the next token
};

}  // namespace tidemark
