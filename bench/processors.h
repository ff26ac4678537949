// A benchmark on a given number of processors.
#pragma once

#include <omp.h>

#if defined(__linux__)
#include <sched.h>
#endif

// During its life the process runs on the first count processors, with a team of as many threads. Affinity, not the
// team alone, since one of the blurs always asks for four threads.
class Processors {
 public:
  explicit Processors(int count) : threads_(omp_get_max_threads()) {
#if defined(__linux__)
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
    apply(some, count);
#else
    omp_set_num_threads(count);
#endif
  }
  ~Processors() {
#if defined(__linux__)
    apply(before_, threads_);
#else
    omp_set_num_threads(threads_);
#endif
  }
  Processors(const Processors&) = delete;
  Processors& operator=(const Processors&) = delete;

  bool areThere() const { return areThere_; }

 private:
#if defined(__linux__)
  // The runtime's idle threads keep the processors that they began with, so they have to go.
  static void apply(const cpu_set_t& processors, int threads) {
    omp_pause_resource_all(omp_pause_hard);
    sched_setaffinity(0, sizeof processors, &processors);
    omp_set_num_threads(threads);
  }
  cpu_set_t before_ = {};
#endif
  int threads_;
  bool areThere_ = true;
};
