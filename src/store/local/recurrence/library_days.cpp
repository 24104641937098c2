#include "store/local/recurrence/library_days.h"

#include <libical/ical.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <mutex>
#include <string>
#include <utility>

#include "store/local/recurrence/recurrence_rule.h"

namespace tidemark::local {
namespace {

struct IteratorDeleter {
  void operator()(icalrecur_iterator* iterator) const { icalrecur_iterator_free(iterator); }
};
using Iterator = std::unique_ptr<icalrecur_iterator, IteratorDeleter>;

class PartList {
 public:
  explicit PartList(std::string name) : text_(";" + std::move(name)) {}
  void add(const std::string& value) { text_ += std::exchange(separator_, ',') + value; }
  // Empty for a part without values, which the rule does not have.
  std::string text() const { return separator_ == '=' ? std::string() : text_; }

 private:
  std::string text_;
  char separator_ = '=';
};

// What of the rule says its days. What says which of them count is left out: the library passes
// over some days when parts come together.
std::string libraryTextOf(const RecurrenceRule& rule) {
  constexpr std::array<const char*, 7> weekdays = {"SU", "MO", "TU", "WE", "TH", "FR", "SA"};
  const std::int64_t interval = std::min<std::int64_t>(rule.interval, LibraryDays::lastLibraryYear);
  const std::string frequency =
      "FREQ=YEARLY;INTERVAL=" + std::to_string(interval) + ";WKST=" + weekdays[rule.weekStart];
  if (rule.ordinalDays.empty()) {
    PartList yearDays("BYYEARDAY");
    for (const std::int16_t day : rule.yearDays) yearDays.add(std::to_string(day));
    return frequency + yearDays.text();
  }
  PartList days("BYDAY");
  for (unsigned weekday = 0; weekday < weekdays.size(); ++weekday) {
    if (rule.weekdays >> weekday & 1) days.add(weekdays[weekday]);
  }
  for (const OrdinalDay& day : rule.ordinalDays) {
    days.add(std::to_string(day.ordinal) + weekdays[day.weekday]);
  }
  return frequency + days.text();
}

}  // namespace

// The library walks from the first day of the rule's first year, as far as somebody asked.
class LibraryDays::Walk {
 public:
  explicit Walk(const RecurrenceRule& rule)
      : text_(libraryTextOf(rule)), firstYear_(dateOf(dayOf(rule.start)).year) {}

  void appendDaysOf(int year, std::vector<DayNumber>& days) {
    const std::lock_guard lock(mutex_);
    const DayNumber first = dayOf(year, 1, 1);
    const DayNumber next = dayOf(year + 1, 1, 1);
    while (!isAtEnd_ && (days_.empty() || days_.back() < next)) walkOn();
    const auto begin = std::lower_bound(days_.begin(), days_.end(), first);
    std::copy(begin, std::lower_bound(begin, days_.end(), next), std::back_inserter(days));
  }

 private:
  void walkOn() {
    if (!iterator_) open();
    const icaltimetype found =
        iterator_ ? icalrecur_iterator_next(iterator_.get()) : icaltime_null_time();
    if (icaltime_is_null_time(found)) {
      isAtEnd_ = true;
      iterator_.reset();
      return;
    }
    const DayNumber day =
        dayOf(found.year, static_cast<unsigned>(found.month), static_cast<unsigned>(found.day));
    if (days_.empty() || days_.back() < day) days_.push_back(day);
  }

  void open() {
    static std::once_flag configured;
    std::call_once(configured, [] { icalerror_set_errors_are_fatal(0); });
    icaltimetype start = icaltime_null_time();
    start.year = firstYear_;
    start.month = 1;
    start.day = 1;
    start.is_date = 1;
    const icalrecurrencetype rule = icalrecurrencetype_from_string(text_.c_str());
    if (rule.freq != ICAL_NO_RECURRENCE) iterator_.reset(icalrecur_iterator_new(rule, start));
  }

  std::mutex mutex_;
  const std::string text_;
  const int firstYear_;
  Iterator iterator_;
  bool isAtEnd_ = false;
  std::vector<DayNumber> days_;
};

LibraryDays::LibraryDays(const RecurrenceRule& rule) : walk_(std::make_unique<Walk>(rule)) {}
LibraryDays::~LibraryDays() = default;

void LibraryDays::appendDaysOf(int year, std::vector<DayNumber>& days) {
  if (year <= lastLibraryYear) walk_->appendDaysOf(year, days);
}

}  // namespace tidemark::local
