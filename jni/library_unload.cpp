// Called by the virtual machine before it unloads the library, after it has collected the natives'
// class loader.
#include <jni.h>

#include "libalgorithm/export.h"
#include "libalgorithm/thread_pool.h"

/// Ends the pool, whose threads would otherwise run unmapped code. Waits for an effect run under
/// way, which only a native caller can have started: a class whose native is running is not
/// collected.
extern "C" ALGORITHM_API void JNI_OnUnload(JavaVM*, void*) { HALThreadPoolDestroy(); }
