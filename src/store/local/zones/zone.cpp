#include "store/local/zones/zone.h"

#include <absl/strings/ascii.h>
#include <absl/time/civil_time.h>
#include <absl/time/time.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <system_error>
#include <unordered_map>
#include <utility>
#include <vector>

#include "store/local/zones/fixed_zone.h"
#include "store/local/zones/transition_zone.h"
#include "store/local/zones/zone_name.h"
#include "store/local_time_zone.h"

namespace tidemark::local {
namespace {

constexpr absl::CivilSecond wallEpoch(1970, 1, 1, 0, 0, 0);

class SystemZone final : public TransitionZone {
 public:
  SystemZone(std::string name, absl::TimeZone zone) : name_(std::move(name)), zone_(zone) {
    const std::int32_t initialOffset = distantOffsetAt(tableBegin - 1);
    std::vector<Transition> transitions;
    Transition change{tableBegin - 1, 0, initialOffset};
    absl::TimeZone::CivilTransition found;
    while (zone_.NextTransition(absl::FromUnixSeconds(change.at), &found)) {
      change.before = change.after;
      change.after = change.before + static_cast<std::int32_t>(found.to - found.from);
      change.at = (found.from - wallEpoch) - change.before;
      if (change.at >= tableEnd) break;
      transitions.push_back(change);
    }
    setTable(initialOffset, std::move(transitions));
  }

  std::string nameAt(UtcSeconds utc) const override {
    return name_.empty() ? nameOfOffset(offsetAt(utc)) : name_;
  }

 private:
  std::int32_t distantOffsetAt(UtcSeconds utc) const override {
    return zone_.At(absl::FromUnixSeconds(utc)).offset;
  }

  std::string name_;
  absl::TimeZone zone_;
};

struct StringHash : std::hash<std::string_view> {
  using is_transparent = void;
};
using ZonesByName = std::unordered_map<std::string, const Zone*, StringHash, std::equal_to<>>;

// The names of the database by what they are in lower case: case says nothing in a parameter
// (RFC 5545, 3.2), but does in the names of files.
std::unordered_map<std::string, std::string> readDatabaseNames() {
  namespace fs = std::filesystem;
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing in the process sets the environment.
  const char* const variable = std::getenv("TZDIR");
  const fs::path database = variable ? variable : "/usr/share/zoneinfo";
  std::unordered_map<std::string, std::string> names;
  std::error_code error;
  for (fs::recursive_directory_iterator entry(database, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().lexically_relative(database).string();
    if (!isZoneName(name)) {
      entry.disable_recursion_pending();
    } else if (entry->is_regular_file(error)) {
      names.emplace(absl::AsciiStrToLower(name), name);
    }
  }
  return names;
}

// Every answer so far, the null ones included, since the database looks for a name on disk each
// time.
class SystemZones {
 public:
  const Zone* find(std::string_view tzid) {
    {
      const std::shared_lock lock(mutex_);
      if (const auto found = byTzid_.find(tzid); found != byTzid_.end()) return found->second;
    }
    const std::unique_lock lock(mutex_);
    const Zone* zone = nullptr;
    forEachZoneName(tzid, [&](std::string_view name) {
      zone = load(name);
      return zone != nullptr;
    });
    if (byTzid_.size() < maximumTzids) byTzid_.emplace(tzid, zone);
    return zone;
  }

 private:
  // Far more than there are zones; calendars with more TZIDs than this are slower to read.
  static constexpr std::size_t maximumTzids = 10'000;
  // More than the database has, unless its files have names in any case.
  static constexpr std::size_t maximumZones = 10'000;

  const Zone* load(std::string_view name) {
    if (const auto found = byName_.find(name); found != byName_.end()) return found->second;
    if (name == "UTC") return &utcZone();
    std::string ownName(name);
    absl::TimeZone zone;
    if (byName_.size() >= maximumZones) return nullptr;
    if (!absl::LoadTimeZone(ownName, &zone)) {
      if (!databaseNames_) databaseNames_ = readDatabaseNames();
      const auto spelt = databaseNames_->find(absl::AsciiStrToLower(ownName));
      return spelt == databaseNames_->end() || spelt->second == name ? nullptr
                                                                     : load(spelt->second);
    }
    return byName_[ownName] = Zone::intern(std::make_unique<SystemZone>(ownName, zone));
  }

  std::shared_mutex mutex_;
  ZonesByName byTzid_;
  ZonesByName byName_;
  std::optional<std::unordered_map<std::string, std::string>> databaseNames_;  // once needed
};

SystemZones& systemZones() {
  static SystemZones& zones = *new SystemZones;
  return zones;
}

// The name behind a path into the zone database, as /etc/localtime is a link to one; empty when it
// leads elsewhere.
std::string zoneNameOfPath(const std::string& path) {
  std::error_code error;
  const std::filesystem::path target = std::filesystem::canonical(path, error);
  if (error) return {};
  constexpr std::string_view database = "/zoneinfo/";
  const std::string text = target.string();
  const std::size_t found = text.rfind(database);
  return found == std::string::npos ? std::string() : text.substr(found + database.size());
}

const Zone& findLocalZone() {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing in the process sets the environment once threads
  // run.
  const char* const variable = std::getenv("TZ");
  std::string name = variable ? variable : "localtime";
  // Before names, since "UTC-02" is also what Windows calls a zone behind UTC.
  if (const auto zone = fixedTimeZone(name)) {
    if (*zone == absl::UTCTimeZone()) return utcZone();
    return *Zone::intern(std::make_unique<SystemZone>(std::string(), *zone));
  }
  if (name.starts_with(':')) name.erase(0, 1);
  if (name == "localtime") {
    name = zoneNameOfPath("/etc/localtime");
  } else if (name.starts_with('/')) {
    name = zoneNameOfPath(name);
  }
  if (isZoneName(name)) {
    if (const Zone* const zone = systemZone(name)) return *zone;
  }
  const absl::TimeZone zone = absl::LocalTimeZone();
  if (zone == absl::UTCTimeZone()) return utcZone();
  return *Zone::intern(std::make_unique<SystemZone>(isZoneName(name) ? name : std::string(), zone));
}

}  // namespace

constinit std::array<std::atomic<const Zone*>, Zone::maximumNumber + 1> Zone::interned_ = {};

const Zone* Zone::intern(std::unique_ptr<Zone> zone) {
  static std::atomic<std::uint32_t> count = 0;
  zone->number_ = ++count;
  const Zone* const kept = zone.release();
  interned_[kept->number_].store(kept, std::memory_order_relaxed);
  return kept;
}

const Zone& localZone() {
  static const Zone& zone = findLocalZone();
  return zone;
}

const Zone& utcZone() {
  static const Zone& zone = *Zone::intern(std::make_unique<FixedZone>(0, "UTC"));
  return zone;
}

const Zone* systemZone(std::string_view tzid) {
  // Each thread remembers what it met, so that reading many files takes no lock.
  constexpr std::size_t maximumRemembered = 256;
  thread_local ZonesByName remembered;
  if (const auto found = remembered.find(tzid); found != remembered.end()) return found->second;
  const Zone* const zone = systemZones().find(tzid);
  if (remembered.size() == maximumRemembered) remembered.clear();
  remembered.emplace(tzid, zone);
  return zone;
}

}  // namespace tidemark::local
