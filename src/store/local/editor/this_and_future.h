// Overrides that count for all later occurrences too (RANGE=THISANDFUTURE; RFC 5545, 3.2.13). When
// the occurrence that such an override is named for changes or goes, alone, the later ones still
// follow it.
//
// One thread at a time.
#pragma once

#include "store/local/editor/component_editor.h"
#include "store/local/editor/item_family.h"

namespace tidemark::local {

// Lets `followed` begin at the next occurrence that has no override of its own. False, and no
// change, when there is none: then nothing follows it any more.
bool handOn(ComponentEditor& editor, const ItemFamily& family, const Entry& followed,
            UtcSeconds now);

}  // namespace tidemark::local
