// When two identifiers are the same.
#pragma once

#include <string_view>

namespace tidemark {

// True when the NFC forms (UAX #15) of the two are the same; bytes that are not UTF-8 are compared
// as they are.
bool identifiersAreEqual(std::string_view a, std::string_view b);

}  // namespace tidemark
