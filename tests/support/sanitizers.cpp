// What the leak check of sanitized programs is not to report: the OpenMP run time keeps what it has allocated for its threads.
extern "C" const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() { return "leak:libomp.so\n"; }
