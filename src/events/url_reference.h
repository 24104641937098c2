// Whether a text is a URL.
#pragma once

#include <string_view>

namespace tidemark {

// A URI or a relative reference of RFC 3986 (section 4.1) that is not empty.
bool isUrlReference(std::string_view text);

}  // namespace tidemark
