// Libraries of the device that are loaded at run time.
#pragma once

#include <string_view>

namespace alg {

/// Loads the library at a device path and binds every symbol at once, so that an incompatible
/// library fails here and not in the middle of a frame. Null when it can't be loaded; loaderError()
/// tells why, and a later call tries again.
///
/// A loaded library stays for the life of the process: it may have started threads or registered
/// functions that run when a thread or the process ends, and all of those would run unmapped code
/// after a dlclose().
void* loadLibrary(std::string_view path);

/// The same for a path of the machine that the library runs on, which is taken as it is.
void* loadLibraryOfHost(const char* path);

/// The address of a library's symbol; null when it has none.
void* findSymbol(void* library, const char* name);

/// Keeps this library itself loaded for the life of the process, whoever unloads it.
void keepLibraryLoaded();

/// What went wrong in this thread's last call of these functions. Valid until its next one.
const char* loaderError();

}  // namespace alg
