// Debian's libobjc.so.4 (GCC's runtime) as the C++ files of this folder call it. Its headers are
// for Objective-C alone.
#pragma once

#include <cstddef>

using Class = struct objc_class*;
struct objc_object {
  Class isa;
};
using id = objc_object*;
using SEL = const struct objc_selector*;
using IMP = id (*)(id, SEL, ...);

extern "C" {
IMP objc_msg_lookup(id receiver, SEL selector);
SEL sel_registerName(const char* name);
Class objc_lookUpClass(const char* name);
Class class_getSuperclass(Class type);
Class objc_allocateClassPair(Class superclass, const char* name, std::size_t extraBytes);
void objc_registerClassPair(Class type);
unsigned char class_addMethod(Class type, SEL selector, IMP implementation, const char* types);

void* _Block_copy(const void* block);
void _Block_release(const void* block);
}

namespace tidemark::objective_c {

// [receiver selector]
inline id send(id receiver, SEL selector) {
  using Method = id (*)(id, SEL);
  return reinterpret_cast<Method>(objc_msg_lookup(receiver, selector))(receiver, selector);
}

// Blocks are objects with a count of their own.
bool isBlock(id object);
bool isHeapBlock(id object);

}  // namespace tidemark::objective_c
