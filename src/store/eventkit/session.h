// What the store and the items that it gave out share.
#pragma once

#import <EventKit/EventKit.h>

#include <mutex>

namespace tidemark {

struct Session {
  Session() = default;
  ~Session() {
    @autoreleasepool {
      events = nil;
    }
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // Held by whoever uses an object of EventKit's. Recursive, since a completion may come before the
  // call that asked for it returns.
  std::recursive_mutex lock;
  EKEventStore* events = [[EKEventStore alloc] init];  // to the end
  // Which reset native objects come from; those of an earlier one are of no use. Under the lock.
  unsigned generation = 0;
};

}  // namespace tidemark
