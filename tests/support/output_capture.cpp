#include "tests/support/output_capture.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace tidemark::test {

OutputCapture::OutputCapture() {
  std::fflush(stdout);
  int ends[2];
  original_ = ::dup(STDOUT_FILENO);
  if (original_ < 0 || ::pipe(ends) != 0 || ::dup2(ends[1], STDOUT_FILENO) < 0) std::abort();
  ::close(ends[1]);
  lines_ = std::make_unique<LineCollector>(ends[0]);
}

OutputCapture::~OutputCapture() {
  if (original_ >= 0) end();
}

std::string OutputCapture::end() {
  ::dup2(original_, STDOUT_FILENO);
  ::close(original_);
  original_ = -1;
  return lines_->rest();
}

}  // namespace tidemark::test
