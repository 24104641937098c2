// Events of a range, and the one event or occurrence that a request names. Called on the request
// reader.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

#include "host/reply_channel.h"
#include "host/request.h"
#include "store/store.h"

namespace tidemark {

// How far around the date of a requested occurrence it is searched for. An occurrence that was
// moved farther on its own is not found by the date it had.
inline constexpr std::chrono::seconds occurrenceMatchWindow{86400};

// "events": those of a range, by start; those that start together in the store's order.
void listEvents(RequestId id, const Request& request);

// By start, an event without one before all others.
bool eventComesBefore(const Event& a, const Event& b);

// Without an occurrence, what the store has under the identifier: of a series the first occurrence.
// With one, the occurrence less than a second from it, the first in the store's order, and never
// another. Null when there is none.
EventRef event(std::string_view identifier, std::optional<Instant> occurrence);

}  // namespace tidemark
