#include "platform/linux/facts/dynamic_library.h"

#include <dlfcn.h>

namespace quorvance {

DynamicLibrary DynamicLibrary::open(std::span<const char* const> names) {
  for (const char* const name : names) {
    if (void* const handle = dlopen(name, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE)) {
      return DynamicLibrary(handle);
    }
  }
  return DynamicLibrary(nullptr);
}

DynamicLibrary DynamicLibrary::loaded(const char* name) {
  return DynamicLibrary(dlopen(name, RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD | RTLD_NODELETE));
}

void* DynamicLibrary::symbol(const char* name) const {
  return handle_ == nullptr ? nullptr : dlsym(handle_, name);
}

}  // namespace quorvance
