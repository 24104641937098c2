// The whole bridge in a child process, with a store that the test makes, and its pipes.
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "store/store.h"
#include "tests/support/lines.h"

namespace tidemark::test {

class BridgeProcess {
 public:
  // As the child finds its ends: some hosts hand out pipes that do not block.
  enum class Pipes { blocking, nonBlocking };

  // `makeStore` is called in the child.
  explicit BridgeProcess(const std::function<std::unique_ptr<Store>()>& makeStore,
                         Pipes pipes = Pipes::blocking);
  // Ends the child if it has not ended.
  ~BridgeProcess();

  void write(std::string_view text);
  void endInput();
  // The next line of its standard output, normalized; empty when none comes.
  std::string next();
  // What it writes until it ends, unchanged.
  std::string rest() { return output_->rest(); }
  // What it wrote to standard error until it ended.
  std::string errors() { return errors_->rest(); }
  // The exit status once it has ended; minus the number of the signal that ended it.
  int status();

 private:
  pid_t child_ = -1;
  int input_ = -1;
  std::unique_ptr<LineCollector> output_;
  std::unique_ptr<LineCollector> errors_;
  std::optional<int> status_;
};

}  // namespace tidemark::test
