#include "host/request_loop.h"

#include <unistd.h>
#include <utf8proc.h>

#include <chrono>
#include <optional>
#include <string_view>

#include "access/pending_requests.h"
#include "host/dispatcher.h"
#include "host/line_reader.h"
#include "host/process_end.h"
#include "host/reply_channel.h"
#include "store/local_dates.h"

namespace tidemark {
namespace {

// How long a prompt that the user has not answered keeps the process once its host is done.
constexpr std::chrono::seconds endOfInputWait{120};

// The length of the blank at the front of the text: a tab or a Unicode space separator; 0 when
// there is none.
std::size_t blankLength(std::string_view text) {
  utf8proc_int32_t character;
  const utf8proc_ssize_t length =
      utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                       static_cast<utf8proc_ssize_t>(text.size()), &character);
  if (length <= 0) return 0;
  const bool isBlank = character == '\t' || utf8proc_category(character) == UTF8PROC_CATEGORY_ZS;
  return isBlank ? static_cast<std::size_t>(length) : 0;
}

// Where the last character of the text begins.
std::size_t lastCharacter(std::string_view text) {
  std::size_t at = text.size() - 1;
  while (at > 0 && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) --at;
  return at;
}

std::string_view trimmed(std::string_view line) {
  while (!line.empty()) {
    const std::size_t length = blankLength(line);
    if (length == 0) break;
    line.remove_prefix(length);
  }
  while (!line.empty()) {
    const std::size_t last = lastCharacter(line);
    if (blankLength(line.substr(last)) != line.size() - last) break;
    line = line.substr(0, last);
  }
  return line;
}

void handleLine(std::string_view line) {
  const std::string_view text = trimmed(line);
  if (text.empty()) return;
  const std::optional<Json> json = parseJson(text);
  const Request* request = json ? json->object() : nullptr;
  if (request == nullptr) {
    fail(nullptr, "bad JSON");
    return;
  }
  handle(*request);
}

}  // namespace

void readLoop() noexcept {
  LineReader reader(STDIN_FILENO);
  while (const auto line = reader.next()) {
    // The main thread does it once the ready line is out, or is about to; nothing the second time.
    loadLocalZone();
    handleLine(*line);
  }

  const auto deadline = std::chrono::steady_clock::now() + endOfInputWait;
  pending.waitUntilNone(deadline);
  endAfterLastLine(deadline);
}

}  // namespace tidemark
