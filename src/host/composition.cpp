// The one file that names a store.
#include "host/composition.h"

#include "store/local/local_store.h"

namespace tidemark {

std::unique_ptr<Store> makeStore() {
  return makeLocalStore();
}

}  // namespace tidemark
