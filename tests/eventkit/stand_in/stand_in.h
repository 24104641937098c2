// EventKit as its documents describe it, over a store in memory: what tests give it and ask of it.
//
// Every class of EventKit.h that the tests are linked with keeps to these rules:
//   - It has what the store of `serve` has; saves and removals go there.
//   - Completions come on threads of that store, never on the caller's.
//   - A change of the store, own saves too, posts the notification, on a foreign thread.
//   - A query of events is cut to the first four years of its range. Its range must not be empty.
//   - A reset invalidates every object but the store: it then says nothing, takes nothing and is
//     not saved.
//   - Due components in another calendar than the Gregorian raise an exception.
//   - Objects are not locked: the thread sanitizer sees who shares one.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "store/store.h"

namespace tidemark::eventkit {

// EventKit's contents from here on. `store` outlives whatever was made of it.
void serve(Store& store);

// Has the served store's changes posted, from when the main loop runs to the end of the process.
void postChanges();

// The next operation of that name ("saveEvent", "eventsMatchingPredicate", "setDueDate", ...)
// raises an exception with the reason.
void raiseOnNext(const std::string& operation, const std::string& reason);
// The next save or removal says no, and gives no error.
void refuseNextWithoutError();

// The ranges of events that were asked for since the last call, in seconds since 1970.
std::vector<std::pair<double, double>> takeRanges();

// EventKit objects, of any class, that exist.
int liveObjects();
// Colours and colour spaces that exist.
int liveColors();
// Uses of objects that a reset had made invalid.
int staleUses();
// Objects of the store that went with changes which were neither saved nor rolled back.
int abandonedChanges();
// Changes of due components, and how their calendar was named.
std::vector<std::string> takeDueCalendars();

}  // namespace tidemark::eventkit
