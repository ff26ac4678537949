// One exiftool for many pictures: starting it costs more than what it does. It runs in the process that began the
// batch; the pictures' own processes ask for it.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orbel {

struct ExiftoolRequest {
  // An argument a line, so none holds a line end. Files are named by descriptors of the asker's, which lives until it
  // has its answer (/proc/PID/fd/N): exiftool reads codes, pipes and blanks into other names.
  std::vector<std::string> arguments;
  double seconds = 0;  // after which it is taken to hang
};

struct ExiftoolAnswer {
  enum class Status { Done, Failed, NotInstalled };

  Status status = Status::Failed;
  std::string text;  // all that it wrote; why not, when it failed. Done says nothing of its success.
};

using AskExiftool = std::function<ExiftoolAnswer(const ExiftoolRequest&)>;

// The process, which starts with the first request. One that dies or hangs fails the request in hand, and the next has
// a new one.
class Exiftool {
 public:
  using Tell = std::function<void(pid_t asker, const ExiftoolAnswer&)>;

  explicit Exiftool(Tell tell) : tell_(std::move(tell)) {}
  ~Exiftool() { end(); }
  Exiftool(const Exiftool&) = delete;
  Exiftool& operator=(const Exiftool&) = delete;

  void ask(pid_t asker, const ExiftoolRequest& request) { waiting_.push_back({asker, request}); }

  // What this process has asked for is told no more.
  void forget(pid_t asker);

  // To be polled for reading; negative when there is nothing to come.
  int descriptor() const { return connection_; }

  // Tells the answer that has come in, and begins the next request. Never waits; to be called now and then, and when
  // there is something to read.
  void attend();

 private:
  struct Asked {
    pid_t asker;
    ExiftoolRequest request;
  };

  void start();
  void begin(const Asked& asked);
  void listen();
  void settle(ExiftoolAnswer::Status status, const std::string& text);
  int end();

  Tell tell_;
  std::deque<Asked> waiting_;
  std::optional<Asked> inHand_;
  std::chrono::steady_clock::time_point deadline_;
  std::string received_;
  std::string endMark_;  // of the answer to what is in hand
  unsigned number_ = 0;
  pid_t process_ = -1;
  int connection_ = -1;
  bool notInstalled_ = false;
};

}  // namespace orbel
