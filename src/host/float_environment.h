// How floats round, and what becomes of denormal ones, while the filter works.
#pragma once

#include <cfenv>

// For the length of its life the calling thread, and every thread that it starts, rounds to nearest and keeps denormal
// numbers, whatever the host has set for itself: results would else depend on the host, and on Windows, whose threads
// start with the default, on which thread a row falls to. Afterwards it is again as the host had it.
class FloatEnvironment {
 public:
  FloatEnvironment() {
    std::fegetenv(&hosts_);
    std::fesetenv(FE_DFL_ENV);
  }
  ~FloatEnvironment() { std::fesetenv(&hosts_); }
  FloatEnvironment(const FloatEnvironment&) = delete;
  FloatEnvironment& operator=(const FloatEnvironment&) = delete;

 private:
  std::fenv_t hosts_;
};
