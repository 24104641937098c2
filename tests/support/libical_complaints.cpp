#include "tests/support/libical_complaints.h"

#include <libical/ical.h>

#include "store/local/text/content_line.h"

namespace tidemark::local {

int complaintsOfLibical(const std::string& text) {
  std::string filled;
  ContentLineScanner scanner(text);
  while (const auto line = scanner.next()) {
    if (!line->value.empty()) filled += text.substr(line->begin, line->end - line->begin);
  }
  icalcomponent* const root = icalcomponent_new_from_string(filled.c_str());
  if (!root) return -1;
  const int complaints = icalcomponent_count_errors(root);
  icalcomponent_free(root);
  return complaints;
}

}  // namespace tidemark::local
