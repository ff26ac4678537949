// On Windows a program of the tests that reads or writes what it may not says so, with code and place, and fails at
// once. Without this a dialog would wait for somebody.
#if defined(_WIN32)
#include <windows.h>

#include <cstdio>

namespace {

LONG WINAPI report(EXCEPTION_POINTERS* exception) {
  const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
  HMODULE module = nullptr;
  wchar_t name[MAX_PATH] = L"?";
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     static_cast<const wchar_t*>(record.ExceptionAddress), &module);
  GetModuleFileNameW(module, name, MAX_PATH);
  const auto offset = static_cast<const char*>(record.ExceptionAddress) - reinterpret_cast<const char*>(module);
  std::fprintf(stderr, "structured exception %08lX in %ls + %llX\n", record.ExceptionCode, name,
               static_cast<unsigned long long>(offset));
  std::fflush(stderr);
  TerminateProcess(GetCurrentProcess(), 99);
  return EXCEPTION_EXECUTE_HANDLER;
}

const auto before = SetUnhandledExceptionFilter(report);

}  // namespace
#endif
