#include "store/local/text/property_name.h"

#include "store/local/text/content_line.h"

namespace tidemark::local {
namespace {

PropertyName when(std::string_view name, std::string_view expected, PropertyName property) {
  return equalsIgnoringCase(name, expected) ? property : PropertyName::unknown;
}

char raised(char byte) {
  return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 32) : byte;
}

}  // namespace

PropertyName propertyNameOf(std::string_view name) {
  using enum PropertyName;
  // The length and one letter leave one name to compare with.
  switch (name.size()) {
    case 3:
      switch (raised(name[1])) {
        case 'N':
          return when(name, "END", end);
        case 'I':
          return when(name, "UID", uid);
        case 'U':
          return when(name, "DUE", due);
        case 'R':
          return when(name, "URL", url);
        default:
          return unknown;
      }
    case 5:
      switch (raised(name[1])) {
        case 'E':
          return when(name, "BEGIN", begin);
        case 'T':
          return when(name, "DTEND", dtend);
        case 'R':
          return when(name, "RRULE", rrule);
        case 'D':
          return when(name, "RDATE", rdate);
        default:
          return unknown;
      }
    case 6:
      switch (raised(name[0])) {
        case 'E':
          return when(name, "EXDATE", exdate);
        case 'S':
          return when(name, "STATUS", status);
        case 'T':
          return when(name, "TRANSP", transp);
        default:
          return unknown;
      }
    case 7:
      return raised(name[0]) == 'D' ? when(name, "DTSTART", dtstart)
                                    : when(name, "SUMMARY", summary);
    case 8:
      switch (raised(name[0])) {
        case 'A':
          return when(name, "ATTENDEE", attendee);
        case 'D':
          return when(name, "DURATION", duration);
        case 'L':
          return when(name, "LOCATION", location);
        case 'P':
          return when(name, "PRIORITY", priority);
        case 'S':
          return when(name, "SEQUENCE", sequence);
        default:
          return unknown;
      }
    case 9:
      return when(name, "COMPLETED", completed);
    case 11:
      return when(name, "DESCRIPTION", description);
    case 13:
      return raised(name[0]) == 'L' ? when(name, "LAST-MODIFIED", lastModified)
                                    : when(name, "RECURRENCE-ID", recurrenceId);
    case 16:
      return when(name, "PERCENT-COMPLETE", percentComplete);
    case 26:
      return when(name, "X-MICROSOFT-CDO-BUSYSTATUS", busyStatus);
    default:
      return unknown;
  }
}

}  // namespace tidemark::local
