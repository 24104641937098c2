#include "store/eventkit/eventkit_store.h"

#import <EventKit/EventKit.h>
#import <Foundation/Foundation.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "store/eventkit/eventkit_calendar.h"
#include "store/eventkit/eventkit_event.h"
#include "store/eventkit/eventkit_reminder.h"
#include "store/eventkit/foundation_values.h"
#include "store/eventkit/session.h"

namespace tidemark {
namespace {

// EventKit answers no more than the first four years of a range. This is a day less.
constexpr std::chrono::days longestRange{4 * 365};

EKEntityType toNative(EntityType type) {
  return type == EntityType::event ? EKEntityTypeEvent : EKEntityTypeReminder;
}

AccessResult toAccessResult(BOOL granted, NSError* error) {
  return {static_cast<bool>(granted),
          error != nil ? std::optional(textOf(error.localizedDescription)) : std::nullopt};
}

class EventKitStore final : public Store {
 public:
  ~EventKitStore() override {
    @autoreleasepool {
      if (observation_ != nil) {
        [[NSNotificationCenter defaultCenter] removeObserver:observation_];
        observation_ = nil;
      }
    }
  }

  AuthorizationStatus authorizationStatusForEntityType(EntityType type) const override {
    @autoreleasepool {
      return static_cast<int>([EKEventStore authorizationStatusForEntityType:toNative(type)]);
    }
  }
  void requestFullAccessToEvents(AccessCompletion completion) override {
    requestAccess(std::move(completion), [this](EKEventStoreRequestAccessCompletionHandler done) {
      [session_.events requestFullAccessToEventsWithCompletion:done];
    });
  }
  void requestFullAccessToReminders(AccessCompletion completion) override {
    requestAccess(std::move(completion), [this](EKEventStoreRequestAccessCompletionHandler done) {
      [session_.events requestFullAccessToRemindersWithCompletion:done];
    });
  }
  void reset() override {
    const std::lock_guard guard(session_.lock);
    ++session_.generation;
    static_cast<void>(exceptionOf([&] { [session_.events reset]; }));
  }

  std::vector<CalendarRef> calendarsForEntityType(EntityType type) override {
    std::vector<CalendarRef> calendars;
    ask([&] {
      for (EKCalendar* calendar in [session_.events calendarsForEntityType:toNative(type)]) {
        calendars.push_back(makeCalendar(session_, calendar));
      }
    });
    return calendars;
  }
  CalendarRef defaultCalendarForNewEvents() override {
    return defaultCalendar([&] { return [session_.events defaultCalendarForNewEvents]; });
  }
  CalendarRef defaultCalendarForNewReminders() override {
    return defaultCalendar([&] { return [session_.events defaultCalendarForNewReminders]; });
  }

  std::vector<EventRef> eventsMatchingPredicate(const EventPredicate& predicate) override;
  EventRef eventWithIdentifier(std::string_view identifier) override {
    return makeEvent(EventKitEvent::Origin::fetched,
                     [&] { return [session_.events eventWithIdentifier:toNSString(identifier)]; });
  }
  EventRef newEvent() override {
    return makeEvent(EventKitEvent::Origin::made,
                     [&] { return [EKEvent eventWithEventStore:session_.events]; });
  }
  StoreResult saveEvent(Event& event) override {
    return native(event).save([this](EKEvent* changed, NSError* __autoreleasing* error) {
      return [session_.events saveEvent:changed span:EKSpanThisEvent commit:YES error:error];
    });
  }
  StoreResult removeEvent(Event& event) override {
    return native(event).remove([this](EKEvent* removed, NSError* __autoreleasing* error) {
      return [session_.events removeEvent:removed span:EKSpanThisEvent commit:YES error:error];
    });
  }

  void fetchRemindersMatchingPredicate(const ReminderPredicate& predicate,
                                       ReminderCompletion completion) override;
  ReminderRef calendarItemWithIdentifier(std::string_view identifier) override {
    return makeReminder(EventKitReminder::Origin::fetched,
                        [&] { return reminderWithIdentifier(session_, identifier); });
  }
  ReminderRef newReminder() override {
    return makeReminder(EventKitReminder::Origin::made,
                        [&] { return [EKReminder reminderWithEventStore:session_.events]; });
  }
  StoreResult saveReminder(Reminder& reminder) override {
    return native(reminder).save([this](EKReminder* changed, NSError* __autoreleasing* error) {
      return [session_.events saveReminder:changed commit:YES error:error];
    });
  }
  StoreResult removeReminder(Reminder& reminder) override {
    return native(reminder).remove([this](EKReminder* removed, NSError* __autoreleasing* error) {
      return [session_.events removeReminder:removed commit:YES error:error];
    });
  }

  void setChangeObserver(std::function<void()> observer) override;
  [[noreturn]] void run() override;

 private:
  static EventKitEvent& native(Event& event) { return static_cast<EventKitEvent&>(event); }
  static EventKitReminder& native(Reminder& reminder) {
    return static_cast<EventKitReminder&>(reminder);
  }

  template <typename Request>
  void requestAccess(AccessCompletion completion, const Request& request);

  // Runs a look-up or query under the lock and in a pool; an exception becomes a StoreError.
  template <typename Question>
  void ask(const Question& question) {
    const std::lock_guard guard(session_.lock);
    if (const auto raised = exceptionOf(question)) throw StoreError(*raised);
  }
  template <typename Choose>
  CalendarRef defaultCalendar(const Choose& choose) {
    CalendarRef result;
    ask([&] {
      if (EKCalendar* const calendar = choose(); calendar != nil) {
        result = makeCalendar(session_, calendar);
      }
    });
    return result;
  }
  template <typename Find>
  EventRef makeEvent(EventKitEvent::Origin origin, const Find& find) {
    EventRef result;
    ask([&] {
      if (EKEvent* const event = find(); event != nil) {
        CalendarsOfAnswer calendars(session_);
        result = std::make_shared<EventKitEvent>(session_, event, origin, calendars);
      }
    });
    return result;
  }
  template <typename Find>
  ReminderRef makeReminder(EventKitReminder::Origin origin, const Find& find) {
    ReminderRef result;
    ask([&] {
      if (EKReminder* const reminder = find(); reminder != nil) {
        CalendarsOfAnswer calendars(session_);
        result = std::make_shared<EventKitReminder>(session_, reminder, origin, calendars);
      }
    });
    return result;
  }

  // With the lock held. Null stands for all calendars.
  NSArray<EKCalendar*>* nativeSelection(const CalendarSelection& selection) const;
  std::optional<std::vector<ReminderRef>> readAll(NSArray<EKReminder*>* reminders);

  Session session_;
  id<NSObject> observation_ = nil;
};

template <typename Request>
void EventKitStore::requestAccess(AccessCompletion completion, const Request& request) {
  // Made here: within the lambda it would have a reference of the completion, not a copy.
  const EKEventStoreRequestAccessCompletionHandler done = ^(BOOL granted, NSError* error) {
    @autoreleasepool {
      completion(toAccessResult(granted, error));
    }
  };
  const std::lock_guard guard(session_.lock);
  const auto raised = exceptionOf([&] { request(done); });
  if (!raised) return;
  std::thread([completion, error = *raised] { completion({false, error}); }).detach();
}

NSArray<EKCalendar*>* EventKitStore::nativeSelection(const CalendarSelection& selection) const {
  if (!selection) return nil;
  NSMutableArray<EKCalendar*>* const result = [NSMutableArray array];
  for (const CalendarRef& selected : *selection) {
    if (EKCalendar* const calendar = nativeCalendar(session_, selected); calendar != nil) {
      [result addObject:calendar];
    }
  }
  return result;
}

std::vector<EventRef> EventKitStore::eventsMatchingPredicate(const EventPredicate& predicate) {
  std::vector<EventRef> found;
  ask([&] {
    NSArray<EKCalendar*>* const selection = nativeSelection(predicate.calendars);
    // No calendar at all might mean all of them to EventKit.
    if (selection != nil && selection.count == 0) return;
    CalendarsOfAnswer calendars(session_);
    Instant to;
    for (Instant from = predicate.startDate; from < predicate.endDate; from = to) {
      to = std::min<Instant>(from + longestRange, predicate.endDate);
      // What one piece leaves behind must not pile up over a range of centuries.
      @autoreleasepool {
        NSPredicate* const piece = [session_.events predicateForEventsWithStartDate:toNSDate(from)
                                                                            endDate:toNSDate(to)
                                                                          calendars:selection];
        for (EKEvent* event in [session_.events eventsMatchingPredicate:piece]) {
          // Where two pieces meet, an event is the one's in which it starts.
          const Instant start = instantOf(event.startDate).value_or(predicate.startDate);
          if (start < from && from != predicate.startDate) continue;
          if (start >= to && to != predicate.endDate) continue;
          found.push_back(std::make_shared<EventKitEvent>(
              session_, event, EventKitEvent::Origin::fetched, calendars));
        }
      }
    }
  });
  return found;
}

std::optional<std::vector<ReminderRef>> EventKitStore::readAll(NSArray<EKReminder*>* reminders) {
  if (reminders == nil) return std::nullopt;
  const std::lock_guard guard(session_.lock);
  std::vector<ReminderRef> found;
  CalendarsOfAnswer calendars(session_);
  const auto raised = exceptionOf([&] {
    for (EKReminder* reminder in reminders) {
      found.push_back(std::make_shared<EventKitReminder>(
          session_, reminder, EventKitReminder::Origin::fetched, calendars));
    }
  });
  if (raised) return std::nullopt;
  return found;
}

void EventKitStore::fetchRemindersMatchingPredicate(const ReminderPredicate& predicate,
                                                    ReminderCompletion completion) {
  if (predicate.calendars && predicate.calendars->empty()) return completion({{}});
  // Made here, as in requestAccess.
  const auto done = ^(NSArray<EKReminder*>* reminders) {
    @autoreleasepool {
      completion(readAll(reminders));
    }
  };
  const std::lock_guard guard(session_.lock);
  const auto raised = exceptionOf([&] {
    EKEventStore* const events = session_.events;
    NSArray<EKCalendar*>* const lists = nativeSelection(predicate.calendars);
    NSDate* const starting = predicate.starting ? toNSDate(*predicate.starting) : nil;
    NSDate* const ending = toNSDate(predicate.ending);
    NSPredicate* const wanted =
        predicate.kind == ReminderPredicate::Kind::incompleteByDueDate
            ? [events predicateForIncompleteRemindersWithDueDateStarting:starting
                                                                  ending:ending
                                                               calendars:lists]
            : [events predicateForCompletedRemindersWithCompletionDateStarting:starting
                                                                        ending:ending
                                                                     calendars:lists];
    [events fetchRemindersMatchingPredicate:wanted completion:done];
  });
  if (raised) completion(std::nullopt);
}

void EventKitStore::setChangeObserver(std::function<void()> observer) {
  @autoreleasepool {
    observation_ =
        [[NSNotificationCenter defaultCenter] addObserverForName:EKEventStoreChangedNotification
                                                          object:session_.events
                                                           queue:[NSOperationQueue mainQueue]
                                                      usingBlock:^(NSNotification*) {
                                                        observer();
                                                      }];
  }
}

void EventKitStore::run() {
  @autoreleasepool {
    // A loop without a source would not wait. This timer never fires.
    NSTimer* const never = [[NSTimer alloc] initWithFireDate:[NSDate distantFuture]
                                                    interval:0
                                                      target:[NSNull null]
                                                    selector:@selector(self)
                                                    userInfo:nil
                                                     repeats:NO];
    [[NSRunLoop mainRunLoop] addTimer:never forMode:NSDefaultRunLoopMode];
  }
  while (true) {
    @autoreleasepool {
      [[NSRunLoop mainRunLoop] runMode:NSDefaultRunLoopMode beforeDate:[NSDate distantFuture]];
    }
  }
}

}  // namespace

std::unique_ptr<Store> makeEventKitStore() {
  @autoreleasepool {
    return std::make_unique<EventKitStore>();
  }
}

}  // namespace tidemark
