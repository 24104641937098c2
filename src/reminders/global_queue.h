// A queue of work for threads of its own, for what must not hold up the request reader. Its tasks
// may run at the same time and in any order.
#pragma once

#include <functional>

namespace tidemark {

// Runs the task soon on a thread of the queue. Tasks do not throw. Threads are started when there
// is work for them and then kept, as many as the machine has processors. Any thread may call this.
void runOnGlobalQueue(std::function<void()> task);

}  // namespace tidemark
