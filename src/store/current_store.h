// The one store of the process.
#pragma once

#include "store/store.h"

namespace tidemark {

// Set once by start-up, before any other thread exists, and never destroyed: threads may still use
// it while the process ends. Any thread may read it; what may be called from where stands in
// store.h.
inline Store* store = nullptr;

}  // namespace tidemark
