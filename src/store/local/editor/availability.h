// How EKEventAvailability is written: TRANSP (RFC 5545, 3.8.2.7) knows two values of it, the
// vendor's property all.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace tidemark::local {

inline constexpr std::string_view busyStatusName = "X-MICROSOFT-CDO-BUSYSTATUS";

struct Availability {
  std::int8_t number = 0;
  std::string_view transparency;
  std::string_view busyStatus;
  // TRANSP alone does not say it.
  bool needsBusyStatus = false;
};

// Numbers without a meaning count as busy.
constexpr Availability availabilityOf(std::int64_t number) {
  constexpr std::array<Availability, 4> known = {{{0, "OPAQUE", "BUSY", false},
                                                  {1, "TRANSPARENT", "FREE", false},
                                                  {2, "OPAQUE", "TENTATIVE", true},
                                                  {3, "OPAQUE", "OOF", true}}};
  const bool isKnown = number >= 0 && number < std::ssize(known);
  return known[isKnown ? static_cast<std::size_t>(number) : 0];
}

}  // namespace tidemark::local
