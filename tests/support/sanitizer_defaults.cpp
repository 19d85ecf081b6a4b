// The sanitizers' options, built into every test program and helper, so that
// running a test by hand judges it exactly as the test script does.
// Environment variables still override them.

#if defined(__SANITIZE_ADDRESS__)
// Built together with UndefinedBehaviorSanitizer; any finding fails the run.
extern "C" const char *__asan_default_options() { return "detect_leaks=1:abort_on_error=1"; }
extern "C" const char *__ubsan_default_options() { return "print_stacktrace=1:halt_on_error=1"; }
#endif

#if defined(__SANITIZE_THREAD__)
extern "C" const char *__tsan_default_options() { return "halt_on_error=1:second_deadlock_stack=1"; }

// Cyclone is not built with ThreadSanitizer, so the sanitizer cannot see
// the ordering that Cyclone's own atomics give its data: races reported
// inside it are not ours to judge. Its locks are still watched, together
// with ours, for deadlocks.
extern "C" const char *__tsan_default_suppressions() { return "race:libddsc.so\n"; }
#endif
