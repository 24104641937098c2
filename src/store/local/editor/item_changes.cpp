#include "store/local/editor/item_changes.h"

#include <limits>

#include "store/local/editor/content_line_writer.h"

namespace tidemark::local {

void setText(ComponentEditor& editor, std::string_view name, std::string_view current,
             const std::optional<std::string>& wanted) {
  if (!wanted || (current.data() && current == *wanted)) return;
  std::string parameters;
  if (const ContentLine* const line = editor.find(name)) {
    // How old programs encoded the old value.
    parameters = withoutParameter(withoutParameter(line->parameters, "ENCODING"), "CHARSET");
  }
  editor.set(name, parameters, textValue(*wanted));
}

void keepName(ComponentEditor& editor, const Item& item) {
  const ContentLine* const line = editor.find("UID");
  const bool isUnnamed = !line || line->value.empty();
  // The name of a file alone has no slash.
  if (isUnnamed && item.uid().find('/') != std::string_view::npos) {
    editor.setValue("UID", textValue(item.uid()));
  }
}

void stampChange(ComponentEditor& editor, const Item& item, UtcSeconds now) {
  keepName(editor, item);
  setUtc(editor, "DTSTAMP", now);
  setUtc(editor, "LAST-MODIFIED", now);
  const bool isLast = item.sequence == std::numeric_limits<std::int32_t>::max();
  editor.setValue("SEQUENCE", std::to_string(isLast ? item.sequence : item.sequence + 1));
}

TimeForm anchorForm(const ComponentEditor& editor, const Item& item) {
  return formOf(*editor.find(item.start ? "DTSTART" : "DUE"), *anchorOf(item));
}

void removeRecurrence(ComponentEditor& editor) {
  for (const std::string_view name : {"RRULE", "RDATE", "EXDATE", "EXRULE"}) editor.removeAll(name);
}

}  // namespace tidemark::local
