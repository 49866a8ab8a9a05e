// What the sanitizers are to overlook in builds with them: libraries that were built without them. The thread sanitizer
// does not see their atomics; fontconfig keeps its configuration until the end of the process.

extern "C" const char* __tsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __tsan_default_suppressions() { return "race:libcairo.so\nrace:libfontconfig.so\n"; }
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig.so\n"; }
