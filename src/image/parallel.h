// The one way to be parallel: loops whose shares run on several threads, all of which have ended, or sleep in a team
// that the caller holds, when the loop returns.
//
// - Nothing outlives its caller: no runtime keeps threads for later, so a process may fork, unload this code, and run
//   parallel loops of its own as it likes.
// - Threads that wait sleep. A share that no thread has taken yet is taken by the calling thread, so on a busy machine
//   a loop never waits for a thread that gets no processor.
// - What a loop gives doesn't depend on the number of threads: shares touch nothing that another share writes.
// - A loop within a share runs on the share's own thread alone.
// - An exception ends its own share; once all others have ended it is thrown on to the caller: of several, that of the
//   first share.
// - Where the system refuses a thread, and where it has none, the others do its work.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

// The threads that loops of the calling thread run on while the object lives. A loop without one has a team for
// itself, which costs some 20 microseconds a thread: whoever runs several loops holds one around them.
class Team {
 public:
  // As many threads as the process may use processors. Inside another team's life: that team, nothing new.
  Team();
  // So many, the caller's own among them; it bounds teams within, too. 0 or less: as above.
  explicit Team(int threads);
  ~Team();
  Team(const Team&) = delete;
  Team& operator=(const Team&) = delete;

 private:
  friend int threadsHere();
  friend void runShares(int, void (*)(void*, int), void*);
  struct Crew;

  std::unique_ptr<Crew> crew_;
  Crew* outer_;
};

// The threads that a loop begun here is shared among; 1 within a share.
int threadsHere();

// share(context, i) for each i below count, on the threads of the team.
void runShares(int count, void (*share)(void* context, int i), void* context);

// work(share, first, end) for as many shares as there are threads, at most count: each a contiguous run of the indices
// below count, of one length but for one index.
template <typename Work>
void eachShare(int shares, int count, Work&& work) {
  struct Context {
    std::remove_reference_t<Work>& work;
    int shares;
    int count;

    int begin(int share) const { return static_cast<int>(std::int64_t{count} * share / shares); }
  } context{work, shares, count};
  runShares(
      shares,
      [](void* all, int share) {
        const Context& c = *static_cast<Context*>(all);
        c.work(share, c.begin(share), c.begin(share + 1));
      },
      &context);
}

// work(i) for each i from 0 to count - 1.
template <typename Work>
void eachIndex(int count, Work&& work) {
  if (count < 1) return;
  eachShare(std::min(threadsHere(), count), count, [&](int, int first, int end) {
    for (int i = first; i < end; ++i) work(i);
  });
}

// line(y * step) for each row y: the offset of its first sample, for kernels over raw planes whose rows are step floats
// apart.
template <typename Line>
void eachRow(int height, int step, Line&& line) {
  eachIndex(height, [&](int y) { line(std::ptrdiff_t{y} * step); });
}
