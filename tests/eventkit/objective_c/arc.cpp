// The functions that clang calls for ARC, on top of retain, release and autorelease.
#include "tests/eventkit/objective_c/libobjc.h"

using tidemark::objective_c::isBlock;
using tidemark::objective_c::isHeapBlock;
using tidemark::objective_c::send;

namespace {

// Looked up once: registering takes the runtime's lock.
struct Selectors {
  SEL retain = sel_registerName("retain");
  SEL release = sel_registerName("release");
  SEL autorelease = sel_registerName("autorelease");
  SEL alloc = sel_registerName("alloc");
  SEL init = sel_registerName("init");
};
const Selectors& selectors() {
  static const Selectors instance;
  return instance;
}

}  // namespace

extern "C" {

id objc_retain(id object) {
  if (object == nullptr) return nullptr;
  if (!isBlock(object)) return send(object, selectors().retain);
  if (isHeapBlock(object)) _Block_copy(object);
  return object;
}

void objc_release(id object) {
  if (object == nullptr) return;
  if (isBlock(object)) {
    _Block_release(object);
  } else {
    send(object, selectors().release);
  }
}

id objc_autorelease(id object) {
  if (object == nullptr || (isBlock(object) && !isHeapBlock(object))) return object;
  return send(object, selectors().autorelease);
}

id objc_retainBlock(id block) {
  return static_cast<id>(_Block_copy(block));
}
id objc_retainAutorelease(id object) {
  return objc_autorelease(objc_retain(object));
}
// The shortcuts around the pool that Apple's runtime takes for returned objects are not taken.
id objc_retainAutoreleaseReturnValue(id object) {
  return objc_autorelease(objc_retain(object));
}
id objc_autoreleaseReturnValue(id object) {
  return objc_autorelease(object);
}
id objc_retainAutoreleasedReturnValue(id object) {
  return objc_retain(object);
}
id objc_unsafeClaimAutoreleasedReturnValue(id object) {
  return object;
}

void objc_storeStrong(id* place, id value) {
  id const before = *place;
  if (before == value) return;
  objc_retain(value);
  *place = value;
  objc_release(before);
}

void* objc_autoreleasePoolPush() {
  return send(send(reinterpret_cast<id>(objc_lookUpClass("NSAutoreleasePool")), selectors().alloc),
              selectors().init);
}
void objc_autoreleasePoolPop(void* pool) {
  send(static_cast<id>(pool), selectors().release);
}

}  // extern "C"
