// Stands between the module's objects and the allocator (see CMakeLists.txt for what is wrapped), counts and fails.
#include "programs/allocation_faults.h"

#include <atomic>
#include <cstddef>
#include <new>

namespace {

std::atomic<int> allocations{0};
std::atomic<int> firstToFail{-1};
std::atomic<int> endOfFaults{-1};

bool fails() {
  const int index = allocations.fetch_add(1);
  return index >= firstToFail && index < endOfFaults;
}

}  // namespace

void failAllocations(AllocationFaults faults) {
  firstToFail = faults.first;
  endOfFaults = faults.first < 0 ? -1 : faults.first + faults.count;
  allocations = 0;
}

int allocationCount() { return allocations; }

using std::size_t;

// The linker makes these names. Of those that the module does not call there is no wrapper: it would not load with one
// that it began to call.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {
void* __real_malloc(size_t);
void* __real__Znwm(size_t);
void* __real__Znam(size_t);
void* __real__ZnamRKSt9nothrow_t(size_t, const std::nothrow_t&);
void* __real__ZnamSt11align_val_tRKSt9nothrow_t(size_t, std::align_val_t, const std::nothrow_t&);

void* __wrap_malloc(size_t n) { return fails() ? nullptr : __real_malloc(n); }
void* __wrap__Znwm(size_t n) { return fails() ? throw std::bad_alloc() : __real__Znwm(n); }
void* __wrap__Znam(size_t n) { return fails() ? throw std::bad_alloc() : __real__Znam(n); }
void* __wrap__ZnamRKSt9nothrow_t(size_t n, const std::nothrow_t& t) {
  return fails() ? nullptr : __real__ZnamRKSt9nothrow_t(n, t);
}
void* __wrap__ZnamSt11align_val_tRKSt9nothrow_t(size_t n, std::align_val_t a, const std::nothrow_t& t) {
  return fails() ? nullptr : __real__ZnamSt11align_val_tRKSt9nothrow_t(n, a, t);
}
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
