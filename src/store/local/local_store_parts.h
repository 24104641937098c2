// The local store over a root and a watcher of the caller's choice.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "store/local/tree/watcher.h"
#include "store/store.h"

namespace tidemark::local {

// The first candidate that exists is the root, at every moment; a new root is the first candidate.
std::unique_ptr<Store> makeLocalStore(std::vector<std::string> rootCandidates,
                                      std::unique_ptr<Watcher> watcher);

}  // namespace tidemark::local
