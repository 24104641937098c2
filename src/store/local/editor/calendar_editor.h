// Changes to the text of an .ics file. The text is edited, never regenerated: every content line
// that a change does not concern keeps its bytes, its place and its line end.
//
// Pure functions from text to text; nothing here touches a file. Any thread. Written lines follow
// RFC 5545, 3.1 (folded before 75 octets, never inside a character) with the line end that the file
// uses.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "store/local/zones/zone.h"
#include "store/types.h"

namespace tidemark::local {

// What is to change; absent members stay as they are. Strings are UTF-8.
struct EventChange {
  std::optional<std::string> title, notes, location;
  std::optional<std::optional<std::string>> url;  // present and empty-handed: the URL goes
  std::optional<UtcSeconds> start, end;
  std::optional<bool> isAllDay;
  std::optional<std::int64_t> availability;  // EKEventAvailability; unknown numbers count as busy
};

struct TodoChange {
  std::optional<std::string> title;
  std::optional<std::optional<std::string>> notes;
  std::optional<DateComponents> due;
  std::optional<bool> completed;
};

// Which item of a file: the components of one UID (the file's name without ".ics" where a component
// has none), and of a series the occurrence that was meant to start at `occurrence`.
struct ItemName {
  std::string uid;
  std::optional<UtcSeconds> occurrence;
};

struct Edit {
  enum class Outcome {
    changed,  // `text` is the file's new text
    empty,    // nothing but the frame is left: the file goes
    missing,  // the text holds no such item, or one that does not end: `text` is empty
  };
  Outcome outcome = Outcome::missing;
  std::string text;
};

// `now` stamps DTSTAMP and LAST-MODIFIED.

// With an occurrence the override of that occurrence is changed, or made; later ones that follow it
// (RANGE=THISANDFUTURE) stay as they are. Without one an event that repeats is the first occurrence
// that it still has. A change that says nothing new leaves every byte. `start` <= `end`.
Edit changeEvent(std::string_view text, std::string_view fileName, const ItemName& name,
                 const EventChange& change, UtcSeconds now);
// Without an occurrence every component of the UID goes; with one, an EXDATE takes it, and its
// override goes too. When it was the last one of its series, every component of the UID goes.
Edit removeEvent(std::string_view text, std::string_view fileName, const ItemName& name,
                 UtcSeconds now);

// Completing a to-do that repeats splits it: `text` holds it completed, under its own UID and
// without its rule; the successor carries the rule on.
struct Successor {
  std::string uid;
  std::string text;
};
struct TodoEdit : Edit {
  std::optional<Successor> successor;  // to be written first, to a file of its own
};
// A to-do that repeats is its first occurrence that is still open, unless one is named.
TodoEdit changeTodo(std::string_view text, std::string_view fileName, const ItemName& name,
                    const TodoChange& change, UtcSeconds now);
Edit removeTodo(std::string_view text, std::string_view fileName, const ItemName& name,
                UtcSeconds now);

// The text of a new file with one item in it, its times in the local zone.
std::string newEventText(std::string_view uid, const EventChange& event, UtcSeconds now);
std::string newTodoText(std::string_view uid, const TodoChange& todo, UtcSeconds now);

// For a move: a file of its own with every component of the UID and the time zones that they name,
// bytes unchanged. Empty when the text holds no such item.
std::string extractItem(std::string_view text, std::string_view fileName, std::string_view uid);
// The text without the UID's components.
Edit withoutItem(std::string_view text, std::string_view fileName, std::string_view uid);

}  // namespace tidemark::local
