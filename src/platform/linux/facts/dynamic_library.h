#pragma once

#include <span>

namespace quorvance {

/// A library of the system that may be missing, opened while the process runs. It stays in the
/// process: what it registered there may still run. Immutable.
class DynamicLibrary {
 public:
  /// The first of these names that can be opened. Runs the library's constructors, so never in a
  /// host call.
  static DynamicLibrary open(std::span<const char* const> names);
  /// Only if somebody has loaded it already.
  static DynamicLibrary loaded(const char* name);

  bool isOpen() const { return handle_ != nullptr; }

  /// Points `function` at the library's function of that name; false when it has none.
  template <class Function>
  bool bind(Function*& function, const char* name) const {
    function = reinterpret_cast<Function*>(symbol(name));
    return function != nullptr;
  }

 private:
  explicit DynamicLibrary(void* handle) : handle_(handle) {}
  void* symbol(const char* name) const;

  void* handle_;
};

}  // namespace quorvance
