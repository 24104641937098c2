// The process's main thread, for what a platform lets no other thread do. The tests run on another.
#pragma once

#include <functional>

namespace tidemark::eventkit {

// Has the main thread run that, once it is free. Any thread.
void runOnMainThread(std::function<void()> task);

}  // namespace tidemark::eventkit
