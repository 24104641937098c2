// Blocks, whose layout the compiler fixes (clang's "Block Implementation Specification").
#include <atomic>
#include <cstdlib>
#include <cstring>

#include "tests/eventkit/objective_c/libobjc.h"

extern "C" {
id objc_retain(id object);
void objc_release(id object);
void* _NSConcreteStackBlock[64];
void* _NSConcreteGlobalBlock[64];
}

namespace {

// In a block's flags: the count, in steps of two, and what the block is.
enum Flags : int {
  countMask = 0xfffe,
  one = 2,
  onHeap = 1 << 24,
  hasHelpers = 1 << 25,
  isGlobal = 1 << 28
};

// The kind of a captured field, for the two helpers below.
enum Kind : int { blockKind = 7, variableKind = 8, calledByVariable = 128 };

struct Descriptor {
  unsigned long reserved, size;
  void (*copy)(void* to, const void* from);
  void (*dispose)(void* block);
};
struct Block {
  void* isa;
  std::atomic<int> flags;
  int reserved;
  void (*invoke)();
  Descriptor* descriptor;
};
// A variable that is declared __block.
struct Variable {
  void* isa;
  std::atomic<Variable*> forwarding;
  std::atomic<int> flags;
  unsigned size;
  void (*keep)(Variable* to, Variable* from);
  void (*destroy)(Variable* variable);
};

template <typename T>
bool has(const T* counted, int flag) {
  return (counted->flags.load() & flag) != 0;
}

// True for the release that ends it.
template <typename T>
bool release(T* counted) {
  return has(counted, onHeap) && ((counted->flags.fetch_sub(one) - one) & countMask) == 0;
}

template <typename T>
T* copyToHeap(T* from, std::size_t size, int count) {
  auto* copy = static_cast<T*>(std::malloc(size));
  std::memcpy(static_cast<void*>(copy), static_cast<void*>(from), size);
  copy->flags.store((from->flags.load() & ~countMask) | onHeap | count);
  return copy;
}

IMP toImp(id (*method)(id, SEL, void*)) {
  return reinterpret_cast<IMP>(reinterpret_cast<void*>(method));
}

// Blocks on the heap are real objects, for collections and for copy.
Class heapBlockClass() {
  static const Class type = [] {
    const Class made = objc_allocateClassPair(objc_lookUpClass("NSObject"), "HeapBlock", 0);
    const auto keep = [](id block, SEL, void*) -> id {
      return static_cast<id>(_Block_copy(block));
    };
    const auto release = [](id block, SEL, void*) -> id {
      _Block_release(block);
      return nullptr;
    };
    class_addMethod(made, sel_registerName("retain"), toImp(keep), "@@:");
    class_addMethod(made, sel_registerName("copy"), toImp(keep), "@@:");
    class_addMethod(made, sel_registerName("copyWithZone:"), toImp(keep), "@@:^v");
    class_addMethod(made, sel_registerName("release"), toImp(release), "v@:");
    objc_registerClassPair(made);
    return made;
  }();
  return type;
}

// The compiler points blocks elsewhere at these two symbols: they become copies of the class.
__attribute__((constructor)) void makeBlockClasses() {
  constexpr std::size_t sizeOfClass = 13 * sizeof(void*);
  objc_object probe{heapBlockClass()};
  objc_msg_lookup(&probe, sel_registerName("copy"));  // has the runtime install the methods
  std::memcpy(_NSConcreteStackBlock, probe.isa, sizeOfClass);
  std::memcpy(_NSConcreteGlobalBlock, probe.isa, sizeOfClass);
}

}  // namespace

namespace tidemark::objective_c {

bool isBlock(id object) {
  const void* isa = object->isa;
  return isa == _NSConcreteStackBlock || isa == _NSConcreteGlobalBlock || isa == heapBlockClass();
}
bool isHeapBlock(id object) {
  return isBlock(object) && has(reinterpret_cast<Block*>(object), onHeap);
}

}  // namespace tidemark::objective_c

extern "C" {

void* _Block_copy(const void* pointer) {
  auto* block = static_cast<Block*>(const_cast<void*>(pointer));
  if (block == nullptr || has(block, isGlobal)) return block;
  if (has(block, onHeap)) {
    block->flags.fetch_add(one);
    return block;
  }
  Block* copy = copyToHeap(block, block->descriptor->size, one);
  copy->isa = heapBlockClass();
  if (has(block, hasHelpers)) block->descriptor->copy(copy, block);
  return copy;
}

void _Block_release(const void* pointer) {
  auto* block = static_cast<Block*>(const_cast<void*>(pointer));
  if (block == nullptr || !release(block)) return;
  if (has(block, hasHelpers)) block->descriptor->dispose(block);
  std::free(block);
}

// A captured field is copied, or goes, with its block.
void _Block_object_assign(void* place, const void* captured, int kind) {
  void* field = const_cast<void*>(captured);
  void*& target = *static_cast<void**>(place);
  if ((kind & calledByVariable) != 0) {
    target = field;
  } else if ((kind & variableKind) != 0) {
    auto* from = static_cast<Variable*>(field);
    Variable* current = from->forwarding.load();
    if (has(current, onHeap)) {
      current->flags.fetch_add(one);
    } else {
      current = copyToHeap(from, from->size, 2 * one);
      current->forwarding.store(current);
      if (has(from, hasHelpers)) current->keep(current, from);
      from->forwarding.store(current);
    }
    target = current;
  } else if ((kind & blockKind) == blockKind) {
    target = _Block_copy(field);
  } else {
    target = objc_retain(static_cast<id>(field));
  }
}

void _Block_object_dispose(const void* captured, int kind) {
  void* field = const_cast<void*>(captured);
  if ((kind & calledByVariable) != 0) return;
  if ((kind & variableKind) != 0) {
    Variable* current = static_cast<Variable*>(field)->forwarding.load();
    if (!release(current)) return;
    if (has(current, hasHelpers)) current->destroy(current);
    std::free(current);
  } else if ((kind & blockKind) == blockKind) {
    _Block_release(field);
  } else {
    objc_release(static_cast<id>(field));
  }
}

}  // extern "C"
