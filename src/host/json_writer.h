// Writes JSON text into one growing buffer: compact, every slash escaped, other characters as they
// are.
//
// The records of a big answer are written straight into the line that goes out; nothing is built in
// between.
#pragma once

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
    constexpr std::size_t length = size - 1;
    char* end = beginToken(length + 3);
    *end++ = '"';
    std::memcpy(end, name, length);
    end += length;
    *end++ = '"';
    *end++ = ':';
    out_.setEnd(end);
    needsComma_ = false;
  }

  void value(std::string_view text);
  void value(const char* text) { value(std::string_view(text)); }
  void value(bool flag) { literal(flag ? std::string_view("true") : std::string_view("false")); }
  void value(std::int64_t number);
  void value(const Json& json);
  // A string of ASCII characters none of which needs escaping: dates, colours.
  void plainValue(std::string_view text);

  template <std::size_t size, typename T>
  void member(const char (&name)[size], const T& v) {
    key(name);
    value(v);
  }

  // False once a string was not valid UTF-8: the text must not be sent.
  bool isValid() const { return valid_; }

 private:
  // Room for a comma, if one is due, and that many bytes more: where to write them.
  char* beginToken(std::size_t room) {
    char* end = out_.reserve(room + 1);
    if (needsComma_) *end++ = ',';
    return end;
  }
  void open(char bracket) {
    char* end = beginToken(1);
    // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): where there is room it is not null
    *end++ = bracket;
    out_.setEnd(end);
    needsComma_ = false;
  }
  void close(char bracket) {
    out_.append(bracket);
    needsComma_ = true;
  }
  void literal(std::string_view text) {
    char* end = beginToken(text.size());
    std::memcpy(end, text.data(), text.size());
    out_.setEnd(end + text.size());
    needsComma_ = true;
  }
  void escapedValue(std::string_view text);

  TextBuffer& out_;
  bool valid_ = true;
  bool needsComma_ = false;
};

}  // namespace tidemark
