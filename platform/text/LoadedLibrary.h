#pragma once

#include <dlfcn.h>

#include <type_traits>

namespace ns {

/// A shared library that is loaded when it is needed and not linked: a program that never needs it
/// should not pay for starting it.  It stays loaded.
class LoadedLibrary {
 public:
  /// By the name with which programs are linked to it, "libfontconfig.so.1".
  explicit LoadedLibrary(const char* name) : handle_(dlopen(name, RTLD_NOW | RTLD_LOCAL)) {
    isComplete_ = handle_ != nullptr;
  }

  /// Whether it is installed and had every function asked for.
  [[nodiscard]] bool isComplete() const { return isComplete_; }

  /// Finds a function by its name; none where it is missing.
  template <class Function>
  void find(const char* name, Function*& function) {
    function = isComplete_ ? reinterpret_cast<Function*>(dlsym(handle_, name)) : nullptr;
    isComplete_ = isComplete_ && function != nullptr;
  }

 private:
  void* handle_;
  bool isComplete_;
};

}  // namespace ns
