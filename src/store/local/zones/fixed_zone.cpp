#include "store/local/zones/fixed_zone.h"

#include <cstdlib>

namespace tidemark::local {

std::string nameOfOffset(std::int64_t offset) {
  const std::int64_t minutes = std::abs(offset) / 60;
  if (minutes == 0) return "GMT";
  std::string name = offset < 0 ? "GMT-0000" : "GMT+0000";
  const std::int64_t digits = minutes / 60 * 100 + minutes % 60;
  std::size_t at = name.size();
  for (std::int64_t rest = digits; rest != 0; rest /= 10)
    name[--at] = static_cast<char>('0' + rest % 10);
  return name;
}

}  // namespace tidemark::local
