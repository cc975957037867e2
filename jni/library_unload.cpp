// What the virtual machine calls before it unloads the library, when it has collected the class
// loader of the natives.
#include <jni.h>

#include "libalgorithm/export.h"
#include "libalgorithm/thread_pool.h"

/// The pool's threads would run code that is gone. Waits for an effect run under way, which only a
/// native caller can have started: a class whose native runs is not collected.
extern "C" ALGORITHM_API void JNI_OnUnload(JavaVM*, void*) { HALThreadPoolDestroy(); }
