#include "image/parallel.h"

#include <climits>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#if defined(__linux__)
#include <sched.h>
#endif

namespace {

#if defined(__EMSCRIPTEN__) && !defined(__EMSCRIPTEN_PTHREADS__)
constexpr bool hasThreads = false;
#else
constexpr bool hasThreads = true;
#endif

int processors() {
#if defined(__linux__)
  // The C++ library counts all of the machine's, also those that this process has been kept away from.
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof allowed, &allowed) == 0) return std::clamp(CPU_COUNT(&allowed), 1, 1024);
#endif
  const unsigned count = std::thread::hardware_concurrency();  // 0 where nobody knows
  return hasThreads ? static_cast<int>(std::clamp(count, 1U, 1024U)) : 1;
}

}  // namespace

// The team's threads and the loop that they have in hand. All of it under one lock: shares are few and long.
struct Team::Crew {
  Crew(int threadCount, int limitOfTeams) : size(hasThreads ? threadCount : 1), limit(limitOfTeams) {}

  ~Crew() {
    {
      const std::lock_guard lock(mutex);
      ending = true;
    }
    wake.notify_all();
    for (std::thread& thread : threads) thread.join();
  }
  Crew(const Crew&) = delete;
  Crew& operator=(const Crew&) = delete;

  // Threads come with the first loop that has shares for them.
  void start(int wanted) {
    const int most = std::min(wanted, size);
    threads.reserve(static_cast<std::size_t>(most));
    while (static_cast<int>(threads.size()) + 1 < std::min(most, size)) {
      try {
        threads.emplace_back([this] { serve(); });
      } catch (const std::system_error&) {
        size = static_cast<int>(threads.size()) + 1;
      }
    }
  }

  void run(int count, void (*loop)(void*, int), void* loopContext) {
    start(count);
    std::unique_lock lock(mutex);
    share = loop;
    context = loopContext;
    shares = count;
    next = 0;
    unfinished = count;
    failure = nullptr;
    failed = count;
    if (count > 1) wake.notify_all();
    takeShares(lock);
    done.wait(lock, [&] { return unfinished == 0; });
    if (failure) std::rethrow_exception(failure);
  }

  void serve() {
    std::unique_lock lock(mutex);
    while (true) {
      wake.wait(lock, [&] { return next < shares || ending; });
      if (ending) return;
      takeShares(lock);
    }
  }

  void takeShares(std::unique_lock<std::mutex>& lock);

  int size;   // with the caller's thread
  int limit;  // of teams within
  std::vector<std::thread> threads;
  std::mutex mutex;
  std::condition_variable wake;
  std::condition_variable done;
  void (*share)(void*, int) = nullptr;
  void* context = nullptr;
  int shares = 0;
  int next = 0;
  int unfinished = 0;
  std::exception_ptr failure;
  int failed = 0;  // the share that failure is of
  bool ending = false;
};

namespace {

// Of the calling thread: the innermost team, and whether a share of a loop runs on it.
thread_local void* current = nullptr;
thread_local bool isInShare = false;

void runAlone(int count, void (*share)(void*, int), void* context) {
  std::exception_ptr failure;
  for (int i = 0; i < count; ++i) {
    try {
      share(context, i);
    } catch (...) {
      if (!failure) failure = std::current_exception();
    }
  }
  if (failure) std::rethrow_exception(failure);
}

}  // namespace

void Team::Crew::takeShares(std::unique_lock<std::mutex>& lock) {
  while (next < shares) {
    const int mine = next++;
    lock.unlock();
    std::exception_ptr mishap;
    isInShare = true;
    try {
      share(context, mine);
    } catch (...) {
      mishap = std::current_exception();
    }
    isInShare = false;
    lock.lock();
    if (mishap && mine < failed) {
      failure = mishap;
      failed = mine;
    }
    if (--unfinished == 0) done.notify_one();
  }
}

Team::Team() : Team(0) {}

Team::Team(int threads) : outer_(static_cast<Crew*>(current)) {
  const bool anyNumber = threads < 1;
  if (isInShare || (anyNumber && outer_ != nullptr)) return;
  const int limit = outer_ == nullptr ? INT_MAX : outer_->limit;
  crew_ = anyNumber ? std::make_unique<Crew>(processors(), INT_MAX)
                    : std::make_unique<Crew>(std::min(threads, limit), std::min(threads, limit));
  current = crew_.get();
}

Team::~Team() {
  if (crew_ != nullptr) current = outer_;
}

int threadsHere() {
  if (isInShare) return 1;
  return current == nullptr ? processors() : static_cast<Team::Crew*>(current)->size;
}

void runShares(int count, void (*share)(void* context, int i), void* context) {
  if (count == 1) return share(context, 0);
  if (isInShare) return runAlone(count, share, context);
  const Team team;
  static_cast<Team::Crew*>(current)->run(count, share, context);
}
