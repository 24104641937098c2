// Objective-C exceptions in C++ functions. To libstdc++ those of libobjc are foreign: here its
// catch clauses learn their class and their object. Linked with --wrap for the functions named
// __wrap_.
#include <cxxabi.h>
#include <unwind.h>

#include <typeinfo>
#include <vector>

#include "tests/eventkit/objective_c/libobjc.h"

namespace {

constexpr _Unwind_Exception_Class objectiveC = 0x474e55434f424a43;  // "GNUCOBJC"

struct ObjectiveCException {
  _Unwind_Exception base;
  id value;
};
struct Caught {
  _Unwind_Exception* exception;  // null for one of C++
  bool isRethrown;
};
thread_local id thrown;
thread_local std::vector<Caught> caughtExceptions;

// Whether a clause for the class of that name, or for any, takes what is being thrown.
bool takes(const std::type_info* type, void** object, const char* className) {
  if (*type != typeid(abi::__foreign_exception) || thrown == nullptr) return false;
  if (className != nullptr) {
    const Class wanted = objc_lookUpClass(className);
    Class candidate = thrown->isa;
    while (candidate != nullptr && candidate != wanted) candidate = class_getSuperclass(candidate);
    if (candidate == nullptr) return false;
  }
  *object = thrown;
  return true;
}

}  // namespace

// The type infos of catch clauses, by the names that clang gives them.
namespace gnustep::libobjc {

struct __objc_class_type_info : std::type_info {
  ~__objc_class_type_info() override;
  bool __do_catch(const std::type_info* type, void** object, unsigned) const override {
    return takes(type, object, name());
  }
};
__objc_class_type_info::~__objc_class_type_info() = default;

struct __objc_id_type_info final : std::type_info {
  __objc_id_type_info() : std::type_info("id") {}
  bool __do_catch(const std::type_info* type, void** object, unsigned) const override {
    return takes(type, object, nullptr);
  }
};

}  // namespace gnustep::libobjc

extern "C" {

gnustep::libobjc::__objc_id_type_info __objc_id_type_info;

_Unwind_Reason_Code __gxx_personality_v0(int, _Unwind_Action, _Unwind_Exception_Class,
                                         _Unwind_Exception*, _Unwind_Context*);
_Unwind_Reason_Code __gnustep_objcxx_personality_v0(int version, _Unwind_Action action,
                                                    _Unwind_Exception_Class type,
                                                    _Unwind_Exception* exception,
                                                    _Unwind_Context* context) {
  thrown = type == objectiveC ? reinterpret_cast<ObjectiveCException*>(exception)->value : nullptr;
  return __gxx_personality_v0(version, action, type, exception, context);
}

void* __real___cxa_begin_catch(void* exception);
void __real___cxa_end_catch();
void __real___cxa_rethrow();
_Unwind_Reason_Code __real__Unwind_Resume_or_Rethrow(_Unwind_Exception* exception);

void* __wrap___cxa_begin_catch(void* pointer) {
  auto* exception = static_cast<_Unwind_Exception*>(pointer);
  const bool isObjectiveC = exception->exception_class == objectiveC;
  caughtExceptions.push_back({isObjectiveC ? exception : nullptr, false});
  if (!isObjectiveC) return __real___cxa_begin_catch(pointer);
  return reinterpret_cast<ObjectiveCException*>(exception)->value;
}

void __wrap___cxa_end_catch() {
  const Caught caught = caughtExceptions.back();
  caughtExceptions.pop_back();
  if (caught.exception == nullptr) {
    __real___cxa_end_catch();
  } else if (!caught.isRethrown) {
    _Unwind_DeleteException(caught.exception);
  }
}

_Unwind_Reason_Code __wrap__Unwind_Resume_or_Rethrow(_Unwind_Exception* exception) {
  for (Caught& caught : caughtExceptions) {
    if (caught.exception == exception) caught.isRethrown = true;
  }
  return __real__Unwind_Resume_or_Rethrow(exception);
}

void __wrap___cxa_rethrow() {
  if (!caughtExceptions.empty() && caughtExceptions.back().exception != nullptr) {
    __wrap__Unwind_Resume_or_Rethrow(caughtExceptions.back().exception);
  }
  __real___cxa_rethrow();
}

}  // extern "C"
