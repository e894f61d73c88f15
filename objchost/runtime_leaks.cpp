// Linked into every Objective-C test program of this folder.
//
// The GCC runtime and GNUstep allocate their class tables, selector names,
// caches and per-thread state once and leave them for the end of the
// process, which is how an Objective-C runtime works, not a leak of the
// adapter's. When these apps run under LeakSanitizer (the sanitized test
// run), anything allocated through either library is left out of its
// report; the adapter's own C++ allocations still count.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libobjc.so\nleak:libgnustep-base.so\n";
}
