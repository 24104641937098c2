// The one file that names a store, on macOS.
#include "host/composition.h"
#include "store/eventkit/eventkit_store.h"

namespace tidemark {

std::unique_ptr<Store> makeStore() {
  return makeEventKitStore();
}

}  // namespace tidemark
