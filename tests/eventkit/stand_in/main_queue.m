// GNUstep 1.28 runs the operations of the main queue on worker threads. Here they run where the name says.
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
  // GNUstep's main thread is the first that asks, so this one asks.
  [NSThread mainThread];
  [NSOperationQueue mainQueue];
  Method method = class_getInstanceMethod([NSOperationQueue class], @selector(addOperation:));
  addToQueue = (void (*)(id, SEL, NSOperation*))method_setImplementation(method, (IMP)addOperation);
  [pool release];
}
@end
