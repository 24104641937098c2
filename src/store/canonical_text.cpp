#include "store/canonical_text.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace tidemark {

bool isAscii(std::string_view text) {
  unsigned char bits = 0;
  for (char c : text) bits |= static_cast<unsigned char>(c);
  return bits < 0x80;
}

bool canonicallyEqual(std::string_view a, std::string_view b) {
  if (a == b) return true;
  if (isAscii(a) && isAscii(b)) return false;
  return canonicalForm(a) == canonicalForm(b);
}

bool canonicallyBefore(std::string_view a, std::string_view b) {
  // char_traits<char> compares bytes as unsigned.
  if (isAscii(a) && isAscii(b)) return a < b;
  return canonicalForm(a) < canonicalForm(b);
}

std::string canonicalForm(std::string_view text) {
  if (isAscii(text)) return std::string(text);
  constexpr auto options = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE);
  utf8proc_uint8_t* composed = nullptr;
  const utf8proc_ssize_t size =
      utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                   static_cast<utf8proc_ssize_t>(text.size()), &composed, options);
  const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(composed, &std::free);
  if (size < 0) return std::string(text);
  return {reinterpret_cast<const char*>(composed), static_cast<std::size_t>(size)};
}

}  // namespace tidemark
