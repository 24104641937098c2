// The properties that the store reads, by name. Any thread.
#pragma once

#include <cstdint>
#include <string_view>

namespace tidemark::local {

enum class PropertyName : std::uint8_t {
  begin,
  end,
  attendee,
  busyStatus,  // X-MICROSOFT-CDO-BUSYSTATUS
  completed,
  description,
  dtend,
  dtstart,
  due,
  duration,
  exdate,
  lastModified,
  location,
  percentComplete,
  priority,
  rdate,
  recurrenceId,
  rrule,
  sequence,
  status,
  summary,
  transp,
  uid,
  url,
  unknown,
};

// `name` in any case.
PropertyName propertyNameOf(std::string_view name);

}  // namespace tidemark::local
