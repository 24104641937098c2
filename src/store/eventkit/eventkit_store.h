// The store over the platform's EventKit (macOS 14 or later).
//
// Rules where store.h leaves them to the store, which leaves them to EventKit
//   - Order, range ends, identifiers, time stamps and the texts of failures are EventKit's.
//   - EventKit cuts a query of events to its first four years; a longer range is asked for in
//     pieces, and each occurrence is answered once.
//   - An exception that EventKit raises is a failure with the exception's reason; one that a setter
//     raises is the failure of the save.
//   - After a reset the native objects behind older items are no more. An item fetches its own
//     anew, and makes its changes again, when it is next changed, saved or removed.
//
// Threads: as store.h says. EventKit's objects are not safe to share, so one lock orders every use
// of them; change notices alone take none, since EventKit may wait for them.
#pragma once

#include <memory>

#include "store/store.h"

namespace tidemark {

// On the main thread, which is to serve its loop (Store::run).
std::unique_ptr<Store> makeEventKitStore();

}  // namespace tidemark
