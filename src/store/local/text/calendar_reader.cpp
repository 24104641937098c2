#include "store/local/text/calendar_reader.h"

#include <optional>
#include <utility>

#include "store/local/text/content_line.h"
#include "store/local/text/item_reader.h"
#include "store/local/text/property_name.h"
#include "store/local/zones/file_time_zones.h"

namespace tidemark::local {
namespace {

std::string_view withoutTrailingBlanks(std::string_view text) {
  const std::size_t last = text.find_last_not_of(" \t");
  return text.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

std::optional<ItemKind> itemKindOf(std::string_view component) {
  if (equalsIgnoringCase(component, "VEVENT")) return ItemKind::event;
  if (equalsIgnoringCase(component, "VTODO")) return ItemKind::todo;
  return std::nullopt;
}

class CalendarReader {
 public:
  CalendarReader(std::string_view text, std::string_view fileName)
      : scanner_(text), zones_(text), item_(zones_, fileName) {}

  CalendarText read() {
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
    return std::move(result_);
  }

 private:
  void begin(std::string_view component, std::size_t position) {
    if (const auto kind = itemKindOf(component)) {
      // One that is open was never ended and goes.
      open_ = kind;
      depth_ = 0;
      begin_ = position;
      item_.begin(*kind);
    } else if (open_) {
      ++depth_;
    } else if (equalsIgnoringCase(component, "VTIMEZONE")) {
      // Read when an item needs it, if at all.
      scanner_.skipToComponent();
    }
  }

  void end(std::string_view component) {
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

  ContentLineScanner scanner_;
  FileTimeZones zones_;
  ItemReader item_;
  CalendarText result_;
  // The component that is being read, where it begins, and how many are open inside it.
  std::optional<ItemKind> open_;
  std::size_t begin_ = 0;
  std::size_t depth_ = 0;
};

}  // namespace

CalendarText readCalendar(std::string_view text, std::string_view fileName) {
  return CalendarReader(text, fileName).read();
}

}  // namespace tidemark::local
