// What the thread sanitizer must not look at: the library of the loopback server is built without
// it, so that the sanitizer does not see how the library guards its own statics.

extern "C" const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions() {
  return "called_from_lib:libcpp-httplib.so\n";
}
