#include "access/authorization.h"

#include <array>
#include <optional>
#include <string>
#include <utility>

#include "access/pending_requests.h"
#include "store/current_store.h"

namespace tidemark {
namespace {

bool require(RequestId id, EntityType type, const char* refusal) {
  if (store->authorizationStatusForEntityType(type) == fullAccess) return true;
  // Read again: the refusal names what holds now.
  const AuthorizationStatus status = store->authorizationStatusForEntityType(type);
  fail(id, std::string(refusal).append(statusName(status)));
  return false;
}

void replyStatusOf(RequestId id, AuthorizationStatus status) {
  ReplyObject object;
  object.add("status", statusName(status));
  reply(id, std::move(object));
}

void answerAccessRequest(RequestId id, EntityType type, const AccessResult& result) {
  if (result.error) {
    fail(id, *result.error);
    return;
  }
  // Before the answer: the host's next request sees what it was just given access to.
  if (result.granted) store->reset();
  ReplyObject object;
  object.add("status", statusName(store->authorizationStatusForEntityType(type)));
  object.add("granted", result.granted);
  reply(id, std::move(object));
}

// What the store is given to complete with. It keeps the id, since the request is gone by then.
AccessCompletion completion(RequestId id, EntityType type) {
  std::optional<Json> kept;
  if (id != nullptr) kept = *id;
  return [kept = std::move(kept), type](const AccessResult& result) {
    answerAccessRequest(kept ? &*kept : nullptr, type, result);
    pending.finish();
  };
}

}  // namespace

std::string_view statusName(AuthorizationStatus status) {
  constexpr std::array<std::string_view, 5> names = {"notDetermined", "restricted", "denied",
                                                     "fullAccess", "writeOnly"};
  if (status < 0 || static_cast<std::size_t>(status) >= names.size()) return "unknown";
  return names[static_cast<std::size_t>(status)];
}

AuthorizationStatus currentStatus() {
  return store->authorizationStatusForEntityType(EntityType::event);
}

AuthorizationStatus reminderStatus() {
  return store->authorizationStatusForEntityType(EntityType::reminder);
}

bool requireAccess(RequestId id) {
  return require(id, EntityType::event, "no calendar access: ");
}

bool requireReminderAccess(RequestId id) {
  return require(id, EntityType::reminder, "no reminders access: ");
}

void replyStatus(RequestId id) {
  replyStatusOf(id, currentStatus());
}

void replyReminderStatus(RequestId id) {
  replyStatusOf(id, reminderStatus());
}

void requestAccess(RequestId id) {
  pending.begin();
  store->requestFullAccessToEvents(completion(id, EntityType::event));
}

void requestRemindersAccess(RequestId id) {
  pending.begin();
  store->requestFullAccessToReminders(completion(id, EntityType::reminder));
}

}  // namespace tidemark
