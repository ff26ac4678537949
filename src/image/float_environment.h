// How floats round, and what becomes of denormal ones, while the filter works.
#pragma once

#if defined(__x86_64__)
#include <xmmintrin.h>
#else
#include <cfenv>
#endif

// For the length of its life the calling thread, and every thread that it starts, rounds to nearest and keeps denormal
// numbers, whatever the host has set for itself: results would else depend on the host, and on Windows, whose threads
// start with the default, on which thread a row falls to. Afterwards it is again as the host had it.
class FloatEnvironment {
 public:
#if defined(__x86_64__)  // the register itself: not every C library's default environment sets it
  FloatEnvironment() : hosts_(_mm_getcsr()) { _mm_setcsr(asAfterReset); }
  ~FloatEnvironment() { _mm_setcsr(hosts_); }
#else
  FloatEnvironment() {
    std::fegetenv(&hosts_);
    std::fesetenv(FE_DFL_ENV);
  }
  ~FloatEnvironment() { std::fesetenv(&hosts_); }
#endif
  FloatEnvironment(const FloatEnvironment&) = delete;
  FloatEnvironment& operator=(const FloatEnvironment&) = delete;

 private:
#if defined(__x86_64__)
  static constexpr unsigned asAfterReset = 0x1F80;  // of MXCSR
  unsigned hosts_;
#else
  std::fenv_t hosts_;
#endif
};
