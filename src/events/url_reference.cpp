#include "events/url_reference.h"

#include <uriparser/Uri.h>

namespace tidemark {

bool isUrlReference(std::string_view text) {
  if (text.empty()) return false;
  UriUriA parsed;
  if (uriParseSingleUriExA(&parsed, text.data(), text.data() + text.size(), nullptr) != URI_SUCCESS)
    return false;
  uriFreeUriMembersA(&parsed);
  return true;
}

}  // namespace tidemark
