// Short calendar text for tests, and what stands in it afterwards. The tests that include this run
// in Europe/Berlin.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "store/local/editor/calendar_editor.h"

namespace tidemark::local {

constexpr UtcSeconds now = 1'767'225'600;  // 2026-01-01T00:00:00Z
const std::string stamp = "20260101T000000Z";
const std::string fileName = "file-name";

// Lines as they stand in a test, ended as in a file.
std::string crlf(const std::vector<std::string>& lines);

// A calendar with one VEVENT (UID:one, DTSTAMP:20250101T000000Z) or VTODO that has these lines
// besides.
std::string eventWith(const std::vector<std::string>& lines);
std::string todoWith(const std::vector<std::string>& lines);

// The instant of "2025-07-01T10:00:00Z", and of a local time when the Z is missing.
UtcSeconds at(const std::string& time);

// The lines of the text, unfolded, that start so; "SUMMARY" finds "SUMMARY;LANGUAGE=de:Tee" as
// well.
std::vector<std::string> linesOf(const std::string& text, const std::string& name);
// The only such line, and a failed test when there is not exactly one.
std::string lineOf(const std::string& text, const std::string& name);

// The component that begins at the n-th (from 0) BEGIN of that name, through its END.
std::string componentOf(const std::string& text, const std::string& name, int index = 0);

// The text after a change that must succeed.
std::string changed(const std::string& text, const EventChange& change,
                    std::optional<UtcSeconds> occurrence = std::nullopt);
std::string changed(const std::string& text, const TodoChange& change);
std::string withoutOccurrence(const std::string& text, UtcSeconds occurrence);

}  // namespace tidemark::local
