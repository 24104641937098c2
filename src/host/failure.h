// The program's one exception: a request's field that cannot be used. Thrown by the two
// field-applying routines alone; their callers answer with the message.
#pragma once

#include <exception>
#include <string>
#include <utility>

namespace tidemark {

class Failure : public std::exception {
 public:
  explicit Failure(std::string text) : message(std::move(text)) {}
  const char* what() const noexcept override { return message.c_str(); }

  // All of it: what() ends at a zero byte, which the offending value may hold.
  std::string message;
};

}  // namespace tidemark
