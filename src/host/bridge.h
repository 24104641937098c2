// The process from start to end, whatever its store is.
#pragma once

#include <functional>
#include <memory>

#include "store/store.h"

namespace tidemark {

// Serves requests on standard input and output with the store that `makeStore` makes, until the
// input ends; that ends the process. Returns only in a process that relaunched itself: what `main`
// returns. Called once, on the main thread, before any other exists.
int runBridge(const std::function<std::unique_ptr<Store>()>& makeStore);

}  // namespace tidemark
