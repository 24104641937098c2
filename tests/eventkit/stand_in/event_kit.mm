// Objective-C++ without ARC, for the classic runtime: the classes themselves.
#define EVENTKIT_STATE(...) \
  {                         \
   @public                  \
    __VA_ARGS__             \
  }
#import <EventKit/EventKit.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "tests/eventkit/stand_in/core_graphics.h"
#include "tests/eventkit/stand_in/stand_in.h"

NSString* const EKEventStoreChangedNotification = @"EKEventStoreChangedNotification";

namespace tidemark::eventkit {
namespace {

constexpr double fourYears = 4 * 365.25 * 24 * 60 * 60;

struct World {
  Store* store = nullptr;
  std::atomic<void*> events{nullptr};  // the one that the tests made last
  std::atomic<unsigned> generation{0};
  std::atomic<int> live{0};
  std::atomic<int> stale{0};
  std::atomic<int> abandoned{0};

  std::mutex lock;  // for what follows
  std::map<std::string, std::string> exceptions;
  bool refusesNext = false;
  std::vector<std::pair<double, double>> ranges;
  std::vector<std::string> dueCalendars;
};

World& world() {
  static auto* const instance = new World;
  return *instance;
}

template <typename Value>
Value take(Value World::*member) {
  const std::lock_guard guard(world().lock);
  return std::exchange(world().*member, Value());
}

NSString* string(std::string_view text) {
  return [[[NSString alloc] initWithBytes:text.data()
                                   length:text.size()
                                 encoding:NSUTF8StringEncoding] autorelease];
}
NSString* optionalString(std::optional<std::string_view> text) {
  return text ? string(*text) : nil;
}
std::string text(NSString* string) {
  NSData* const bytes = [string dataUsingEncoding:NSUTF8StringEncoding];
  return {static_cast<const char*>([bytes bytes]), [bytes length]};
}
NSDate* date(std::optional<Instant> instant) {
  return instant ? [NSDate dateWithTimeIntervalSince1970:instant->time_since_epoch().count()] : nil;
}
Instant instant(NSDate* date) {
  return Instant(std::chrono::duration<double>([date timeIntervalSince1970]));
}
NSURL* url(std::optional<std::string_view> text) {
  return text ? [NSURL URLWithString:string(*text)] : nil;
}

void raiseIfAsked(const std::string& operation) {
  std::string reason;
  {
    const std::lock_guard guard(world().lock);
    const auto found = world().exceptions.find(operation);
    if (found == world().exceptions.end()) return;
    reason = found->second;
    world().exceptions.erase(found);
  }
  [NSException raise:NSInternalInconsistencyException format:@"%@", string(reason)];
}

NSError* error(const std::string& text) {
  return [NSError errorWithDomain:@"EKErrorDomain"
                             code:1
                         userInfo:[NSDictionary dictionaryWithObject:string(text)
                                                              forKey:NSLocalizedDescriptionKey]];
}

void post() {
  NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
  [[NSNotificationCenter defaultCenter] postNotificationName:EKEventStoreChangedNotification
                                                      object:(id)world().events.load()];
  [pool release];
}

}  // namespace

void serve(Store& store) {
  world().store = &store;
}

void postChanges() {
  NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
  // The loop runs once there is an observer: what is posted earlier would be lost.
  [[NSOperationQueue mainQueue] addOperationWithBlock:^{
    world().store->setChangeObserver(post);
    std::thread([] { world().store->run(); }).detach();
  }];
  [pool release];
}

void raiseOnNext(const std::string& operation, const std::string& reason) {
  const std::lock_guard guard(world().lock);
  world().exceptions[operation] = reason;
}

void refuseNextWithoutError() {
  const std::lock_guard guard(world().lock);
  world().refusesNext = true;
}

std::vector<std::pair<double, double>> takeRanges() {
  return take(&World::ranges);
}
std::vector<std::string> takeDueCalendars() {
  return take(&World::dueCalendars);
}

int liveObjects() {
  return world().live;
}
int staleUses() {
  return world().stale;
}
int abandonedChanges() {
  return world().abandoned;
}

}  // namespace tidemark::eventkit

using namespace tidemark;
using namespace tidemark::eventkit;

// --- objects

@implementation EKObject
+ (id)allocWithZone:(NSZone*)zone {
  EKObject* const object = [super allocWithZone:zone];
  ++world().live;
  object->_generation = world().generation;
  return object;
}
- (void)dealloc {
  --world().live;
  [super dealloc];
}
- (void)rollback {
  _isChanged = NO;
}
// False for what a reset has made invalid.
- (BOOL)isUsable {
  if (_generation == world().generation) return YES;
  ++world().stale;
  return NO;
}
@end

@implementation EKSource
static Source& source(EKSource* self) {
  return *static_cast<Source*>(self->_source);
}
+ (EKSource*)sourceWithSource:(const Source&)source {
  EKSource* const result = [[[EKSource alloc] init] autorelease];
  result->_source = new Source(source);
  return result;
}
- (NSString*)title {
  return string(source(self).title);
}
- (EKSourceType)sourceType {
  return static_cast<EKSourceType>(source(self).sourceType);
}
- (void)dealloc {
  delete &source(self);
  [super dealloc];
}
@end

@implementation EKCalendar
static CalendarRef& calendar(EKCalendar* self) {
  return *static_cast<CalendarRef*>(self->_calendar);
}
+ (EKCalendar*)calendarWithCalendar:(const CalendarRef&)calendar {
  if (!calendar) return nil;
  EKCalendar* const result = [[[EKCalendar alloc] init] autorelease];
  result->_calendar = new CalendarRef(calendar);
  result->_color = makeColor(calendar->color);
  return result;
}
- (NSString*)calendarIdentifier {
  return [self isUsable] ? string(calendar(self)->calendarIdentifier) : nil;
}
- (NSString*)title {
  return [self isUsable] ? string(calendar(self)->title) : nil;
}
- (void)setTitle:(NSString*)title {
}
- (EKSource*)source {
  if (![self isUsable] || !calendar(self)->source) return nil;
  return [EKSource sourceWithSource:*calendar(self)->source];
}
- (void)setSource:(EKSource*)source {
}
- (BOOL)allowsContentModifications {
  return [self isUsable] && calendar(self)->allowsContentModifications;
}
- (CGColorRef)CGColor {
  return [self isUsable] ? _color : nullptr;
}
- (void)setCGColor:(CGColorRef)color {
}
- (void)dealloc {
  CGColorRelease(_color);
  delete &calendar(self);
  [super dealloc];
}
@end

@implementation EKParticipant
+ (EKParticipant*)participantWithParticipant:(const Participant&)participant {
  EKParticipant* const result = [[[EKParticipant alloc] init] autorelease];
  result->_name = [optionalString(participant.name) retain];
  result->_url = [url(participant.url) retain];
  return result;
}
- (NSString*)name {
  return _name;
}
- (NSURL*)URL {
  return _url;
}
- (void)dealloc {
  [_name release];
  [_url release];
  [super dealloc];
}
@end

@implementation EKCalendarItem
@dynamic calendar, calendarItemIdentifier, title, location, notes, URL, lastModifiedDate,
    hasRecurrenceRules, attendees;
@end

// The item behind an object is what it says, and takes what it is told.
#define READ(item, expression) ([self isUsable] ? (expression) : decltype(expression)())
#define CHANGE(operation, statement) \
  {                                  \
    raiseIfAsked(operation);         \
    if (![self isUsable]) return;    \
    _isChanged = YES;                \
    statement;                       \
  }

// A copy, since the item's own is valid no longer than the item is unchanged.
static EKCalendar* calendarOf(const Calendar* calendar) {
  if (calendar == nullptr) return nil;
  return [EKCalendar calendarWithCalendar:std::make_shared<Calendar>(*calendar)];
}

@implementation EKEvent
static EventRef& event(EKEvent* self) {
  return *static_cast<EventRef*>(self->_event);
}
+ (EKEvent*)eventWithEvent:(const EventRef&)event {
  if (!event) return nil;
  EKEvent* const result = [[[EKEvent alloc] init] autorelease];
  result->_event = new EventRef(event);
  return result;
}
+ (EKEvent*)eventWithEventStore:(EKEventStore*)eventStore {
  return [EKEvent eventWithEvent:world().store->newEvent()];
}
- (NSString*)eventIdentifier {
  return READ(event, optionalString(event(self)->eventIdentifier()));
}
- (NSString*)calendarItemIdentifier {
  return [self eventIdentifier];
}
- (NSString*)title {
  return READ(event, optionalString(event(self)->title()));
}
- (void)setTitle:(NSString*)title CHANGE("setTitle", event(self)->setTitle(text(title))) -
                 (EKCalendar*)calendar {
  return READ(event, calendarOf(event(self)->calendar()));
}
- (void)setCalendar:(EKCalendar*)value
                    CHANGE("setCalendar",
                           event(self)->setCalendar(value == nil ? nullptr : calendar(value))) -
                    (BOOL)isAllDay {
  return READ(event, event(self)->isAllDay());
}
- (void)setAllDay:(BOOL)allDay CHANGE("setAllDay", event(self)->setAllDay(allDay)) -
                  (BOOL)hasRecurrenceRules {
  return READ(event, event(self)->hasRecurrenceRules());
}
- (EKEventAvailability)availability {
  return READ(event, static_cast<EKEventAvailability>(event(self)->availability()));
}
- (void)setAvailability:(EKEventAvailability)availability
                        CHANGE("setAvailability", event(self)->setAvailability(availability)) -
                        (NSDate*)startDate {
  return READ(event, date(event(self)->startDate()));
}
- (void)setStartDate:(NSDate*)start
                     CHANGE("setStartDate", event(self)->setStartDate(instant(start))) -
                     (NSDate*)endDate {
  return READ(event, date(event(self)->endDate()));
}
- (void)setEndDate:(NSDate*)end CHANGE("setEndDate", event(self)->setEndDate(instant(end))) -
                   (NSDate*)occurrenceDate {
  return READ(event, date(event(self)->occurrenceDate()));
}
- (NSDate*)lastModifiedDate {
  return READ(event, date(event(self)->lastModifiedDate()));
}
- (NSString*)notes {
  return READ(event, optionalString(event(self)->notes()));
}
- (void)setNotes:(NSString*)notes CHANGE("setNotes", event(self)->setNotes(text(notes))) -
                 (NSString*)location {
  return READ(event, optionalString(event(self)->location()));
}
- (void)setLocation:(NSString*)location
                    CHANGE("setLocation", event(self)->setLocation(text(location))) -
                    (NSURL*)URL {
  return READ(event, url(event(self)->url()));
}
- (void)setURL:(NSURL*)url {
  CHANGE("setURL", {
    if (url == nil) {
      event(self)->setUrl(std::nullopt);
    } else {
      event(self)->setUrl(text([url absoluteString]));
    }
  })
}
- (NSArray*)attendees {
  const auto attendees = event(self)->attendees();
  if (![self isUsable] || !attendees) return nil;
  NSMutableArray* const result = [NSMutableArray array];
  for (const Participant& participant : *attendees) {
    [result addObject:[EKParticipant participantWithParticipant:participant]];
  }
  return result;
}
- (void)dealloc {
  if (_isChanged && event(self)->eventIdentifier() && _generation == world().generation) {
    ++world().abandoned;
  }
  delete &event(self);
  [super dealloc];
}
@end

@implementation EKReminder
static ReminderRef& reminder(EKReminder* self) {
  return *static_cast<ReminderRef*>(self->_reminder);
}
+ (EKReminder*)reminderWithReminder:(const ReminderRef&)reminder {
  if (!reminder) return nil;
  EKReminder* const result = [[[EKReminder alloc] init] autorelease];
  result->_reminder = new ReminderRef(reminder);
  return result;
}
+ (EKReminder*)reminderWithEventStore:(EKEventStore*)eventStore {
  return [EKReminder reminderWithReminder:world().store->newReminder()];
}
- (NSString*)calendarItemIdentifier {
  return READ(reminder, string(reminder(self)->calendarItemIdentifier()));
}
- (NSString*)title {
  return READ(reminder, optionalString(reminder(self)->title()));
}
- (void)setTitle:(NSString*)title CHANGE("setTitle", reminder(self)->setTitle(text(title))) -
                 (EKCalendar*)calendar {
  return READ(reminder, calendarOf(reminder(self)->calendar()));
}
- (void)setCalendar:(EKCalendar*)value
                    CHANGE("setCalendar",
                           reminder(self)->setCalendar(value == nil ? nullptr : calendar(value))) -
                    (NSString*)notes {
  return READ(reminder, optionalString(reminder(self)->notes()));
}
- (void)setNotes:(NSString*)notes {
  CHANGE("setNotes", {
    if (notes == nil) {
      reminder(self)->setNotes(std::nullopt);
    } else {
      reminder(self)->setNotes(text(notes));
    }
  })
}
- (BOOL)isCompleted {
  return READ(reminder, reminder(self)->isCompleted());
}
- (void)setCompleted:(BOOL)completed
                     CHANGE("setCompleted", reminder(self)->setCompleted(completed)) -
                     (NSUInteger)priority {
  return READ(reminder, static_cast<NSUInteger>(reminder(self)->priority()));
}
- (void)setPriority:(NSUInteger)priority {
}
- (NSDateComponents*)dueDateComponents {
  if (![self isUsable]) return nil;
  const std::optional<DateComponents> due = reminder(self)->dueDateComponents();
  if (!due) return nil;
  NSDateComponents* const result = [[[NSDateComponents alloc] init] autorelease];
  if (due->year) [result setYear:*due->year];
  if (due->month) [result setMonth:*due->month];
  if (due->day) [result setDay:*due->day];
  if (due->hour) [result setHour:*due->hour];
  if (due->minute) [result setMinute:*due->minute];
  if (due->second) [result setSecond:*due->second];
  if (due->timeZone) [result setTimeZone:[NSTimeZone timeZoneWithName:string(*due->timeZone)]];
  return result;
}
- (void)setDueDateComponents:(NSDateComponents*)components {
  NSString* const name = [[components calendar] calendarIdentifier];
  {
    const std::lock_guard guard(world().lock);
    world().dueCalendars.push_back(text(name));
  }
  if (![name isEqualToString:NSCalendarIdentifierGregorian]) {
    [NSException raise:NSInvalidArgumentException format:@"components need a Gregorian calendar"];
  }
  CHANGE("setDueDate", {
    const auto given = [](NSInteger value) {
      return value == NSDateComponentUndefined ? std::nullopt
                                               : std::optional(static_cast<int>(value));
    };
    DateComponents due;
    due.year = given([components year]);
    due.month = given([components month]);
    due.day = given([components day]);
    due.hour = given([components hour]);
    due.minute = given([components minute]);
    due.second = given([components second]);
    if ([components timeZone] != nil) due.timeZone = text([[components timeZone] name]);
    reminder(self)->setDueDateComponents(due);
  })
}
- (void)dealloc {
  if (_isChanged && !reminder(self)->calendarItemIdentifier().empty() &&
      _generation == world().generation) {
    ++world().abandoned;
  }
  delete &reminder(self);
  [super dealloc];
}
@end

// --- predicates

@interface RangePredicate : NSPredicate {
 @public
  NSDate* _from;
  NSDate* _to;
  NSArray* _calendars;
  BOOL _isOfCompleted;
}
@end

@implementation RangePredicate
+ (RangePredicate*)from:(NSDate*)from
                     to:(NSDate*)to
              calendars:(NSArray*)calendars
            ofCompleted:(BOOL)isOfCompleted {
  RangePredicate* const result = [[[RangePredicate alloc] init] autorelease];
  result->_from = [from retain];
  result->_to = [to retain];
  result->_calendars = [calendars copy];
  result->_isOfCompleted = isOfCompleted;
  return result;
}
- (CalendarSelection)selection {
  if (_calendars == nil) return std::nullopt;
  std::vector<CalendarRef> result;
  for (EKCalendar* selected in _calendars) {
    if ([selected isUsable]) result.push_back(calendar(selected));
  }
  return result;
}
- (void)dealloc {
  [_from release];
  [_to release];
  [_calendars release];
  [super dealloc];
}
@end

// --- the store

// A block that stays until a thread of the served store has called it.
template <typename Block>
class Kept {
 public:
  explicit Kept(Block block)
      : block_((void*)Block_copy(block), [](void* copy) { Block_release((Block)copy); }) {}
  Block get() const { return (Block)block_.get(); }

 private:
  std::shared_ptr<void> block_;
};

static AccessCompletion completionOf(EKEventStoreRequestAccessCompletionHandler handler) {
  return [kept = Kept(handler)](AccessResult result) {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    NSError* const problem = result.error ? [error(*result.error) retain] : nil;
    [pool release];
    kept.get()(result.granted, problem);  // without a pool: it brings its own
    [problem release];
  };
}

@implementation EKEventStore
+ (id)allocWithZone:(NSZone*)zone {
  ++world().live;
  return [super allocWithZone:zone];
}
- (id)init {
  self = [super init];
  world().events = self;
  return self;
}
- (void)dealloc {
  --world().live;
  world().events = nullptr;
  [super dealloc];
}

+ (EKAuthorizationStatus)authorizationStatusForEntityType:(EKEntityType)type {
  return static_cast<EKAuthorizationStatus>(
      world().store->authorizationStatusForEntityType(static_cast<EntityType>(type)));
}
- (void)requestFullAccessToEventsWithCompletion:
    (EKEventStoreRequestAccessCompletionHandler)completion {
  raiseIfAsked("requestFullAccess");
  world().store->requestFullAccessToEvents(completionOf(completion));
}
- (void)requestFullAccessToRemindersWithCompletion:
    (EKEventStoreRequestAccessCompletionHandler)completion {
  raiseIfAsked("requestFullAccess");
  world().store->requestFullAccessToReminders(completionOf(completion));
}
- (void)reset {
  ++world().generation;
  world().store->reset();
}

- (NSArray*)calendarsForEntityType:(EKEntityType)type {
  raiseIfAsked("calendarsForEntityType");
  NSMutableArray* const result = [NSMutableArray array];
  for (const CalendarRef& found :
       world().store->calendarsForEntityType(static_cast<EntityType>(type))) {
    [result addObject:[EKCalendar calendarWithCalendar:found]];
  }
  return result;
}
- (EKCalendar*)calendarWithIdentifier:(NSString*)identifier {
  for (const EKEntityType type : {EKEntityTypeEvent, EKEntityTypeReminder}) {
    for (EKCalendar* candidate in [self calendarsForEntityType:type]) {
      if ([[candidate calendarIdentifier] isEqualToString:identifier]) return candidate;
    }
  }
  return nil;
}
- (EKCalendar*)defaultCalendarForNewEvents {
  raiseIfAsked("defaultCalendar");
  return [EKCalendar calendarWithCalendar:world().store->defaultCalendarForNewEvents()];
}
- (EKCalendar*)defaultCalendarForNewReminders {
  raiseIfAsked("defaultCalendar");
  return [EKCalendar calendarWithCalendar:world().store->defaultCalendarForNewReminders()];
}

- (NSPredicate*)predicateForEventsWithStartDate:(NSDate*)start
                                        endDate:(NSDate*)end
                                      calendars:(NSArray*)calendars {
  if ([end compare:start] != NSOrderedDescending) {
    [NSException raise:NSInvalidArgumentException format:@"the end is not after the start"];
  }
  return [RangePredicate from:start to:end calendars:calendars ofCompleted:NO];
}
- (NSArray*)eventsMatchingPredicate:(NSPredicate*)predicate {
  raiseIfAsked("eventsMatchingPredicate");
  RangePredicate* const range = static_cast<RangePredicate*>(predicate);
  const Instant from = instant(range->_from);
  {
    const std::lock_guard guard(world().lock);
    world().ranges.emplace_back(from.time_since_epoch().count(),
                                instant(range->_to).time_since_epoch().count());
  }
  const Instant to = std::min(instant(range->_to), from + std::chrono::duration<double>(fourYears));
  NSMutableArray* const result = [NSMutableArray array];
  for (const EventRef& found :
       world().store->eventsMatchingPredicate({from, to, [range selection]})) {
    [result addObject:[EKEvent eventWithEvent:found]];
  }
  return result;
}
- (EKEvent*)eventWithIdentifier:(NSString*)identifier {
  raiseIfAsked("eventWithIdentifier");
  return [EKEvent eventWithEvent:world().store->eventWithIdentifier(text(identifier))];
}
- (EKCalendarItem*)calendarItemWithIdentifier:(NSString*)identifier {
  raiseIfAsked("calendarItemWithIdentifier");
  EKReminder* const found =
      [EKReminder reminderWithReminder:world().store->calendarItemWithIdentifier(text(identifier))];
  return found != nil ? found : static_cast<EKCalendarItem*>([self eventWithIdentifier:identifier]);
}

// What saves and removals share: the ways to fail, and the outcome.
- (BOOL)commit:(EKObject*)object
          with:(const std::function<StoreResult()>&)operation
         error:(NSError**)problem {
  if (take(&World::refusesNext)) return NO;
  const StoreResult result =
      [object isUsable] ? operation() : StoreResult::failure("The object is no longer valid.");
  if (!result && problem != nullptr) *problem = error(*result.error);
  if (result) [object rollback];
  return static_cast<bool>(result);
}
- (BOOL)saveEvent:(EKEvent*)saved span:(EKSpan)span commit:(BOOL)commit error:(NSError**)error {
  raiseIfAsked("saveEvent");
  if (span != EKSpanThisEvent || !commit) return NO;
  return [self commit:saved
                 with:[&] { return world().store->saveEvent(*event(saved)); }
                error:error];
}
- (BOOL)removeEvent:(EKEvent*)removed span:(EKSpan)span commit:(BOOL)commit error:(NSError**)error {
  raiseIfAsked("removeEvent");
  if (span != EKSpanThisEvent || !commit) return NO;
  return [self commit:removed
                 with:[&] { return world().store->removeEvent(*event(removed)); }
                error:error];
}

- (NSPredicate*)predicateForIncompleteRemindersWithDueDateStarting:(NSDate*)start
                                                            ending:(NSDate*)end
                                                         calendars:(NSArray*)calendars {
  return [RangePredicate from:start to:end calendars:calendars ofCompleted:NO];
}
- (NSPredicate*)predicateForCompletedRemindersWithCompletionDateStarting:(NSDate*)start
                                                                  ending:(NSDate*)end
                                                               calendars:(NSArray*)calendars {
  return [RangePredicate from:start to:end calendars:calendars ofCompleted:YES];
}
- (id)fetchRemindersMatchingPredicate:(NSPredicate*)predicate
                           completion:(void (^)(NSArray<EKReminder*>*))completion {
  raiseIfAsked("fetchReminders");
  RangePredicate* const range = static_cast<RangePredicate*>(predicate);
  using Kind = ReminderPredicate::Kind;
  const ReminderPredicate wanted{
      range->_isOfCompleted ? Kind::completedByCompletionDate : Kind::incompleteByDueDate,
      range->_from == nil ? std::nullopt : std::optional(instant(range->_from)),
      instant(range->_to), [range selection]};
  world().store->fetchRemindersMatchingPredicate(
      wanted, [kept = Kept(completion)](std::optional<std::vector<ReminderRef>> found) {
        NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
        NSMutableArray* const result = found ? [[NSMutableArray alloc] init] : nil;
        for (const ReminderRef& each : found.value_or(std::vector<ReminderRef>())) {
          [result addObject:[EKReminder reminderWithReminder:each]];
        }
        [pool release];
        kept.get()(result);  // without a pool: it brings its own
        pool = [[NSAutoreleasePool alloc] init];
        [result release];
        [pool release];
      });
  return [NSNumber numberWithInt:1];
}
- (BOOL)saveReminder:(EKReminder*)saved commit:(BOOL)commit error:(NSError**)error {
  raiseIfAsked("saveReminder");
  if (!commit) return NO;
  return [self commit:saved
                 with:[&] { return world().store->saveReminder(*reminder(saved)); }
                error:error];
}
- (BOOL)removeReminder:(EKReminder*)removed commit:(BOOL)commit error:(NSError**)error {
  raiseIfAsked("removeReminder");
  if (!commit) return NO;
  return [self commit:removed
                 with:[&] { return world().store->removeReminder(*reminder(removed)); }
                error:error];
}
@end
