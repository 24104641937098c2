// Lets libobjc load and call what clang compiles for the runtime "gnustep-1.9", which is the one
// that has ARC. Linked with --wrap=__objc_exec_class.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tests/eventkit/objective_c/libobjc.h"

namespace {

struct Category {
  const char* name;
};
struct SymbolTable {
  unsigned long selectorCount;
  void* selectors;
  unsigned short classCount, categoryCount;
  Category* definitions[1];
};
struct Module {
  unsigned long version, size;
  const char* name;
  SymbolTable* symbols;
};
struct Slot {
  Class owner, cachedFor;
  const char* types;
  int version;
  IMP method;
};

constexpr unsigned long versionOfGcc = 8;

// clang keeps the protocols that a module saw in one category that is none.
bool definesClasses(const SymbolTable& symbols) {
  if (symbols.classCount > 0 || symbols.categoryCount > 1) return true;
  return symbols.categoryCount == 1 &&
         std::strstr(symbols.definitions[0]->name, "AnotherHack") == nullptr;
}

}  // namespace

extern "C" {

void __real___objc_exec_class(Module* module);

// Selectors, names of classes and strings are laid out alike in both versions; classes are not.
void __wrap___objc_exec_class(Module* module) {
  if (module->version > versionOfGcc) {
    if (definesClasses(*module->symbols)) {
      std::fprintf(stderr, "%s defines classes, so it needs -fobjc-runtime=gcc\n", module->name);
      std::abort();
    }
    module->version = versionOfGcc;
    module->size = sizeof(Module);
  }
  __real___objc_exec_class(module);
}

// The caller takes the method at once, so a few slots a thread are enough.
Slot* objc_msg_lookup_sender(id* receiver, SEL selector, id) {
  static thread_local Slot slots[8];
  static thread_local unsigned next = 0;
  Slot& slot = slots[next++ % 8];
  slot.method = objc_msg_lookup(*receiver, selector);
  return &slot;
}

}  // extern "C"
