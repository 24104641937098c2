// Which command a request is for.
#pragma once

#include "host/request.h"

namespace tidemark {

// Has the command answer the request, or answers that there is no such command. On the request
// reader, one at a time.
void handle(const Request& request);

}  // namespace tidemark
