#include "store/local/local_store.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "store/canonical_text.h"
#include "store/local/answers.h"
#include "store/local/change_notices.h"
#include "store/local/item_writer.h"
#include "store/local/local_event.h"
#include "store/local/local_reminder.h"
#include "store/local/local_store_parts.h"
#include "store/local/tree/collection_tree.h"
#include "store/local/tree/root.h"

namespace tidemark::local {
namespace {

constexpr const char* noCalendar = "The event has no calendar.";
constexpr const char* noList = "The reminder has no list.";
constexpr const char* noStart = "The event has no start date.";
constexpr const char* startAfterEnd = "The start date must be before the end date.";
constexpr const char* readOnly = "The calendar is read-only.";
constexpr const char* occurrenceCannotMove =
    "One occurrence of a repeating event cannot be moved to another calendar.";
constexpr const char* isGone = "The item does not exist any more.";

class LocalStore final : public Store {
 public:
  LocalStore(std::vector<std::string> rootCandidates, std::unique_ptr<Watcher> watcher)
      : candidates_(std::move(rootCandidates)), tree_(candidates_, std::move(watcher), index_) {}

  // Asks the disk alone, so that it never waits for a query.
  AuthorizationStatus authorizationStatusForEntityType(EntityType) const override {
    return rootStatus(candidates_);
  }

  void requestFullAccessToEvents(AccessCompletion completion) override {
    requestFullAccess(std::move(completion));
  }
  void requestFullAccessToReminders(AccessCompletion completion) override {
    requestFullAccess(std::move(completion));
  }

  // What the watches and the checks do not see is what was refused before.
  void reset() override {
    const std::lock_guard lock(lock_);
    tree_.retryUnreadable();
  }

  std::vector<CalendarRef> calendarsForEntityType(EntityType type) override {
    const auto current = currentCalendars();
    std::vector<CalendarRef> calendars;
    for (const LocalCalendarRef& calendar : current->inStoreOrder()) {
      if (calendar->holds(type)) calendars.push_back(calendar);
    }
    return calendars;
  }

  CalendarRef defaultCalendarForNewEvents() override {
    return currentCalendars()->defaultFor(EntityType::event);
  }
  CalendarRef defaultCalendarForNewReminders() override {
    return currentCalendars()->defaultFor(EntityType::reminder);
  }

  std::vector<EventRef> eventsMatchingPredicate(const EventPredicate& predicate) override {
    return makeEvents(findEvents(predicate));
  }

  EventRef eventWithIdentifier(std::string_view identifier) override {
    auto findings = find<PlacedEvent>(identifier, EntityType::event,
                                      [](const ItemGroup& group, std::uint32_t collection) {
                                        return firstEvent(group, collection);
                                      });
    return findings.placed.empty() ? nullptr : makeEvents(std::move(findings)).front();
  }

  EventRef newEvent() override { return std::make_shared<LocalEvent>(); }
  StoreResult saveEvent(Event& event) override {
    auto& saved = static_cast<LocalEvent&>(event);
    if (!saved.startDate()) return StoreResult::failure(noStart);
    if (saved.endDate() && *saved.startDate() > *saved.endDate()) {
      return StoreResult::failure(startAfterEnd);
    }
    if (saved.calendar() == nullptr) return StoreResult::failure(noCalendar);
    const EventChange change = saved.edits() ? saved.edits()->change : EventChange();
    const auto occurrence = saved.occurrence();
    const Written written = saved.item() == nullptr
                                ? create(*saved.calendar(), change)
                                : write(ItemKind::event, saved, occurrence, change);
    if (!written.result) return written.result;

    auto findings = find<PlacedEvent>(written.identifier, EntityType::event,
                                      [&](const ItemGroup& group, std::uint32_t collection) {
                                        return occurrence ? eventAt(group, collection, *occurrence)
                                                          : firstEvent(group, collection);
                                      });
    if (findings.placed.empty()) return StoreResult::success();  // gone again
    saved.become(
        std::static_pointer_cast<const LocalEvent>(makeEvents(std::move(findings)).front()));
    return StoreResult::success();
  }

  StoreResult removeEvent(Event& event) override {
    const auto& removed = static_cast<const LocalEvent&>(event);
    return remove(ItemKind::event, removed, removed.occurrence());
  }

  void fetchRemindersMatchingPredicate(const ReminderPredicate& predicate,
                                       ReminderCompletion completion) override {
    completion(makeReminders(findReminders(predicate)));
  }

  ReminderRef calendarItemWithIdentifier(std::string_view identifier) override {
    auto findings = find<PlacedTodo>(identifier, EntityType::reminder,
                                     [](const ItemGroup& group, std::uint32_t collection) {
                                       return std::optional(placeTodo(group, collection));
                                     });
    return findings.placed.empty() ? nullptr : makeReminders(std::move(findings)).front();
  }

  ReminderRef newReminder() override { return std::make_shared<LocalReminder>(std::string()); }
  StoreResult saveReminder(Reminder& reminder) override {
    auto& saved = static_cast<LocalReminder&>(reminder);
    if (saved.calendar() == nullptr) return StoreResult::failure(noList);
    const TodoChange change = saved.edits() ? saved.edits()->change : TodoChange();
    const Written written = saved.item() == nullptr
                                ? create(*saved.calendar(), change)
                                : write(ItemKind::todo, saved, saved.occurrence(), change);
    if (!written.result) return written.result;

    ReminderRef found = calendarItemWithIdentifier(written.identifier);
    if (found) saved.become(std::static_pointer_cast<const LocalReminder>(std::move(found)));
    return StoreResult::success();
  }

  StoreResult removeReminder(Reminder& reminder) override {
    // One that repeats is one reminder: it goes with all its occurrences.
    return remove(ItemKind::todo, static_cast<const LocalReminder&>(reminder), std::nullopt);
  }

  void setChangeObserver(std::function<void()> observer) override {
    notices_.setObserver(std::move(observer));
    const std::lock_guard lock(lock_);
    tree_.beginWatching();
  }

  [[noreturn]] void run() override {
    // By now the host was told that the process is ready: its first query finds the reading done,
    // or well on its way.
    notices_.deliver(lockedNotices([this] { tree_.refresh(); }));
    while (true) {
      notices_.deliver(notices_.wait(tree_.watchDescriptor()));
      // The host is told before the change is read in; a query that it sends now waits for that.
      bool isNews = false;
      notices_.deliver(lockedNotices([&] { isNews = tree_.takeNews(); }));
      if (isNews) notices_.deliver(lockedNotices([this] { tree_.refresh(); }));
    }
  }

 private:
  void requestFullAccess(AccessCompletion completion) {
    // Uses nothing of the store, which it may outlive.
    std::thread([candidates = candidates_, completion = std::move(completion)] {
      if (rootStatus(candidates) == notDetermined) {
        if (auto error = makeRoot(candidates)) {
          completion({false, std::move(error)});
          return;
        }
      }
      completion({rootStatus(candidates) == fullAccess, std::nullopt});
    }).detach();
  }

  // On the main thread.
  template <typename Work>
  std::size_t lockedNotices(const Work& work) {
    const std::lock_guard lock(lock_);
    work();
    return tree_.takeNotices();
  }

  // Every query begins with it, under the lock.
  void refresh() {
    tree_.refresh();
    if (const std::size_t count = tree_.takeNotices()) notices_.post(count);
  }

  std::shared_ptr<const Calendars> currentCalendars() {
    const std::lock_guard lock(lock_);
    refresh();
    return tree_.calendars();
  }

  // Which collections, by their numbers, a query is about.
  static std::vector<bool> selected(const Calendars& calendars, EntityType type,
                                    const CalendarSelection& selection) {
    std::vector<bool> numbers;
    for (const LocalCalendarRef& calendar : calendars.inStoreOrder()) {
      if (numbers.size() <= calendar->number) numbers.resize(calendar->number + 1);
      if (!calendar->holds(type)) continue;
      const auto isThis = [&](const CalendarRef& other) {
        return other != nullptr && other->calendarIdentifier == calendar->calendarIdentifier;
      };
      numbers[calendar->number] =
          !selection || std::any_of(selection->begin(), selection->end(), isThis);
    }
    return numbers;
  }

  Findings<PlacedEvent> findEvents(const EventPredicate& predicate) {
    const std::lock_guard lock(lock_);
    refresh();
    Findings<PlacedEvent> findings;
    findings.calendars = tree_.calendars();
    findings.placed =
        index_.events.find(predicate.startDate, predicate.endDate,
                           selected(*findings.calendars, EntityType::event, predicate.calendars));
    findings.hold = std::make_unique<RetiredItems::Hold>(index_.retired);
    return findings;
  }

  Findings<PlacedTodo> findReminders(const ReminderPredicate& predicate) {
    const std::lock_guard lock(lock_);
    refresh();
    Findings<PlacedTodo> findings;
    findings.calendars = tree_.calendars();
    const auto selection = selected(*findings.calendars, EntityType::reminder, predicate.calendars);
    const bool isIncomplete = predicate.kind == ReminderPredicate::Kind::incompleteByDueDate;
    findings.placed =
        isIncomplete
            ? index_.reminders.findIncomplete(predicate.starting, predicate.ending, selection)
            : index_.reminders.findCompleted(predicate.starting, predicate.ending, selection);
    findings.hold = std::make_unique<RetiredItems::Hold>(index_.retired);
    return findings;
  }

  // What `place` makes of the group that the identifier names: one or none.
  template <typename Placed, typename Place>
  Findings<Placed> find(std::string_view identifier, EntityType type, const Place& place) {
    const std::lock_guard lock(lock_);
    refresh();
    Findings<Placed> findings;
    findings.calendars = tree_.calendars();
    const ItemKind kind = type == EntityType::event ? ItemKind::event : ItemKind::todo;
    const std::string canonical = canonicalForm(identifier);
    for (const LocalCalendarRef& calendar : findings.calendars->inStoreOrder()) {
      if (!calendar->holds(type)) continue;
      const auto group = groupNamed(*calendar, kind, identifier, canonical);
      if (!group) continue;
      const std::optional<Placed> placed = place(*group, calendar->number);
      if (!placed) continue;
      findings.placed.push_back(*placed);
      findings.hold = std::make_unique<RetiredItems::Hold>(index_.retired);
      break;
    }
    return findings;
  }

  // What a save came to, and the identifier that the item now has.
  struct Written {
    StoreResult result;
    std::string identifier;
  };

  static Written refusal(const char* sentence) { return {StoreResult::failure(sentence), {}}; }

  static std::string identifierIn(const Calendar& calendar, std::string_view uid) {
    return (calendar.calendarIdentifier + ':').append(uid);
  }

  template <typename Change>
  Written create(const Calendar& calendar, const Change& change) {
    const LocalCalendarRef target = currentCalendar(calendar);
    if (!target) return refusal(isGone);
    if (!target->allowsContentModifications) return refusal(readOnly);
    const std::string uid = newUid();
    return {createItem(target->directory, uid, change), identifierIn(*target, uid)};
  }

  template <typename Object, typename Change>
  Written write(ItemKind kind, const Object& object, std::optional<UtcSeconds> occurrence,
                const Change& change) {
    const LocalCalendarRef home = currentCalendar(*object.fetchedFrom());
    const LocalCalendarRef target = currentCalendar(*object.calendar());
    if (!home || !target) return refusal(isGone);
    if (!home->allowsContentModifications || !target->allowsContentModifications) {
      return refusal(readOnly);
    }
    const ItemName name{std::string(object.item()->uid()), occurrence};
    const std::optional<ItemPlace> place = placeOf(kind, *home, name.uid);
    if (!place) return refusal(isGone);
    std::string identifier = identifierIn(*target, name.uid);
    if (home->number == target->number) return {changeItem(*place, name, change), identifier};
    if (kind == ItemKind::event && occurrence) return refusal(occurrenceCannotMove);
    MoveTarget destination{target->directory, std::nullopt};
    if (auto existing = placeOf(kind, *target, name.uid)) destination.existing = existing->fileName;
    return {moveItem(*place, name, change, destination), std::move(identifier)};
  }

  template <typename Object>
  StoreResult remove(ItemKind kind, const Object& object, std::optional<UtcSeconds> occurrence) {
    const LocalCalendarRef home =
        object.item() == nullptr ? nullptr : currentCalendar(*object.fetchedFrom());
    if (!home) return StoreResult::failure(isGone);
    if (!home->allowsContentModifications) return StoreResult::failure(readOnly);
    const ItemName name{std::string(object.item()->uid()), occurrence};
    const std::optional<ItemPlace> place = placeOf(kind, *home, name.uid);
    if (!place) return StoreResult::failure(isGone);
    return removeItem(kind, *place, name);
  }

  // The calendar as it is now; null when it is gone.
  LocalCalendarRef currentCalendar(const Calendar& calendar) {
    for (const LocalCalendarRef& current : currentCalendars()->inStoreOrder()) {
      if (current->calendarIdentifier == calendar.calendarIdentifier) return current;
    }
    return nullptr;
  }

  std::optional<ItemPlace> placeOf(ItemKind kind, const LocalCalendar& calendar,
                                   std::string_view uid) {
    const std::lock_guard lock(lock_);
    const CollectionItems* items = tree_.items(calendar.number);
    const auto group = items == nullptr ? std::nullopt : items->find(kind, uid);
    if (!group) return std::nullopt;
    return ItemPlace{calendar.directory, group->file().name()};
  }

  std::optional<ItemGroup> groupNamed(const LocalCalendar& calendar, ItemKind kind,
                                      std::string_view identifier, std::string_view canonical) {
    const CollectionItems& items = *tree_.items(calendar.number);
    const std::string prefix = calendar.calendarIdentifier + ':';
    if (identifier.starts_with(prefix)) {
      if (auto group = items.find(kind, identifier.substr(prefix.size()))) return group;
    }
    if (isAscii(canonical)) return std::nullopt;
    const std::string canonicalPrefix = canonicalForm(prefix);
    if (!canonical.starts_with(canonicalPrefix)) return std::nullopt;
    return items.findEquivalent(kind, canonical.substr(canonicalPrefix.size()));
  }

  const std::vector<std::string> candidates_;
  ChangeNotices notices_;
  // Guards all below.
  std::mutex lock_;
  ItemIndex index_;
  CollectionTree tree_;
};

}  // namespace

std::unique_ptr<Store> makeLocalStore(std::vector<std::string> rootCandidates,
                                      std::unique_ptr<Watcher> watcher) {
  return std::make_unique<LocalStore>(std::move(rootCandidates), std::move(watcher));
}

}  // namespace tidemark::local

namespace tidemark {

std::unique_ptr<Store> makeLocalStore() {
  return local::makeLocalStore(local::rootCandidates(), local::makeWatcher());
}

}  // namespace tidemark
