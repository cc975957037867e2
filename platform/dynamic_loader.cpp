#include "platform/dynamic_loader.h"

#include <dlfcn.h>

#include <new>

#include "platform/device_path.h"

namespace alg {

void* loadLibrary(std::string_view path) {
  try {
    return loadLibraryOfHost(devicePath(path).c_str());
  } catch (const std::bad_alloc&) {
    dlerror();  // drops the text of an earlier, unrelated error
    return nullptr;
  }
}

void* loadLibraryOfHost(const char* path) { return dlopen(path, RTLD_NOW | RTLD_LOCAL); }

void* findSymbol(void* library, const char* name) { return dlsym(library, name); }

void keepLibraryLoaded() {
  Dl_info self;
  if (dladdr(reinterpret_cast<const void*>(&keepLibraryLoaded), &self) != 0) {
    dlopen(self.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
  }
}

const char* loaderError() {
  const char* const text = dlerror();
  return text != nullptr ? text : "no memory, or a symbol without a value";
}

}  // namespace alg
