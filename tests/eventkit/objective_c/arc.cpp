// The functions that clang calls for ARC, on top of retain, release and autorelease.
#include "tests/eventkit/objective_c/libobjc.h"

using tidemark::objective_c::isBlock;
using tidemark::objective_c::isHeapBlock;
using tidemark::objective_c::send;

extern "C" {

id objc_retain(id object) {
  if (object == nullptr) return nullptr;
  if (!isBlock(object)) return send(object, "retain");
  if (isHeapBlock(object)) _Block_copy(object);
  return object;
}

void objc_release(id object) {
  if (object == nullptr) return;
  if (isBlock(object)) {
    _Block_release(object);
  } else {
    send(object, "release");
  }
}

id objc_autorelease(id object) {
  if (object == nullptr || (isBlock(object) && !isHeapBlock(object))) return object;
  return send(object, "autorelease");
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
  return send(send(reinterpret_cast<id>(objc_lookUpClass("NSAutoreleasePool")), "alloc"), "init");
}
void objc_autoreleasePoolPop(void* pool) {
  send(static_cast<id>(pool), "release");
}

}  // extern "C"
