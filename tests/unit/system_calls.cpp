#include "system_calls.h"

#include <pthread.h>

#include <cerrno>
#include <functional>
#include <mutex>
#include <new>
#include <string>
#include <utility>

#include "convert/frame_convert.h"
#include "effect/pipeline_names.h"
#include "kernels/curve_map.h"
#include "log_capture.h"

std::atomic<int> threadsUntilFailure{-1}, waits, wakeUps;
std::atomic<std::size_t> refusedBlock{0};
thread_local int objectsUntilFailure = -1;
void (*onLookup)() = [] {};
unsigned char watched[512];

namespace {

thread_local const char* failingCall;
thread_local const volatile uint8_t* heldFlag;
std::mutex stripMutex;
std::vector<std::thread::id> stripThreads;

bool isWatched(const void* object) {
  return std::less_equal<>()(&watched[0], object) &&
         std::less<>()(object, &watched[0] + sizeof watched);
}

/// A call with the object that it concerns, null for a thread. Returns what it says in the end.
int traceCall(const std::string& name, const void* object, const std::function<int()>& call) {
  if (failingCall == nullptr || (object != nullptr && !isWatched(object))) return call();
  const bool holding = name == "cond_signal" || name == "mutex_unlock";
  addLine(name + (holding && heldFlag != nullptr && *heldFlag != 0 ? " held" : ""));
  const int result = call();
  if (name != failingCall) return result;
  errno = ENOENT;
  return EAGAIN;
}

void noteStrip() {
  const std::lock_guard lock(stripMutex);
  stripThreads.push_back(std::this_thread::get_id());
}

}  // namespace

void traceCalls(const char* failing, const volatile uint8_t* held) {
  failingCall = failing, heldFlag = held;
}

std::vector<std::thread::id> takeStripThreads() {
  const std::lock_guard lock(stripMutex);
  return std::exchange(stripThreads, {});
}

#define REAL_(name) __real_##name
#define REAL(name) REAL_(name)
#define WRAP_(type, name, parameters)       \
  extern "C" type __real_##name parameters; \
  extern "C" type __wrap_##name parameters
#define WRAP(type, name, parameters) WRAP_(type, name, parameters)

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
  if (isWatched(c) && ++waits <= wakeUps) return 0;
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

#define FIND_PIPELINE_NAME _ZN3alg16findPipelineNameESt17basic_string_viewIcSt11char_traitsIcEE
WRAP(const alg::Operation*, FIND_PIPELINE_NAME, (std::string_view name)) {
  onLookup();
  return REAL(FIND_PIPELINE_NAME)(name);
}
#define WRAP_STRIP(name, parameters, ...) \
  WRAP(void, name, parameters) {          \
    noteStrip();                          \
    __real_##name(__VA_ARGS__);           \
  }
WRAP_STRIP(_ZN3alg11decodeFrameENS_9RowFormatEPhRKNS_6PlanesIKhEEii,
           (alg::RowFormat f, uint8_t* p, const alg::Planes<const uint8_t>& planes, int w, int h),
           f, p, planes, w, h)
WRAP_STRIP(_ZN3alg11encodeFrameENS_9RowFormatEPKhRKNS_6PlanesIhEEii,
           (alg::RowFormat f, const uint8_t* p, const alg::Planes<uint8_t>& planes, int w, int h),
           f, p, planes, w, h)
WRAP_STRIP(_ZN3alg9mapCurvesEPKhPhmRKNS_6CurvesE,
           (const uint8_t* src, uint8_t* dst, std::size_t n, const alg::Curves& c), src, dst, n, c)
