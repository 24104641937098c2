// Changes that events and to-dos have in common.
//
// One thread at a time.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "store/local/editor/component_editor.h"
#include "store/local/editor/time_form.h"
#include "store/local/text/item.h"
#include "store/local/zones/zone.h"

namespace tidemark::local {

// Sets a TEXT property; an absent one, and one that says this already, stays. `current` is what the
// reader found, its data() null where the property is absent.
void setText(ComponentEditor& editor, std::string_view name, std::string_view current,
             const std::optional<std::string>& wanted);

// Gives a component that is named by its time and title, for want of a UID, that name for its UID:
// it stays, whatever changes, and an override can have it too.
void keepName(ComponentEditor& editor, const Item& item);

// What every changed component says: its name, if that might be lost; DTSTAMP and LAST-MODIFIED are
// now, SEQUENCE goes up by one (RFC 5545, 3.8.7).
void stampChange(ComponentEditor& editor, const Item& item, UtcSeconds now);

// How the times of a series stand, which is how RECURRENCE-ID and EXDATE are written (RFC
// 5545, 3.8.4.4). The item has an anchor.
TimeForm anchorForm(const ComponentEditor& editor, const Item& item);

// Takes out what makes a component repeat.
void removeRecurrence(ComponentEditor& editor);

}  // namespace tidemark::local
