#include "store/local/items/canonical_identifier.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace tidemark::local {

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string canonicalForm(std::string_view text) {
  if (isAscii(text)) return std::string(text);
  constexpr auto options = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE);
  utf8proc_uint8_t* composed = nullptr;
  const utf8proc_ssize_t size =
      utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                   static_cast<utf8proc_ssize_t>(text.size()), &composed, options);
  if (size < 0) return std::string(text);
  const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(composed, &std::free);
  return std::string(reinterpret_cast<const char*>(composed), static_cast<std::size_t>(size));
}

}  // namespace tidemark::local
