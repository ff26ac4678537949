// A benchmark on a given number of processors.
#pragma once

#include "image/parallel.h"

#if defined(__linux__)
#include <sched.h>
#endif

// During its life the process runs on the first count processors, with a team of as many threads. Affinity, not the
// team alone, since OpenCV has threads of its own.
class Processors {
 public:
#if defined(__linux__)
  explicit Processors(int count) {
    sched_getaffinity(0, sizeof before_, &before_);
    cpu_set_t some;
    CPU_ZERO(&some);
    int taken = 0;
    for (int i = 0; i < CPU_SETSIZE && taken < count; ++i) {
      if (!CPU_ISSET(i, &before_)) continue;
      CPU_SET(i, &some);
      ++taken;
    }
    areThere_ = taken == count;
    sched_setaffinity(0, sizeof some, &some);
  }
  ~Processors() { sched_setaffinity(0, sizeof before_, &before_); }
#else
  explicit Processors(int count) : team_(count) {}
#endif
  Processors(const Processors&) = delete;
  Processors& operator=(const Processors&) = delete;

  bool areThere() const { return areThere_; }

 private:
#if defined(__linux__)
  cpu_set_t before_ = {};
#else
  Team team_;
#endif
  bool areThere_ = true;
};
