#include "tests/eventkit/eventkit_fixture.h"

#include "store/eventkit/eventkit_store.h"
#include "tests/eventkit/main_thread.h"
#include "tests/eventkit/stand_in/stand_in.h"

namespace tidemark {

EventKitFixture::~EventKitFixture() {
  endMemoryStore();
  store_.reset();
  EXPECT_EQ(eventkit::liveObjects(), 0);
  EXPECT_EQ(eventkit::liveColors(), 0);
  EXPECT_EQ(eventkit::abandonedChanges(), 0);
  EXPECT_EQ(eventkit::staleUses(), 0);
}

Store& EventKitFixture::store() {
  if (!store_) {
    eventkit::serve(MemoryFixture::store());
    store_ = makeEventKitStore();
  }
  return *store_;
}

void EventKitFixture::startMainLoop() {
  Store& served = store();
  eventkit::postChanges();
  eventkit::runOnMainThread([&served] { served.run(); });
}

}  // namespace tidemark
