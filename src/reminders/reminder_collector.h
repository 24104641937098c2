// Where the fetches of one "reminders" request bring what they find.
#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/reply_channel.h"
#include "reminders/dispatch_group.h"
#include "store/store.h"

namespace tidemark {

// Shared by the fetches' completions and the answer; gone with the last of them. `add` is called
// from any thread, `answer` once all adding is over.
class ReminderCollector {
 public:
  // What one fetch delivered: absent is as good as nothing. A reminder without a due date is passed
  // over, also one that was completed in the range; one that is delivered twice counts once, as it
  // was last.
  void add(std::optional<std::vector<ReminderRef>> reminders);

  // Writes {"reminders": [...]}, in no order that means anything.
  void answer(RequestId id) const;

  // Entered by each fetch, left when what it found has been added.
  DispatchGroup group;

 private:
  std::mutex lock_;
  // By the NFC form of calendarItemIdentifier.
  std::unordered_map<std::string, ReminderRef> collected_;
};

}  // namespace tidemark
