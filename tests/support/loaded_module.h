// A module as a host loads it, and what it leaves in the process; on Linux and on Windows.
#pragma once

#include <chrono>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string>
#include <thread>

#if defined(_WIN32)
#include <windows.h>
// Wants windows.h before it.
#include <tlhelp32.h>
#else
#include <dlfcn.h>
#endif

// Loaded for the length of its life.
class LoadedModule {
 public:
  explicit LoadedModule(const std::string& path)
#if defined(_WIN32)
      : handle_(LoadLibraryW(std::filesystem::path(path).make_preferred().c_str())) {
    if (handle_ == nullptr) throw std::runtime_error(path + ": error " + std::to_string(GetLastError()));
  }
  ~LoadedModule() { FreeLibrary(handle_); }
#else
      : handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) throw std::runtime_error(dlerror());
  }
  ~LoadedModule() { dlclose(handle_); }
#endif
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;

  // Null when the module exports no such name.
  template <typename Procedure>
  Procedure procedure(const char* name) const {
#if defined(_WIN32)
    return reinterpret_cast<Procedure>(reinterpret_cast<void*>(GetProcAddress(handle_, name)));
#else
    return reinterpret_cast<Procedure>(dlsym(handle_, name));
#endif
  }

  static bool isLoaded(const std::string& path) {
#if defined(_WIN32)
    return GetModuleHandleW(std::filesystem::path(path).make_preferred().c_str()) != nullptr;
#else
    void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) dlclose(handle);
    return handle != nullptr;
#endif
  }

 private:
#if defined(_WIN32)
  HMODULE handle_;
#else
  void* handle_;
#endif
};

// Of this process.
inline int threadCount() {
#if defined(_WIN32)
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry = {};
  entry.dwSize = sizeof entry;
  int count = 0;
  for (BOOL more = Thread32First(snapshot, &entry); more != 0; more = Thread32Next(snapshot, &entry)) {
    if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++count;
  }
  CloseHandle(snapshot);
  return count;
#else
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return static_cast<int>(std::distance(begin(tasks), end(tasks)));
#endif
}

// A thread that has been joined may stay listed for a moment.
inline int threadCountOnceSettled(int expected) {
  for (int i = 0; i < 200 && threadCount() != expected; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  return threadCount();
}
