#include "store/memory/identifier.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstdlib>
#include <string>

namespace tidemark {
namespace {

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string normalized(std::string_view text) {
  utf8proc_uint8_t* composed = nullptr;
  const utf8proc_ssize_t length =
      utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                   static_cast<utf8proc_ssize_t>(text.size()), &composed,
                   static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE));
  if (length < 0) return std::string(text);
  std::string result(reinterpret_cast<const char*>(composed), static_cast<std::size_t>(length));
  std::free(composed);
  return result;
}

}  // namespace

bool identifiersAreEqual(std::string_view a, std::string_view b) {
  if (a == b) return true;
  // ASCII is its own normal form.
  if (isAscii(a) && isAscii(b)) return false;
  return normalized(a) == normalized(b);
}

}  // namespace tidemark
