#include "system_calls.h"

#include <pthread.h>

#include <cerrno>
#include <functional>
#include <mutex>
#include <new>
#include <string>
#include <utility>

#include "libalgorithm/effect_pipeline.h"
#include "log_capture.h"

std::atomic<int> threadsUntilFailure{-1}, waits;
std::atomic<std::size_t> refusedBlock{0};
thread_local int objectsUntilFailure = -1;
void (*onLookup)() = [] {};

namespace {

struct Range {
  std::uintptr_t first = 0, size = 0;
  bool holds(const void* address) const {
    return reinterpret_cast<std::uintptr_t>(address) - first < size;
  }
};

struct Traced {
  Range object;
  std::string failing;
  const volatile uint8_t* held;
};
thread_local const Traced* traced;

std::mutex stripMutex;
std::vector<std::thread::id> stripThreads;
std::atomic<int> wakeUps;
Range sleepers;

/// A call with the object that it concerns, null for a thread. Returns what it says in the end.
int traceCall(const std::string& name, const void* object, const std::function<int()>& call) {
  const Traced* const trace = traced;
  if (trace == nullptr || (object != nullptr && !trace->object.holds(object))) return call();
  const bool holding = name == "cond_signal" || name == "mutex_unlock";
  addLine(name + (holding && trace->held != nullptr && *trace->held != 0 ? " held" : ""));
  const int result = call();
  if (trace->failing != name) return result;
  errno = ENOENT;
  return EAGAIN;
}

void noteStrip() {
  const std::lock_guard lock(stripMutex);
  stripThreads.push_back(std::this_thread::get_id());
}

}  // namespace

CallTrace::CallTrace(const void* object, std::size_t size, const char* failing,
                     const volatile uint8_t* held) {
  traced = new Traced{{reinterpret_cast<std::uintptr_t>(object), size}, failing, held};
}
CallTrace::~CallTrace() { delete std::exchange(traced, nullptr); }

void wakeUpForNothing(const void* object, std::size_t size, int times) {
  sleepers = {reinterpret_cast<std::uintptr_t>(object), size};
  waits = 0, wakeUps = times;
}

std::vector<std::thread::id> takeStripThreads() {
  const std::lock_guard lock(stripMutex);
  return std::exchange(stripThreads, {});
}

#define WRAP(type, name, parameters)        \
  extern "C" type __real_##name parameters; \
  extern "C" type __wrap_##name parameters

#define WRAP_OBJECT_CALL(name, parameters, object, ...)                                            \
  WRAP(int, pthread_##name, parameters) {                                                          \
    return traceCall(#name, object, [&] { return __real_pthread_##name(object, ##__VA_ARGS__); }); \
  }
WRAP_OBJECT_CALL(mutex_init, (pthread_mutex_t * m, const pthread_mutexattr_t* a), m, a)
WRAP_OBJECT_CALL(mutex_destroy, (pthread_mutex_t * m), m)
WRAP_OBJECT_CALL(mutex_lock, (pthread_mutex_t * m), m)
WRAP_OBJECT_CALL(mutex_unlock, (pthread_mutex_t * m), m)
WRAP_OBJECT_CALL(cond_init, (pthread_cond_t * c, const pthread_condattr_t* a), c, a)
WRAP_OBJECT_CALL(cond_destroy, (pthread_cond_t * c), c)
WRAP_OBJECT_CALL(cond_signal, (pthread_cond_t * c), c)
WRAP_OBJECT_CALL(cond_broadcast, (pthread_cond_t * c), c)

WRAP(int, pthread_create,
     (pthread_t * id, const pthread_attr_t* attributes, void* (*entry)(void*), void* argument)) {
  return traceCall("create", nullptr, [=] {
    if (threadsUntilFailure >= 0 && threadsUntilFailure-- == 0) return EAGAIN;
    return __real_pthread_create(id, attributes, entry, argument);
  });
}
WRAP(int, pthread_join, (pthread_t id, void** result)) {
  return traceCall("join", nullptr, [=] { return __real_pthread_join(id, result); });
}
WRAP(int, pthread_cond_wait, (pthread_cond_t * c, pthread_mutex_t* m)) {
  const bool watched = sleepers.holds(c);
  if (watched && ++waits <= wakeUps) return 0;
  return __real_pthread_cond_wait(c, m);
}

WRAP(void*, malloc, (std::size_t size)) {
  return size != 0 && size == refusedBlock ? nullptr : __real_malloc(size);
}
WRAP(void*, _Znwm, (std::size_t size)) {  // operator new
  if (objectsUntilFailure == 0) throw std::bad_alloc();
  if (objectsUntilFailure > 0) --objectsUntilFailure;
  return __real__Znwm(size);
}

WRAP(EffectTypeInfo, _Z14effectTypeInitPKcii, (const char* name, int width, int height)) {
  onLookup();
  return __real__Z14effectTypeInitPKcii(name, width, height);
}
#define WRAP_STRIP(name, parameters, ...) \
  WRAP(void, name, parameters) {          \
    noteStrip();                          \
    __real_##name(__VA_ARGS__);           \
  }
WRAP_STRIP(_Z7YUV2RGBPKvS0_Pv, (const void* in, const void* param, void* out), in, param, out)
WRAP_STRIP(_Z7RGB2YUVPKvS0_Pv, (const void* in, const void* param, void* out), in, param, out)
WRAP_STRIP(_Z10PrettyBluePhS_ii, (unsigned char* s, unsigned char* d, int w, int h), s, d, w, h)
