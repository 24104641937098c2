// GNUstep and libobjc keep what they once made; the leak checker need not tell. What the store
// keeps is counted by the stand-in.
extern "C" {

const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() {
  return "leak:libgnustep-base\nleak:libobjc\n";
}

}  // extern "C"
