// Between the store's values and Foundation's.
//
// For sources of this folder: Objective-C++ with ARC. Any thread; the caller has a pool.
#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>
#include <string_view>

#include "store/types.h"

NS_ASSUME_NONNULL_BEGIN

namespace tidemark {

// All of the text, zero bytes too. What UTF-8 cannot hold (half of a surrogate pair) is replaced.
std::string textOf(NSString* _Nullable text);
std::optional<std::string> optionalText(NSString* _Nullable text);
NSString* toNSString(std::string_view text);

std::optional<Instant> instantOf(NSDate* _Nullable date);
NSDate* toNSDate(Instant instant);

std::optional<DateComponents> componentsOf(NSDateComponents* _Nullable components);
// Exactly what is given, in the Gregorian calendar: EventKit refuses components in any other, and
// the user's own may be another.
NSDateComponents* toNSDateComponents(const DateComponents& components);

// Runs `work` in a pool of its own. The reason of the exception that it raised; absent when it
// raised none.
template <typename Work>
std::optional<std::string> exceptionOf(const Work& work) {
  @autoreleasepool {
    @try {
      work();
      return std::nullopt;
    } @catch (NSException* exception) {
      NSString* const reason = exception.reason;
      return textOf(reason != nil ? reason : exception.name);
    }
  }
}

}  // namespace tidemark

NS_ASSUME_NONNULL_END
