// What the thread sanitizer is to overlook in builds with it: libraries that were built without it, whose atomics it does
// not see.

extern "C" const char* __tsan_default_suppressions();

extern "C" const char* __tsan_default_suppressions() { return "race:libcairo.so\nrace:libfontconfig.so\n"; }
