// When two strings are the same, and which comes first, wherever strings are compared: by their NFC
// forms (UAX #15), whatever the locale, with case, without trimming.
//
// NFC forms order by Unicode scalar value, which is the order of their UTF-8 bytes. Bytes that are
// not UTF-8 count as they are. Any thread.
#pragma once

#include <string>
#include <string_view>

namespace tidemark {

bool canonicallyEqual(std::string_view a, std::string_view b);
bool canonicallyBefore(std::string_view a, std::string_view b);

// ASCII is its own NFC form, and so is in practice almost every identifier.
bool isAscii(std::string_view text);

// The NFC form: equal texts have the same.
std::string canonicalForm(std::string_view text);

}  // namespace tidemark
