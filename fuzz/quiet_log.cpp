// Stands in for the platform's log, which would only slow the fuzzers down.
#include <android/log.h>

extern "C" [[gnu::visibility("default")]] int __android_log_print(int /*priority*/,
                                                                  const char* /*tag*/,
                                                                  const char* /*format*/, ...) {
  return 0;
}
