// The VTIMEZONEs that are written agree with the system's database, in our reading and in
// libical's.

#include "store/local/editor/vtimezone_writer.h"

#include <absl/time/time.h>
#include <gtest/gtest.h>
#include <libical/ical.h>

#include "sample.h"

namespace tidemark::local {
namespace {

const UtcSeconds inSummer2025 = 1'751'364'000;

std::string vtimezone(const std::string& name, UtcSeconds instant = inSummer2025) {
  return vtimezoneText(name, instant, "\r\n");
}

// What a library makes of the text: the offset of an instant.
class LibicalZone {
 public:
  explicit LibicalZone(const std::string& text) {
    icalcomponent* const component = icalcomponent_new_from_string(text.c_str());
    EXPECT_EQ(icalcomponent_count_errors(component), 0);
    zone_ = icaltimezone_new();
    EXPECT_TRUE(icaltimezone_set_component(zone_, component));
  }
  ~LibicalZone() { icaltimezone_free(zone_, 1); }
  LibicalZone(const LibicalZone&) = delete;
  LibicalZone& operator=(const LibicalZone&) = delete;

  int offsetAt(absl::Time instant) const {
    icaltimetype time =
        icaltime_from_timet_with_zone(absl::ToTimeT(instant), 0, icaltimezone_get_utc_timezone());
    int isDaylight = 0;
    return icaltimezone_get_utc_offset_of_utc_time(zone_, &time, &isDaylight);
  }

 private:
  icaltimezone* zone_;
};

// Every offset from the first year on, around each change and between them.
void expectAgreement(const std::string& name, UtcSeconds event, int firstYear, int lastYear) {
  SCOPED_TRACE(name);
  const std::string text = vtimezone(name, event);
  absl::TimeZone zone;
  ASSERT_TRUE(absl::LoadTimeZone(name, &zone));
  const Zone* const ours = fileZone(text);
  ASSERT_TRUE(ours);
  const LibicalZone libical(text);
  absl::Time instant = absl::FromCivil(absl::CivilYear(firstYear), zone);
  const absl::Time end = absl::FromCivil(absl::CivilYear(lastYear + 1), zone);
  while (instant < end) {
    absl::TimeZone::CivilTransition transition;
    const bool hasNext = zone.NextTransition(instant, &transition);
    const absl::Time next = hasNext ? std::min(zone.At(transition.to).trans, end) : end;
    for (const absl::Time probe :
         {instant, instant + (next - instant) / 2, next - absl::Seconds(1)}) {
      const int offset = zone.At(probe).offset;
      const UtcSeconds utc = absl::ToUnixSeconds(probe);
      ASSERT_EQ(ours->toWall(utc) - utc, offset) << probe << "\n" << text;
      ASSERT_EQ(libical.offsetAt(probe), offset) << probe << "\n" << text;
    }
    instant = next;
  }
}

TEST(VtimezoneWriter, SaysARuleForEachSeason) {
  EXPECT_EQ(vtimezone("Europe/Berlin"),
            crlf({"BEGIN:VTIMEZONE", "TZID:Europe/Berlin", "BEGIN:DAYLIGHT", "TZOFFSETFROM:+0100",
                  "TZOFFSETTO:+0200", "TZNAME:CEST", "DTSTART:19960331T020000",
                  "RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU", "END:DAYLIGHT", "BEGIN:STANDARD",
                  "TZOFFSETFROM:+0200", "TZOFFSETTO:+0100", "TZNAME:CET", "DTSTART:19961027T030000",
                  "RRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU", "END:STANDARD", "END:VTIMEZONE"}));
}

TEST(VtimezoneWriter, SaysOneOffsetWhereThereIsOnlyOne) {
  EXPECT_EQ(vtimezone("Asia/Kolkata"),
            crlf({"BEGIN:VTIMEZONE", "TZID:Asia/Kolkata", "BEGIN:STANDARD", "TZOFFSETFROM:+0530",
                  "TZOFFSETTO:+0530", "TZNAME:IST", "DTSTART:19700101T000000", "END:STANDARD",
                  "END:VTIMEZONE"}));
}

TEST(VtimezoneWriter, KnowsNoZoneThatTheSystemLacks) {
  EXPECT_EQ(vtimezone("Nowhere/At all"), "");
}

TEST(VtimezoneWriter, UsesTheLineEndItIsGiven) {
  EXPECT_EQ(vtimezoneText("Asia/Kolkata", inSummer2025, "\n").find('\r'), std::string::npos);
}

TEST(VtimezoneWriter, AgreesWithTheDatabaseFromTheYearBeforeTheEvent) {
  for (const std::string name :
       {"Europe/Berlin",     "Europe/London",    "Europe/Dublin",       "America/New_York",
        "America/Santiago",  "America/St_Johns", "Australia/Lord_Howe", "Australia/Sydney",
        "Pacific/Auckland",  "Pacific/Chatham",  "Asia/Kolkata",        "Asia/Kathmandu",
        "Asia/Tokyo",        "Asia/Jerusalem",   "Asia/Beirut",         "Africa/Cairo",
        "Africa/Casablanca", "Africa/Monrovia",  "Europe/Istanbul",     "Europe/Moscow",
        "America/Sao_Paulo", "America/Nuuk",     "Pacific/Kiritimati",  "Pacific/Apia",
        "Pacific/Norfolk",   "Antarctica/Troll", "America/Havana",      "America/Asuncion",
        "Asia/Gaza"}) {
    expectAgreement(name, inSummer2025, 2024, 2037);
  }
}

TEST(VtimezoneWriter, AgreesAroundEventsOfLongAgo) {
  expectAgreement("Europe/Berlin", 0, 1970, 2037);
  expectAgreement("America/New_York", 946'684'800, 1999, 2037);
  expectAgreement("Europe/Moscow", 946'684'800, 1999, 2037);
  expectAgreement("America/Sao_Paulo", 946'684'800, 1999, 2037);
}

TEST(VtimezoneWriter, RulesHoldForEver) {
  expectAgreement("Europe/Berlin", inSummer2025, 2024, 2090);
  expectAgreement("America/New_York", 4'102'444'800, 2036, 2090);
}

}  // namespace
}  // namespace tidemark::local
