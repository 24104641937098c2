// What the sanitizers need not tell of: GNUstep and libobjc keep what they once made, and take
// their locks in either order. What the store itself keeps is counted by the stand-in.
extern "C" {

const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() {
  return "leak:libgnustep-base\nleak:libobjc\n";
}

const char* __tsan_default_suppressions();
const char* __tsan_default_suppressions() {
  return "deadlock:libgnustep-base\ndeadlock:libobjc\nrace:libgnustep-base\n";
}

}  // extern "C"
