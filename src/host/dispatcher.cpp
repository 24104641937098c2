#include "host/dispatcher.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "access/authorization.h"
#include "events/calendars.h"
#include "events/event_changes.h"
#include "events/event_query.h"
#include "host/reply_channel.h"
#include "reminders/reminder_changes.h"
#include "reminders/reminder_lists.h"
#include "reminders/reminder_query.h"
#include "store/store.h"

namespace tidemark {
namespace {

struct Command {
  std::string_view name;
  void (*handler)(RequestId id, const Request& request);
};

// A command that reads nothing but the id.
template <void (*handler)(RequestId)>
void idOnly(RequestId id, const Request&) {
  handler(id);
}

constexpr std::array<Command, 15> commands = {{
    {"auth", idOnly<requestAccess>},
    {"status", idOnly<replyStatus>},
    {"calendars", idOnly<listCalendars>},
    {"events", listEvents},
    {"create", createEvent},
    {"update", updateEvent},
    {"delete", deleteEvent},
    {"reminders-auth", idOnly<requestRemindersAccess>},
    {"reminders-status", idOnly<replyReminderStatus>},
    {"reminder-lists", idOnly<listReminderLists>},
    {"reminders", listReminders},
    {"reminder-complete", setReminderCompleted},
    {"reminder-create", createReminder},
    {"reminder-update", updateReminder},
    {"reminder-delete", deleteReminder},
}};

constexpr bool namesAreUnique() {
  for (std::size_t i = 0; i < commands.size(); ++i) {
    for (std::size_t j = i + 1; j < commands.size(); ++j) {
      if (commands[i].name == commands[j].name) return false;
    }
  }
  return true;
}
static_assert(namesAreUnique());

void run(const Command& command, RequestId id, const Request& request) {
  try {
    command.handler(id, request);
  } catch (const StoreError& error) {
    // Handlers answer last, when the store has said all: this is the one answer.
    fail(id, error.what());
  }
}

}  // namespace

void handle(const Request& request) {
  const RequestId id = request.find("id");
  const std::string* name = stringField(request, "cmd");
  if (name != nullptr) {
    for (const Command& command : commands) {
      if (command.name == *name) return run(command, id, request);
    }
  }
  fail(id, "unknown command: " + (name == nullptr ? "none" : *name));
}

}  // namespace tidemark
