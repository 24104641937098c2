// Identifiers are the same when their NFC forms are (UAX #15). Any thread.
#pragma once

#include <string>
#include <string_view>

namespace tidemark::local {

// ASCII is its own NFC form, and so is in practice almost every identifier.
bool isAscii(std::string_view text);

// Bytes that are not UTF-8 stay as they are.
std::string canonicalForm(std::string_view text);

}  // namespace tidemark::local
