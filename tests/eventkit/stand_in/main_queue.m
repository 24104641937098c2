// What GNUstep 1.28 does otherwise than the platform, put right before main() begins: it runs the operations of the main
// queue on worker threads; the first thread that asks is its main one; and since libobjc initializes a class under its
// lock, in which GNUstep takes locks of its own, two threads that come to a class first may wait for each other.
#import <Foundation/Foundation.h>
#import <objc/runtime.h>

static void (*addToQueue)(id, SEL, NSOperation*);

static void addOperation(NSOperationQueue* self, SEL selector, NSOperation* operation) {
  if (self == [NSOperationQueue mainQueue]) {
    [operation performSelectorOnMainThread:@selector(start) withObject:nil waitUntilDone:NO];
  } else {
    addToQueue(self, selector, operation);
  }
}

@interface MainQueue : NSObject
@end

@implementation MainQueue
+ (void)load {
  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  [NSThread mainThread];
  [NSRunLoop mainRunLoop];
  [NSOperationQueue mainQueue];
  [NSNotificationCenter defaultCenter];
  [[NSNull null] performSelectorOnMainThread:@selector(self) withObject:nil waitUntilDone:YES];
  for (NSString* name in [@"NSBlockOperation NSCalendar NSCountedSet NSData NSDate NSDateComponents NSError NSException "
                          @"NSMutableArray NSMutableDictionary NSNotification NSPredicate NSTimer NSTimeZone NSURL"
           componentsSeparatedByString:@" "]) {
    [NSClassFromString(name) class];
  }
  Method method = class_getInstanceMethod([NSOperationQueue class], @selector(addOperation:));
  // By way of the one type that compilers let any function be cast to and from.
  typedef void (*Function)(void);
  addToQueue = (void (*)(id, SEL, NSOperation*))(Function)method_setImplementation(
      method, (IMP)(Function)addOperation);
  [pool release];
}
@end
