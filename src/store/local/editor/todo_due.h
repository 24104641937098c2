// When a to-do is due, and how that is written into its component.
//
// One thread at a time.
#pragma once

#include <optional>
#include <string>

#include "store/local/editor/component_editor.h"
#include "store/local/editor/time_form.h"
#include "store/local/text/item.h"
#include "store/types.h"

namespace tidemark::local {

// Due components as a DUE says them: without an hour a DATE, with one a floating DATE-TIME, or one
// of the time zone that they name. What they leave out is the first month and day and the start of
// the hour; absent when they leave out the year.
std::optional<TimeText> dueText(const DateComponents& due);

// Makes the to-do due then. A DTSTART that would no longer be before the DUE, or not of its kind,
// moves along (RFC 5545, 3.8.2.3). `item` is what the reader made of the editor's component. A
// to-do that is due then already stays as it is.
void setDue(ComponentEditor& editor, const Item& item, const TimeText& due);

}  // namespace tidemark::local
