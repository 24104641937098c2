// Which store the program talks to.
#pragma once

#include <memory>

#include "store/store.h"

namespace tidemark {

std::unique_ptr<Store> makeStore();

}  // namespace tidemark
