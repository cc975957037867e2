#include "shifted_clock.h"

#include <ctime>

std::atomic<int> clockShift;

extern "C" int __real_clock_gettime(clockid_t, timespec*);
extern "C" int __wrap_clock_gettime(clockid_t clock, timespec* time) {
  const int result = __real_clock_gettime(clock, time);
  if (clock == CLOCK_REALTIME) time->tv_sec += clockShift;
  return result;
}
