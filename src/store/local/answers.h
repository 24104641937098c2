// Turns what a query found into the objects of the store interface: one allocation for an answer,
// which all its objects share and which keeps alive what they show.
//
// Any thread; no lock is needed once the findings are made.
#pragma once

#include <memory>
#include <vector>

#include "store/local/items/event_series.h"
#include "store/local/items/reminder_dates.h"
#include "store/local/items/retired_items.h"
#include "store/local/tree/collections.h"
#include "store/store.h"

namespace tidemark::local {

template <typename Placed>
struct Findings {
  std::vector<Placed> placed;
  std::shared_ptr<const Calendars> calendars;
  // Taken before the items could go.
  std::unique_ptr<RetiredItems::Hold> hold;
};

std::vector<EventRef> makeEvents(Findings<PlacedEvent> findings);
std::vector<ReminderRef> makeReminders(Findings<PlacedTodo> findings);

}  // namespace tidemark::local
