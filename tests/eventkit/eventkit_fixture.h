// The EventKit store over the stand-in, which has what a store in memory has.
#pragma once

#include <memory>

#include "tests/contract/memory_fixture.h"

namespace tidemark {

class EventKitFixture : public MemoryFixture {
 public:
  // Fails the test for every object that is left.
  ~EventKitFixture() override;

  Store& store() override;
  void startMainLoop() override;

 private:
  std::unique_ptr<Store> store_;
};

}  // namespace tidemark
