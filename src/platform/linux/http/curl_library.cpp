#include "platform/linux/http/curl_library.h"

#include <curl/curl.h>
#include <dlfcn.h>

#include <mutex>

#include "platform/linux/threads/process_exit.h"

namespace quorvance {
namespace {

/// Null when there is no OpenSSL in the process: another TLS library ends with the process's last
/// destructors, after all exit handlers.
template <class Function>
Function* opensslFunction(const char* name) {
  void* found = dlsym(RTLD_DEFAULT, name);
  if (found == nullptr) {
    // Out of sight where the host has loaded the library for itself alone.
    void* const crypto = dlopen("libcrypto.so.3", RTLD_LAZY | RTLD_NOLOAD);
    if (crypto != nullptr) found = dlsym(crypto, name);
  }
  return reinterpret_cast<Function*>(found);
}

}  // namespace

// OpenSSL registers an exit handler in the midst of its initialisation, which frees what a thread
// there still uses. It begins with the handlers that it was given, before anything is freed: that
// covers an exit during the initialisation. Our own, registered afterwards, runs before OpenSSL's.
bool openCurlLibrary() {
  static std::mutex mutex;
  static bool isOpen = false;
  const std::lock_guard lock(mutex);
  if (isOpen) return true;
  if (auto* const atExit = opensslFunction<int(void (*)())>("OPENSSL_atexit")) {
    atExit(&handleProcessExit);
  }
  isOpen = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  if (isOpen) registerExitHandler();
  return isOpen;
}

void leaveCurlLibrary() {
  if (auto* const stopThread = opensslFunction<void()>("OPENSSL_thread_stop")) stopThread();
}

}  // namespace quorvance
