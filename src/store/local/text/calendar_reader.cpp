#include "store/local/text/calendar_reader.h"

#include <utility>

#include "store/local/text/property_name.h"
#include "store/local/zones/file_time_zones.h"

namespace tidemark::local {
namespace {

std::string_view withoutTrailingBlanks(std::string_view text) {
  while (text.ends_with(' ') || text.ends_with('\t')) text.remove_suffix(1);
  return text;
}

std::optional<ItemKind> itemKindOf(std::string_view component) {
  if (equalsIgnoringCase(component, "VEVENT")) return ItemKind::event;
  if (equalsIgnoringCase(component, "VTODO")) return ItemKind::todo;
  return std::nullopt;
}

}  // namespace

CalendarText CalendarReader::read(std::string_view text, std::string_view fileName) {
  read(text, fileName, ItemReader::Naming::byFile);
  if (item_.needsNamingByContent()) {
    read(text, fileName, ItemReader::Naming::byFileAndContent);
  }
  return std::move(result_);
}

void CalendarReader::read(std::string_view text, std::string_view fileName,
                          ItemReader::Naming naming) {
  FileTimeZones zones(text);
  scanner_.restart(text);
  item_.beginFile(zones, fileName, naming);
  result_ = {};
  open_.reset();
  while (const auto line = scanner_.next()) {
    const PropertyName name = propertyNameOf(line->name);
    result_.isWhole = false;
    if (name == PropertyName::begin) {
      begin(withoutTrailingBlanks(line->value), line->begin);
    } else if (name == PropertyName::end) {
      end(withoutTrailingBlanks(line->value));
    } else if (open_ && depth_ == 0) {
      item_.read(name, *line);
    }
  }
}

void CalendarReader::begin(std::string_view component, std::size_t position) {
  if (const auto kind = itemKindOf(component)) {
    // One that is open was never ended and goes.
    open_ = kind;
    depth_ = 0;
    begin_ = position;
    item_.begin(*kind);
  } else if (open_) {
    ++depth_;
    // Nothing in it is read.
    if (equalsIgnoringCase(component, "VALARM")) scanner_.skipToComponent();
  } else if (equalsIgnoringCase(component, "VTIMEZONE")) {
    // Read when an item needs it, if at all.
    scanner_.skipToComponent();
  }
}

void CalendarReader::end(std::string_view component) {
  if (const auto kind = itemKindOf(component)) {
    if (open_ == kind) {
      if (auto item = item_.finish()) {
        result_.items.push_back(std::move(item));
        result_.begins.push_back(begin_);
      }
    }
    open_.reset();
  } else if (equalsIgnoringCase(component, "VCALENDAR")) {
    open_.reset();
    result_.isWhole = true;
  } else if (depth_ > 0) {
    --depth_;
  }
}

CalendarText readCalendar(std::string_view text, std::string_view fileName) {
  return CalendarReader().read(text, fileName);
}

}  // namespace tidemark::local
