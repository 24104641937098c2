#include "store/local/editor/time_form.h"

#include <absl/time/time.h>

#include "store/local/editor/content_line_writer.h"
#include "store/local/text/civil.h"
#include "store/local/text/date_value.h"

namespace tidemark::local {
namespace {

// UTC under whatever name ("Etc/UTC", "Zulu", "GMT"): no offset, and never another one.
bool isUtcZone(const std::string& name) {
  absl::TimeZone zone;
  absl::TimeZone::CivilTransition transition;
  return absl::LoadTimeZone(name, &zone) && zone.At(absl::UnixEpoch()).offset == 0 &&
         !zone.NextTransition(absl::InfinitePast(), &transition);
}

std::string tzidParameter(const std::string& tzid) {
  const bool needsQuotes = tzid.find_first_of(",;:") != std::string::npos;
  return needsQuotes ? ";TZID=\"" + tzid + "\"" : ";TZID=" + tzid;
}

// What TimeText::parameters would be for the line as it stands.
std::string timeParametersOf(const ContentLine& line) {
  const auto type = parameterOf(line.parameters, "VALUE");
  if (type && equalsIgnoringCase(*type, "DATE")) return ";VALUE=DATE";
  const auto tzid = parameterOf(line.parameters, "TZID");
  return tzid ? tzidParameter(std::string(*tzid)) : std::string();
}

}  // namespace

TimeForm formOf(const ContentLine& line, const Moment& moment) {
  if (moment.isDate) return dateForm();
  if (const auto value = parseDateValue(line.value); value && value->isUtc) {
    return {TimeForm::Kind::utc, &utcZone(), {}};
  }
  if (const auto tzid = parameterOf(line.parameters, "TZID")) {
    return {TimeForm::Kind::zoned, moment.zone, std::string(*tzid)};
  }
  return floatingForm();
}

TimeForm dateForm() {
  return {TimeForm::Kind::date, &localZone(), {}};
}

TimeForm floatingForm() {
  return {TimeForm::Kind::floating, &localZone(), {}};
}

TimeForm localForm(UtcSeconds instant) {
  const std::string name = localZone().nameAt(instant);
  if (isUtcZone(name) || !systemZone(name)) return {TimeForm::Kind::utc, &utcZone(), {}};
  return {TimeForm::Kind::zoned, &localZone(), name};
}

TimeForm namedForm(const std::string& zoneName) {
  if (isUtcZone(zoneName)) return {TimeForm::Kind::utc, &utcZone(), {}};
  const Zone* const zone = systemZone(zoneName);
  return zone ? TimeForm{TimeForm::Kind::zoned, zone, zoneName} : floatingForm();
}

TimeText timeText(const TimeForm& form, UtcSeconds utc) {
  const WallSeconds wall = form.zone->toWall(utc);
  const bool isDate = form.kind == TimeForm::Kind::date;
  if (!isDate && form.zone->toUtc(wall) != utc) {
    return timeTextOfWall({TimeForm::Kind::utc, &utcZone(), {}}, utc);
  }
  return timeTextOfWall(form, wall);
}

TimeText timeText(const TimeForm& form, const Moment& moment) {
  const bool isSameClock =
      moment.zone == form.zone && moment.isDate == (form.kind == TimeForm::Kind::date);
  return isSameClock ? timeTextOfWall(form, moment.wall) : timeText(form, moment.toUtc());
}

TimeText timeTextOfWall(const TimeForm& form, WallSeconds wall) {
  TimeText text;
  text.moment = {wall, form.zone, form.kind == TimeForm::Kind::date,
                 form.kind == TimeForm::Kind::floating};
  switch (form.kind) {
    case TimeForm::Kind::date:
      text.moment.wall = dayOf(wall) * secondsPerDay;
      text.parameters = ";VALUE=DATE";
      text.value = dateText(wall);
      break;
    case TimeForm::Kind::utc:
      text.value = utcText(wall);
      break;
    case TimeForm::Kind::zoned:
      text.parameters = tzidParameter(form.tzid);
      text.tzid = form.tzid;
      text.value = dateTimeText(wall);
      break;
    case TimeForm::Kind::floating:
      text.value = dateTimeText(wall);
      break;
  }
  return text;
}

void setTime(ComponentEditor& editor, std::string_view name, const TimeText& time) {
  const ContentLine* const line = editor.find(name);
  if (line && timeParametersOf(*line) == time.parameters) {
    editor.set(name, line->parameters, time.value);
    return;
  }
  std::string parameters = time.parameters;
  if (line) parameters += withoutParameter(withoutParameter(line->parameters, "TZID"), "VALUE");
  editor.set(name, parameters, time.value);
}

void setUtc(ComponentEditor& editor, std::string_view name, UtcSeconds utc) {
  setTime(editor, name, timeTextOfWall({TimeForm::Kind::utc, &utcZone(), {}}, utc));
}

}  // namespace tidemark::local
