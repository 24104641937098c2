// Everything the process says goes out through here: one JSON object a line on standard output.
//
// emit, reply and fail are called from any thread; `outputLock` keeps lines whole. A host that went
// away ends the process.
#pragma once

#include <cstddef>
#include <mutex>
#include <string_view>

#include "host/json.h"
#include "host/json_writer.h"
#include "host/text_buffer.h"

namespace tidemark {

// Orders all writes to standard output; held only while a line is written. Never destroyed, since
// threads may still write while the process ends.
extern std::timed_mutex& outputLock;

// A request's "id": absent, or any JSON value (null too). Points into the request, or into a copy
// that the caller keeps.
using RequestId = const Json*;

// One output object under construction. Its members are written as they are added; "id" is the
// reply channel's. Built and sent by one thread.
class ReplyObject {
 public:
  ReplyObject();
  ~ReplyObject();
  ReplyObject(const ReplyObject&) = delete;
  ReplyObject& operator=(const ReplyObject&) = delete;

  template <std::size_t size, typename T>
  ReplyObject& add(const char (&key)[size], const T& value) {
    writer_.member(key, value);
    return *this;
  }
  // For nested values: key() and then one value through the writer.
  JsonWriter& writer() { return writer_; }

 private:
  friend void reply(RequestId id, ReplyObject&& object);
  friend void emit(ReplyObject&& object);
  TextBuffer line_;
  JsonWriter writer_;
};

// Writes the object as one line and flushes it. An object that cannot be serialised is dropped
// without a word.
void emit(ReplyObject&& object);

// The same with "id" when there is one; without an id the line has no "id" key.
void reply(RequestId id, ReplyObject&& object);

// The error reply: the single key "error" with the message, and "id".
void fail(RequestId id, std::string_view message);

}  // namespace tidemark
