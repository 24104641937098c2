// How a time stands in a calendar file - as a date, floating, in UTC or with a time zone - and how
// a new time is put in its place in that same form. Pure; any thread.
#pragma once

#include <string>
#include <string_view>

#include "store/local/editor/component_editor.h"
#include "store/local/text/item.h"
#include "store/local/zones/zone.h"

namespace tidemark::local {

struct TimeForm {
  enum class Kind { date, floating, utc, zoned };
  Kind kind = Kind::floating;
  // Whose wall clock the value shows: the local zone for dates, floating times and TZIDs that
  // nothing knows.
  const Zone* zone = nullptr;
  std::string tzid;  // with Kind::zoned; raw, as the parameter says it
};

// The form of a line whose value was read as `moment`.
TimeForm formOf(const ContentLine& line, const Moment& moment);
TimeForm dateForm();
TimeForm floatingForm();
// That of new times: the local zone by its name, or UTC where the local zone is UTC or has no name.
TimeForm localForm(UtcSeconds instant);
// The zone of that IANA name, "UTC" for UTC; floating where the system has no such zone.
TimeForm namedForm(const std::string& zoneName);

// The two halves of a line: `;VALUE=DATE` or `;TZID=` or nothing, and the value. `moment` is what
// they are read as.
struct TimeText {
  std::string parameters;
  std::string value;
  Moment moment;
  std::string tzid;  // the form's; empty without one
};

// An instant that the form's zone cannot tell from an earlier one (the hour that a change of offset
// repeats) is written in UTC.
TimeText timeText(const TimeForm& form, UtcSeconds utc);
// The same reading of the clock where `moment` is of the form's zone and kind, else the same
// instant.
TimeText timeText(const TimeForm& form, const Moment& moment);
TimeText timeTextOfWall(const TimeForm& form, WallSeconds wall);

// Sets the property to that time. Parameters that have nothing to do with it stay, and so do the
// bytes of a line that says it already.
void setTime(ComponentEditor& editor, std::string_view name, const TimeText& time);
void setUtc(ComponentEditor& editor, std::string_view name, UtcSeconds utc);

}  // namespace tidemark::local
