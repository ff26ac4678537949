// How far a run is, told on the thread that began it, which may call it off.
#pragma once

#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>

// Thrown on by loops that were called off.
struct Cancelled {};

class Progress {
 public:
  // Is told the part that is done, 0 to 1, and gives false to call the run off. Called on this thread alone.
  using Tell = std::function<bool(double done)>;

  // work is the whole run's, in what add takes: taps of a filter, or what takes as long.
  Progress(double work, Tell tell) : work_(work), tell_(std::move(tell)) {}

  // From any thread, for work that has been done.
  void add(double work) {
    double before = done_.load(std::memory_order_relaxed);
    while (!done_.compare_exchange_weak(before, before + work)) {
    }
    if (std::this_thread::get_id() == thread_) tellWhatIsNew(before + work);
  }

  // True once the run has been called off: loops leave out what they have not begun.
  bool isCancelled() const { return cancelled_; }

  // Throws Cancelled when the run has been called off.
  void check() const {
    if (cancelled_) throw Cancelled();
  }

  // From here on the run can't be called off: its target is being written.
  void commit() { committed_ = true; }

 private:
  void tellWhatIsNew(double done) {
    constexpr double step = 0.005;  // of the whole: telling must not cost anything
    constexpr double most = 5e8;    // taps, a twentieth of a second or so: whoever calls a run off must not wait
    if (done < told_ + std::min(step * work_, most)) return;
    told_ = done;
    const double part = work_ > 0 ? done / work_ : 1;
    if (!tell_(part < 1 ? part : 1) && !committed_) cancelled_ = true;
  }

  const double work_;
  const Tell tell_;
  const std::thread::id thread_ = std::this_thread::get_id();
  std::atomic<double> done_{0};
  std::atomic<bool> cancelled_{false};
  bool committed_ = false;
  double told_ = 0;
};
