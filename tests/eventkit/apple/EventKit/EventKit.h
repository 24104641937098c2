// What the store uses of EventKit, declared in our own words, with the nullability and the
// availability that its documentation gives.
#pragma once

#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>

#ifndef API_AVAILABLE
#define API_AVAILABLE(...)
#endif
// The stand-in keeps its state in the objects; what the store is compiled against has none.
#ifndef EVENTKIT_STATE
#define EVENTKIT_STATE(...)
#endif

#pragma clang assume_nonnull begin

@class EKCalendar, EKEventStore;

typedef NS_ENUM(NSUInteger, EKEntityType) { EKEntityTypeEvent, EKEntityTypeReminder };
typedef NS_ENUM(NSInteger, EKAuthorizationStatus) {
  EKAuthorizationStatusNotDetermined = 0,
  EKAuthorizationStatusRestricted,
  EKAuthorizationStatusDenied,
  EKAuthorizationStatusFullAccess,
  EKAuthorizationStatusWriteOnly
};
typedef NS_ENUM(NSInteger, EKEventAvailability) {
  EKEventAvailabilityNotSupported = -1,
  EKEventAvailabilityBusy = 0,
  EKEventAvailabilityFree,
  EKEventAvailabilityTentative,
  EKEventAvailabilityUnavailable
};
typedef NS_ENUM(NSInteger, EKSourceType) {
  EKSourceTypeLocal = 0,
  EKSourceTypeExchange,
  EKSourceTypeCalDAV,
  EKSourceTypeMobileMe,
  EKSourceTypeSubscribed,
  EKSourceTypeBirthdays
};
typedef NS_ENUM(NSInteger, EKSpan) { EKSpanThisEvent, EKSpanFutureEvents };

typedef void (^EKEventStoreRequestAccessCompletionHandler)(BOOL granted, NSError* _Nullable error);

extern NSString* const EKEventStoreChangedNotification;

@interface EKObject : NSObject
EVENTKIT_STATE(unsigned _generation; BOOL _isChanged;)
- (void)rollback;
@end

@interface EKSource : EKObject
EVENTKIT_STATE(void* _source;)
@property(nonatomic, readonly) NSString* title;
@property(nonatomic, readonly) EKSourceType sourceType;
@end

@interface EKCalendar : EKObject
EVENTKIT_STATE(void* _calendar; CGColorRef _color;)
@property(nonatomic, readonly) NSString* calendarIdentifier;
@property(nonatomic, copy) NSString* title;
@property(null_unspecified, nonatomic, strong) EKSource* source;
@property(nonatomic, readonly) BOOL allowsContentModifications;
@property(nullable, nonatomic) CGColorRef CGColor;
@end

@interface EKParticipant : EKObject
EVENTKIT_STATE(NSString* _name; NSURL * _url;)
@property(nonatomic, readonly) NSURL* URL;
@property(nullable, nonatomic, readonly) NSString* name;
@end

@interface EKCalendarItem : EKObject
@property(null_unspecified, nonatomic, strong) EKCalendar* calendar;
@property(nonatomic, readonly) NSString* calendarItemIdentifier;
@property(null_unspecified, nonatomic, copy) NSString* title;
@property(nullable, nonatomic, copy) NSString* location;
@property(nullable, nonatomic, copy) NSString* notes;
@property(nullable, nonatomic, copy) NSURL* URL;
@property(nullable, nonatomic, readonly) NSDate* lastModifiedDate;
@property(nonatomic, readonly) BOOL hasRecurrenceRules;
@property(nullable, nonatomic, readonly) NSArray<EKParticipant*>* attendees;
@end

@interface EKEvent : EKCalendarItem
EVENTKIT_STATE(void* _event;)
+ (EKEvent*)eventWithEventStore:(EKEventStore*)eventStore;
@property(null_unspecified, nonatomic, readonly) NSString* eventIdentifier;
@property(nonatomic, getter=isAllDay) BOOL allDay;
@property(null_unspecified, nonatomic, copy) NSDate* startDate;
@property(null_unspecified, nonatomic, copy) NSDate* endDate;
@property(nonatomic) EKEventAvailability availability;
@property(null_unspecified, nonatomic, readonly) NSDate* occurrenceDate;
@end

@interface EKReminder : EKCalendarItem
EVENTKIT_STATE(void* _reminder;)
+ (EKReminder*)reminderWithEventStore:(EKEventStore*)eventStore;
@property(nullable, nonatomic, copy) NSDateComponents* dueDateComponents;
@property(nonatomic, getter=isCompleted) BOOL completed;
@property(nonatomic) NSUInteger priority;
@end

@interface EKEventStore : NSObject
+ (EKAuthorizationStatus)authorizationStatusForEntityType:(EKEntityType)entityType;
- (void)requestFullAccessToEventsWithCompletion:
    (EKEventStoreRequestAccessCompletionHandler)completion API_AVAILABLE(macos(14.0));
- (void)requestFullAccessToRemindersWithCompletion:
    (EKEventStoreRequestAccessCompletionHandler)completion API_AVAILABLE(macos(14.0));
- (void)reset;

- (NSArray<EKCalendar*>*)calendarsForEntityType:(EKEntityType)entityType;
- (nullable EKCalendar*)calendarWithIdentifier:(NSString*)identifier;
@property(nullable, nonatomic, readonly) EKCalendar* defaultCalendarForNewEvents;
- (nullable EKCalendar*)defaultCalendarForNewReminders;

- (NSPredicate*)predicateForEventsWithStartDate:(NSDate*)startDate
                                        endDate:(NSDate*)endDate
                                      calendars:(nullable NSArray<EKCalendar*>*)calendars;
- (NSArray<EKEvent*>*)eventsMatchingPredicate:(NSPredicate*)predicate;
- (nullable EKEvent*)eventWithIdentifier:(NSString*)identifier;
- (nullable EKCalendarItem*)calendarItemWithIdentifier:(NSString*)identifier;
- (BOOL)saveEvent:(EKEvent*)event
             span:(EKSpan)span
           commit:(BOOL)commit
            error:(NSError* _Nullable* _Nullable)error;
- (BOOL)removeEvent:(EKEvent*)event
               span:(EKSpan)span
             commit:(BOOL)commit
              error:(NSError* _Nullable* _Nullable)error;

- (NSPredicate*)predicateForIncompleteRemindersWithDueDateStarting:(nullable NSDate*)startDate
                                                            ending:(nullable NSDate*)endDate
                                                         calendars:(nullable NSArray<EKCalendar*>*)
                                                                       calendars;
- (NSPredicate*)predicateForCompletedRemindersWithCompletionDateStarting:(nullable NSDate*)startDate
                                                                  ending:(nullable NSDate*)endDate
                                                               calendars:
                                                                   (nullable NSArray<EKCalendar*>*)
                                                                       calendars;
- (id)fetchRemindersMatchingPredicate:(NSPredicate*)predicate
                           completion:
                               (void (^)(NSArray<EKReminder*>* _Nullable reminders))completion;
- (BOOL)saveReminder:(EKReminder*)reminder
              commit:(BOOL)commit
               error:(NSError* _Nullable* _Nullable)error;
- (BOOL)removeReminder:(EKReminder*)reminder
                commit:(BOOL)commit
                 error:(NSError* _Nullable* _Nullable)error;
@end

#pragma clang assume_nonnull end
