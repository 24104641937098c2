// A root directory of its own for each test, and the local store over it.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "store/local/tree/watcher.h"
#include "store/store.h"

namespace tidemark::local {

// How long a test waits for what must come, before it fails.
inline constexpr std::chrono::seconds deadline{20};

Instant instant(int year, unsigned month, unsigned day, int hour = 0, int minute = 0);

// The lines, each with its line end, in a calendar of their own.
std::string calendarText(std::string_view lines);
// A VEVENT of one hour at that time of 3 March 2025 (UTC); `more` are further content lines.
std::string eventText(std::string_view uid, std::string_view title, std::string_view more = {},
                      std::string_view start = "20250303T100000Z");
std::string todoText(std::string_view uid, std::string_view title, std::string_view more = {});

class ScratchStore : public testing::Test {
 public:
  ScratchStore();
  ~ScratchStore() override;

  const std::filesystem::path& scratch() const { return scratch_; }
  const std::filesystem::path& root() const { return root_; }

  // Written in place, as an editor that knows no better does it. Parents are made.
  void write(const std::filesystem::path& path, std::string_view text) const;
  // Renamed into place, as sync tools do it.
  void put(const std::filesystem::path& path, std::string_view text) const;

  // Made at the first call, over the system's watcher unless another one was set.
  Store& store();
  void setWatcher(std::unique_ptr<Watcher> watcher) { watcher_ = std::move(watcher); }
  void setCandidates(std::vector<std::string> candidates) { candidates_ = std::move(candidates); }

  // All events of 2025, or of the range, in the store's order.
  std::vector<EventRef> events();
  std::vector<EventRef> events(Instant from, Instant to);
  std::vector<std::string> titles();
  std::vector<std::string> titles(Instant from, Instant to);
  std::vector<std::string> openTitles(Instant from, Instant to);
  std::vector<std::string> doneTitles(Instant from, Instant to);
  std::vector<std::string> identifiers(EntityType type);
  CalendarRef calendar(std::string_view identifier);

 private:
  std::vector<std::string> reminderTitles(const ReminderPredicate& predicate);

  std::filesystem::path scratch_;
  std::filesystem::path root_;
  std::vector<std::string> candidates_;
  std::unique_ptr<Watcher> watcher_;
  std::unique_ptr<Store> store_;
};

using Titles = std::vector<std::string>;

}  // namespace tidemark::local
