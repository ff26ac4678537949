#include "pictures/exiftool.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

#include "files/child_process.h"

namespace orbel {

namespace {

using Status = ExiftoolAnswer::Status;

constexpr pid_t nobody = -1;
constexpr int noSuchProgram = 127;  // as shells end with

[[noreturn]] void becomeExiftool(int connection, pid_t parent) {
  // What goes wrong is said in the same stream: the answer tells why there is no result.
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(connection, stream);
  setpgid(0, 0);
  umask(S_IRWXG | S_IRWXO);  // its files are for the asker, who gives them their permissions
  // It would wait for ever for more requests of a process that was killed.
  endWith(parent, noSuchProgram);
  execlp("exiftool", "exiftool", "-stay_open", "True", "-@", "-", nullptr);
  _exit(noSuchProgram);
}

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

}  // namespace

void Exiftool::forget(pid_t asker) {
  for (Asked& asked : waiting_) asked.asker = asked.asker == asker ? nobody : asked.asker;
  // Exiftool can't be told to stop. Its answer is read, and goes nowhere.
  if (inHand_ && inHand_->asker == asker) inHand_->asker = nobody;
}

void Exiftool::attend() {
  if (inHand_) listen();
  while (!inHand_ && !waiting_.empty()) {
    const Asked asked = waiting_.front();
    waiting_.pop_front();
    if (asked.asker != nobody) begin(asked);
  }
}

void Exiftool::start() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
    throw std::system_error(errno, std::generic_category(), "no connection to exiftool");
  }
  const pid_t self = getpid();
  process_ = fork();
  if (process_ == 0) becomeExiftool(ends[1], self);
  const int error = errno;
  if (process_ > 0) setpgid(process_, process_);  // whichever of the two comes first
  close(ends[1]);
  connection_ = ends[0];
  if (process_ < 0) {
    end();
    throw std::system_error(error, std::generic_category(), "no new process");
  }
}

void Exiftool::begin(const Asked& asked) {
  inHand_ = asked;
  received_.clear();
  if (notInstalled_) return settle(Status::NotInstalled, "");
  try {
    if (process_ < 0) start();
  } catch (const std::system_error& error) {
    return settle(Status::Failed, error.what());
  }
  const std::string number = std::to_string(++number_);
  endMark_ = "{ready" + number + "}\n";
  std::string lines;
  for (const std::string& argument : asked.request.arguments) lines += argument + "\n";
  lines += "-execute" + number + "\n";
  using Clock = std::chrono::steady_clock;
  deadline_ =
      Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(asked.request.seconds));
  // It has read all earlier ones, so there is room for this. That it is gone shows when its answer is awaited.
  send(connection_, lines.data(), lines.size(), MSG_NOSIGNAL);
}

void Exiftool::listen() {
  char buffer[4096];
  ssize_t count = 0;
  while ((count = recv(connection_, buffer, sizeof buffer, MSG_DONTWAIT)) > 0 || (count < 0 && errno == EINTR)) {
    if (count > 0) received_.append(buffer, static_cast<std::size_t>(count));
  }
  const bool ended = count == 0 || (errno != EAGAIN && errno != EWOULDBLOCK);
  if (endsWith(received_, endMark_)) {
    settle(Status::Done, received_.substr(0, received_.size() - endMark_.size()));
  } else if (ended) {
    const int status = end();
    notInstalled_ = WIFEXITED(status) && WEXITSTATUS(status) == noSuchProgram;
    settle(notInstalled_ ? Status::NotInstalled : Status::Failed, "it ended before it had answered");
  } else if (std::chrono::steady_clock::now() > deadline_) {
    end();
    settle(Status::Failed, "it did not answer in time");
  }
}

void Exiftool::settle(Status status, const std::string& text) {
  const pid_t asker = inHand_->asker;
  inHand_.reset();
  if (asker != nobody) tell_(asker, {status, text});
}

// Returns what it ended with, as of waitpid.
int Exiftool::end() {
  if (connection_ >= 0) close(connection_);
  connection_ = -1;
  int status = 0;
  if (process_ > 0) {
    kill(-process_, SIGKILL);  // with all that it has started: it may be somebody's script around the true one
    status = endOf(process_);
  }
  process_ = -1;
  return status;
}

}  // namespace orbel
