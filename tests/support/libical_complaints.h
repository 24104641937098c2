// What an independent parser makes of a calendar file.
#pragma once

#include <string>

namespace tidemark::local {

// The components and lines that libical cannot make sense of; -1 when it reads nothing at all.
// Lines without a value are not counted: they are common and in order, and libical alone rejects
// them.
int complaintsOfLibical(const std::string& text);

}  // namespace tidemark::local
