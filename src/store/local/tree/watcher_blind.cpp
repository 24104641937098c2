#include "store/local/tree/watcher.h"

namespace tidemark::local {
namespace {

class BlindWatcher final : public Watcher {
 public:
  std::optional<WatchId> watch(const std::string&, Interest) override { return std::nullopt; }
  void unwatch(WatchId) override {}
  WatchBatch drain() override { return {}; }
  int descriptor() const override { return -1; }
};

}  // namespace

std::unique_ptr<Watcher> makeBlindWatcher() {
  return std::make_unique<BlindWatcher>();
}

}  // namespace tidemark::local
