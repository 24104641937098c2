#import <Foundation/Foundation.h>
#include <crt_externs.h>

#include "host/process_image.h"

namespace tidemark {

std::optional<std::string> executablePath() {
  @autoreleasepool {
    NSString* const path = NSBundle.mainBundle.executablePath;
    if (path == nil) return std::nullopt;
    return path.fileSystemRepresentation;
  }
}

std::span<const char* const> commandLine() {
  // NSProcessInfo has them as text, which an argument need not be.
  return {*_NSGetArgv(), static_cast<std::size_t>(*_NSGetArgc())};
}

}  // namespace tidemark
