#include "batch/batch.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <list>
#include <new>
#include <optional>
#include <system_error>

#include "files/child_process.h"
#include "files/failure.h"
#include "files/target_file.h"
#include "pictures/exiftool.h"
#include "pictures/library.h"

namespace orbel {

namespace {

volatile std::sig_atomic_t interrupted = 0;

extern "C" void noteInterruption(int) { interrupted = 1; }

void catchInterruptions() {
  interrupted = 0;
  struct sigaction action {};
  action.sa_handler = noteInterruption;
  sigemptyset(&action.sa_mask);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal, &action, nullptr);
}

bool sendLine(int connection, const std::string& line) {
  return send(connection, line.data(), line.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(line.size());
}

// Both sides speak in lines of JSON.
//
// --- In the process of one file. It says what memory it needs, waits for an answer, works, has answers of exiftool
// meanwhile, tells how far it is, and says what came of it.

nlohmann::json answerTo(const nlohmann::json& question, int connection) {
  std::string line;
  char buffer[4096];
  bool open = sendLine(connection, jsonLine(question));
  while (open && (line.empty() || line.back() != '\n')) {
    const ssize_t count = read(connection, buffer, sizeof buffer);
    if (count < 0 && errno == EINTR) continue;
    open = count > 0;
    if (open) line.append(buffer, static_cast<std::size_t>(count));
  }
  if (!open) _exit(exitInterrupted);
  return nlohmann::json::parse(line);
}

Outcome workOn(const Job& job, const JobOptions& options, int connection) {
  const auto waitFor = [&](double bytes) { answerTo({{"needs", bytes}}, connection); };
  const auto askExiftool = [&](const ExiftoolRequest& request) -> ExiftoolAnswer {
    const auto answer = answerTo({{"exiftool", request.arguments}, {"seconds", request.seconds}}, connection);
    return {answer.at("status"), answer.at("text")};
  };
  const auto tellPart = [&](double part) { sendLine(connection, jsonLine({{"part", part}})); };
  try {
    return doJob(job, options, {waitFor, askExiftool, tellPart});
  } catch (const std::exception&) {
    return outcomeOf(job, Outcome::Status::Failed, failureInHand(job.input));
  }
}

[[noreturn]] void beWorker(const Job& job, const JobOptions& options, bool verbose, int connection, pid_t parent) {
  removeTemporaryOnSignals(exitInterrupted);
  endWith(parent, exitInterrupted);
  const ImageLibrary library("orbel", verbose, options.threads);
  const bool told = sendLine(connection, jsonLine(toJson(workOn(job, options, connection))));
  _exit(told ? exitGood : exitInterrupted);
}

// --- In the process that began it all.

struct Worker {
  const Job* job;
  pid_t process;
  int connection;
  double needs = 0;
  bool runs = false;
  std::string received{};
  std::optional<Outcome> outcome{};
};

class Batch {
 public:
  Batch(const std::vector<Job>& jobs, const JobOptions& work, const BatchOptions& options, Report& report)
      : jobs_(jobs), jobOptions_(work), options_(options), report_(report) {}

  ExitCode run() {
    catchInterruptions();
    while (!workers_.empty() || moreToBegin()) {
      while (workers_.size() < options_.processes && moreToBegin()) begin(jobs_[next_++]);
      listen();
      exiftool_.attend();
      if (interrupted != 0) {
        for (const Worker& worker : workers_) kill(worker.process, SIGTERM);
      }
      grantMemory();
      report_.tick();
    }
    return interrupted != 0 ? exitInterrupted : anyFailed_ ? exitFileFailed : exitGood;
  }

 private:
  bool moreToBegin() const { return next_ < jobs_.size() && interrupted == 0 && !(options_.failFast && anyFailed_); }

  void begin(const Job& job) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
      throw std::system_error(errno, std::generic_category(), "no connection to a new process");
    }
    report_.flush();  // or the new process would say it again
    const pid_t self = getpid();
    const pid_t process = fork();
    if (process == 0) {
      close(ends[0]);
      beWorker(job, jobOptions_, options_.verbose, ends[1], self);
    }
    close(ends[1]);
    if (process < 0) {
      close(ends[0]);
      throw std::system_error(errno, std::generic_category(), "no new process");
    }
    workers_.push_back({&job, process, ends[0]});
  }

  void listen() {
    std::vector<pollfd> ears;
    for (const Worker& worker : workers_) ears.push_back({worker.connection, POLLIN, 0});
    ears.push_back({exiftool_.descriptor(), POLLIN, 0});  // left out by poll when it is negative
    constexpr int milliseconds = 100;
    if (poll(ears.data(), ears.size(), milliseconds) <= 0) return;
    auto ear = ears.begin();
    for (auto worker = workers_.begin(); worker != workers_.end(); ++ear) {
      const bool ended = ear->revents != 0 && !receive(*worker);
      if (ended) finish(*worker);
      worker = ended ? workers_.erase(worker) : std::next(worker);
    }
  }

  // False at the end of what the worker has to say.
  bool receive(Worker& worker) {
    char buffer[4096];
    const ssize_t count = read(worker.connection, buffer, sizeof buffer);
    if (count < 0) return errno == EINTR;
    worker.received.append(buffer, static_cast<std::size_t>(count));
    for (std::string::size_type end = 0; (end = worker.received.find('\n')) != std::string::npos;) {
      hear(worker, nlohmann::json::parse(worker.received.substr(0, end)));
      worker.received.erase(0, end + 1);
    }
    return count > 0;
  }

  void hear(Worker& worker, const nlohmann::json& said) {
    if (said.contains("needs")) {
      worker.needs = said["needs"];
    } else if (said.contains("part")) {
      report_.tellPart(worker.job->input, said["part"]);
    } else if (said.contains("exiftool")) {
      exiftool_.ask(worker.process, {said["exiftool"], said["seconds"]});
    } else {
      worker.outcome = outcomeFrom(said);
    }
  }

  // The worker waits for it, so that it is taken however long it is.
  void passOn(pid_t process, const ExiftoolAnswer& answer) {
    for (const Worker& worker : workers_) {
      if (worker.process != process) continue;
      sendLine(worker.connection, jsonLine({{"status", answer.status}, {"text", answer.text}}));
    }
  }

  void finish(const Worker& worker) {
    close(worker.connection);
    const int status = endOf(worker.process);
    // Whoever read the picture from the standard output has had enough of it: as if this process had written it.
    const bool readerIsGone = WIFSIGNALED(status) && WTERMSIG(status) == SIGPIPE;
    if (readerIsGone && worker.job->output == pipeName) raise(SIGPIPE);
    exiftool_.forget(worker.process);
    Outcome outcome;
    if (worker.outcome) {
      outcome = *worker.outcome;
    } else {
      outcome = outcomeOf(*worker.job, Outcome::Status::Failed, whyWithoutResult(status, worker.job->input));
      if (worker.job->output != pipeName) removeLeftovers(worker.job->output, worker.process);
    }
    anyFailed_ = anyFailed_ || outcome.status == Outcome::Status::Failed;
    report_.tell(outcome);
  }

  static Failure whyWithoutResult(int status, const std::string& input) {
    if (WIFSIGNALED(status)) {
      const std::string signal = strsignal(WTERMSIG(status));
      return {input, "the work was ended by a signal: " + signal, Cause::Crashed};
    }
    if (WEXITSTATUS(status) == exitInterrupted) return {input, "interrupted", Cause::Interrupted};
    return {input, "the work ended without a result", Cause::Crashed};
  }

  // The first that asked comes first; one that is alone gets what it needs.
  void grantMemory() {
    double taken = 0;
    for (const Worker& worker : workers_) taken += worker.runs ? worker.needs : 0;
    for (Worker& worker : workers_) {
      if (worker.runs || worker.needs == 0) continue;
      if (taken > 0 && taken + worker.needs > options_.memory) return;
      worker.runs = sendLine(worker.connection, jsonLine({{"granted", worker.needs}}));
      taken += worker.needs;
    }
  }

  const std::vector<Job>& jobs_;
  const JobOptions& jobOptions_;
  const BatchOptions& options_;
  Report& report_;
  std::size_t next_ = 0;
  std::list<Worker> workers_;
  Exiftool exiftool_{[this](pid_t asker, const ExiftoolAnswer& answer) { passOn(asker, answer); }};
  bool anyFailed_ = false;
};

}  // namespace

ExitCode runBatch(const std::vector<Job>& jobs, const JobOptions& work, const BatchOptions& batch, Report& report) {
  return Batch(jobs, work, batch, report).run();
}

}  // namespace orbel
