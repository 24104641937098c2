// Where the calendars are, whether this process may use them, and how they begin.
//
// Any thread. Nothing is remembered: each call asks the disk.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "store/types.h"

namespace tidemark::local {

// $XDG_DATA_HOME/calendars (XDG Base Directory Specification), ~/.calendars, ~/calendars: the first
// one that exists counts.
std::vector<std::string> rootCandidates();

// Absent while there is none.
std::optional<std::string> findRoot(const std::vector<std::string>& candidates);

// notDetermined, restricted (there, and no directory), denied (not to be listed or searched) or
// fullAccess.
AuthorizationStatus rootStatus(const std::vector<std::string>& candidates);

// Makes the first candidate with an event calendar and a reminders list in it, all at once: it is
// there whole and durable, or not at all. Absent, or the system's error text. Another process that
// makes it at the same time counts as success.
std::optional<std::string> makeRoot(const std::vector<std::string>& candidates);

}  // namespace tidemark::local
