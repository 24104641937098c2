// Standard output as the host would read it, while an object of this class lives.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "tests/support/lines.h"

namespace tidemark::test {

class OutputCapture {
 public:
  OutputCapture();
  ~OutputCapture();

  // The next line; absent when none comes.
  std::optional<std::string> next() { return lines_->next(); }
  // Gives standard output back, and returns what was written to it and not yet taken.
  std::string end();

 private:
  int original_ = -1;
  std::unique_ptr<LineCollector> lines_;
};

}  // namespace tidemark::test
