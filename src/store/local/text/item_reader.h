// Collects the lines of one VEVENT or VTODO after the other and makes items of them.
//
// One thread at a time.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "store/local/text/content_line.h"
#include "store/local/text/item.h"
#include "store/local/text/property_name.h"
#include "store/local/zones/file_time_zones.h"

namespace tidemark::local {

class ItemReader {
 public:
  // How an item without a UID is named. When a file has several, one name would make one of them.
  enum class Naming { byFile, byFileAndContent };

  // What comes next is of another file; `fileName` stands in for a UID. Both must outlive its
  // items' reading, and so must the text that the lines come from.
  void beginFile(FileTimeZones& zones, std::string_view fileName, Naming naming);
  void begin(ItemKind kind);
  // A property of the component itself, not of one inside it.
  void read(PropertyName name, const ContentLine& line);
  // The item; null when it cannot be shown.
  std::unique_ptr<Item> finish();
  // Whether the file had two items of one kind, overrides aside, without a UID.
  bool needsNamingByContent() const { return needsNamingByContent_; }

 private:
  struct RawAttendee {
    std::string_view name;
    std::string_view address;
  };

  // That of the TZID; null where there is none, or nothing knows it.
  const Zone* zoneOf(std::string_view parameters);
  std::optional<Moment> momentOf(std::string_view parameters, std::string_view value);
  void readMoment(OptionalMoment& target, const ContentLine& line);
  void readInstant(OptionalSeconds& target, const ContentLine& line);
  void readRecurrenceDates(const ContentLine& line);
  void readExceptions(const ContentLine& line);
  void readAttendee(const ContentLine& line);
  void finishTodo();
  void finishSeries();
  void addExceptionsOnSeriesClock(const Moment& start);
  ItemTexts& readableTexts();

  FileTimeZones* zones_ = nullptr;
  std::string_view fileName_;
  Naming naming_ = Naming::byFile;
  // Of the file so far, by kind.
  std::array<bool, 2> hasUnnamed_ = {};
  bool needsNamingByContent_ = false;

  ItemProperties item_;
  std::unique_ptr<Todo> todo_;
  // The values as the file has them.
  std::string_view uid_, title_, notes_, location_, url_;
  std::string_view firstTime_;  // DTSTART or DUE
  std::optional<std::int8_t> busyStatus_;
  bool isTransparent_ = false;
  // Those that were read last: most items have the same ones in two or three lines.
  std::string_view lastParameters_;
  const Zone* lastZone_ = nullptr;
  // Of one item after the other; they keep their room.
  std::vector<RawAttendee> attendees_;
  std::vector<std::string_view> rules_;
  std::vector<RecurrenceDate> dates_;
  std::vector<Moment> exceptions_;
  // What the file has, made readable.
  ItemTexts texts_;
  std::vector<char> readable_;
};

}  // namespace tidemark::local
