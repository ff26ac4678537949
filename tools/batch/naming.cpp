#include "batch/naming.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <set>

#include "files/failure.h"

namespace orbel {

namespace fs = std::filesystem;

namespace {

enum class Target { Beside, InPlace, File, Folder, Pattern, Pipe };

// What can't be looked at, such as a loop of links, is neither; writing there will say why.
bool isFolder(const std::string& name) {
  std::error_code unknown;
  return fs::is_directory(name, unknown);
}
bool isThere(const std::string& name) {
  std::error_code unknown;
  return fs::exists(name, unknown);
}

Target targetOf(const NamingArguments& a, bool several) {
  if (a.inPlace && a.output) throw SettingsError("--in-place and -o exclude each other");
  if (a.inPlace && a.extension) throw SettingsError("--in-place and --ext exclude each other");
  // The input is always as new as itself; done again, it would be equalized twice.
  if (a.inPlace && a.update) throw SettingsError("--in-place and -u exclude each other");
  if (a.inPlace) return Target::InPlace;
  if (!a.output) return Target::Beside;
  const std::string& output = *a.output;
  if (output.empty()) throw SettingsError("-o: the name is empty");
  if (output == pipeName && several) throw SettingsError("-o -: the standard output takes one picture");
  if (output == pipeName) return Target::Pipe;
  if (output.find("%s") != std::string::npos) return Target::Pattern;
  if (output.back() == '/' || isFolder(output)) return Target::Folder;
  if (!several) return Target::File;
  if (isThere(output) || findFormat(extensionOf(output)) != nullptr) {
    throw SettingsError("-o " + output + ": several inputs need a folder or a pattern with %s");
  }
  return Target::Folder;
}

std::string withoutExtension(const std::string& name) { return fs::path(name).replace_extension().string(); }

constexpr const char* resultSuffix = "_orbel";

// The name of an earlier run's result beside its input, without the suffix; empty when it is none.
std::string sourceOf(const std::string& file) {
  const fs::path path(file);
  const std::string stem = path.stem().string();
  const std::string suffix = resultSuffix;
  if (stem.size() <= suffix.size() || stem.compare(stem.size() - suffix.size(), suffix.size(), suffix) != 0) return "";
  return (path.parent_path() / stem.substr(0, stem.size() - suffix.size())).string();
}

// The same for every name of a file.
std::string identityOf(const std::string& file) {
  std::error_code unknown;
  const fs::path resolved = fs::weakly_canonical(file, unknown);
  return (unknown ? fs::absolute(file).lexically_normal() : resolved).string();
}

// Each of the placeholders from a place on replaced by the text.
std::string filled(std::string pattern, const std::string& placeholder, const std::string& text, std::size_t from = 0) {
  for (std::size_t at = from; (at = pattern.find(placeholder, at)) != std::string::npos; at += text.size()) {
    pattern.replace(at, placeholder.size(), text);
  }
  return pattern;
}

// The extension first: a name may hold what looks like its placeholder.
std::string filled(const std::string& pattern, const Input& input) {
  const std::string extension = fs::path(input.file).extension().string();
  const std::string bare = extension.empty() ? "" : extension.substr(1);
  return filled(filled(pattern, "%e", bare, pattern.rfind('/') + 1), "%s", withoutExtension(input.below));
}

// The extension as it is written in the name, with its point.
std::string suffixFor(const Input& input, const NamingArguments& a, Job& job) {
  if (a.extension) return "." + *a.extension;
  const FileFormat* const format = findFormat(extensionOf(input.file));
  if (format != nullptr && !format->isWritten()) {
    job.notes.push_back(format->name + " files can be read only; comes back as TIFF");
    return ".tif";
  }
  return fs::path(input.file).extension().string();
}

Job jobFor(const Input& input, const NamingArguments& a, Target target) {
  Job job;
  job.input = input.file;
  job.overwrite = a.overwrite || target == Target::InPlace;
  job.update = a.update && target != Target::Pipe;
  job.makesFolder = target == Target::Folder || target == Target::Pattern;
  job.overwriteRecipe = a.overwrite || a.update;
  const std::string output = a.output.value_or("");
  switch (target) {
    case Target::Pipe:
      job.output = pipeName;
      job.extension = extensionOf("x" + suffixFor(input, a, job));
      return job;
    case Target::InPlace:
      job.output = input.file;
      break;
    case Target::Beside:
      job.output = withoutExtension(input.file) + resultSuffix + suffixFor(input, a, job);
      break;
    case Target::Folder:
      job.output = (fs::path(output) / withoutExtension(input.below)).string() + suffixFor(input, a, job);
      break;
    case Target::Pattern:
      job.output = filled(output, input);
      // The pattern's own extension counts: a point in the name doesn't begin one.
      if (!a.extension && !extensionOf(output).empty()) break;
      job.output = filled(withoutExtension(output), input) + suffixFor(input, a, job);
      break;
    case Target::File:
      job.output = output;
      if (extensionOf(output).empty() && a.extension) {
        job.extension = *a.extension;
        return job;
      }
      break;
  }
  job.extension = extensionOf(job.output);
  return job;
}

bool isBelow(const std::string& file, const std::string& folder) { return file.rfind(folder + "/", 0) == 0; }

// The folder that all outputs go to or below; empty where each goes where its input is.
std::string folderOf(const NamingArguments& a, Target target) {
  if (target == Target::Folder) return *a.output;
  if (target != Target::Pattern) return "";
  const fs::path folder = fs::path(a.output->substr(0, a.output->find("%s"))).parent_path();
  return folder.empty() ? "." : folder.string();
}

// What earlier runs of the same kind have left among the inputs.
class Results {
 public:
  Results(const Inputs& inputs, const NamingArguments& a, Target target, bool recursive)
      : target_(target), recursive_(recursive) {
    for (const Input& input : inputs.files) names_.insert(withoutExtension(input.file));
    if (!recursive) return;
    if (const std::string folder = folderOf(a, target); !folder.empty()) folder_ = identityOf(folder);
    for (const Input& input : inputs.files) {
      if (target != Target::Pattern) break;
      const std::string output = identityOf(jobFor(input, a, target).output);
      if (output != identityOf(input.file)) outputs_.insert(output);
    }
  }

  // Why the input is taken for one; empty when it isn't. Beside their originals, results are known by their names, when
  // the folder is taken or the original by the same wildcard.
  std::string reasonToLeave(const Input& input) const {
    const std::string source = target_ == Target::Beside ? sourceOf(input.file) : "";
    const bool isNamedSo = !source.empty() && (recursive_ || names_.count(source) != 0);
    if (isNamedSo || outputs_.count(identityOf(input.file)) != 0) return "is a result itself";
    return recursive_ && isInFolder(input) ? "lies where results go" : "";
  }

 private:
  bool isInFolder(const Input& input) const {
    if (folder_.empty() || input.below.size() >= input.file.size()) return false;
    const std::string given = identityOf(input.file.substr(0, input.file.size() - input.below.size()));
    return isBelow(folder_, given) && isBelow(identityOf(input.file), folder_);
  }

  Target target_;
  bool recursive_;
  std::set<std::string> names_;    // of all inputs, without extensions
  std::set<std::string> outputs_;  // of a pattern
  std::string folder_;
};

// Refuses outputs that several files would have, before any of them is made.
void requireDistinctOutputs(const std::vector<Job>& jobs) {
  std::map<std::string, std::vector<const Job*>> writers;
  for (const Job& job : jobs) writers[identityOf(job.output)].push_back(&job);
  std::size_t shared = 0;
  std::string first;
  for (const auto& [output, all] : writers) {
    if (all.size() < 2 || ++shared > 1) continue;
    for (const Job* job : all) first += (first.empty() ? "" : job == all.back() ? " and " : ", ") + job->input;
    first += " would all become " + all.front()->output;
  }
  if (shared == 0) return;
  const std::string more = shared > 1 ? ", and " + std::to_string(shared - 1) + " more are as short of names" : "";
  throw SettingsError(first + more + "; %e in a pattern keeps the extension in the name, as in -o 'FOLDER/%s-%e.tif'");
}

}  // namespace

Plan planJobs(const Inputs& inputs, const NamingArguments& a, bool recursive) {
  const bool several = inputs.files.size() > 1 || recursive;
  const Target target = targetOf(a, several);
  const Results results(inputs, a, target, recursive);
  Plan plan;
  std::set<std::string> read;                                       // without results of earlier runs
  std::map<std::pair<std::string, std::string>, std::string> done;  // from what to what, and under which name
  for (const auto& [folder, reason] : inputs.unreadable) {
    Job job;
    job.input = folder;
    plan.outcomes.push_back(outcomeOf(job, Outcome::Status::Failed, Failure(folder, reason, Cause::Unreadable)));
  }
  for (const Input& input : inputs.files) {
    if (input.file == pipeName && (inputs.files.size() > 1 || !a.output || (target == Target::Pipe && !a.extension))) {
      throw SettingsError("the standard input is read alone, and needs -o; -o - needs --ext");
    }
    Job job = jobFor(input, a, target);
    if (const std::string reason = results.reasonToLeave(input); !reason.empty()) {
      plan.outcomes.push_back(outcomeOf(job, Outcome::Status::Skipped, Failure(input.file, reason, Cause::OwnResult)));
      continue;
    }
    const std::string identity = *read.insert(identityOf(input.file)).first;
    if (const auto [same, isNew] = done.emplace(std::pair(identity, identityOf(job.output)), input.file); !isNew) {
      const Failure twice(input.file, "is an input already, as " + same->second, Cause::OutputTaken);
      plan.outcomes.push_back(outcomeOf(job, Outcome::Status::Failed, twice));
      continue;
    }
    plan.jobs.push_back(std::move(job));
  }
  requireDistinctOutputs(plan.jobs);
  if (!a.update || a.overwrite) return plan;
  // What is out of date may be overwritten then, but no input.
  const auto isAnInput = [&](const Job& job) { return read.count(identityOf(job.output)) != 0; };
  const auto end = std::stable_partition(plan.jobs.begin(), plan.jobs.end(), std::not_fn(isAnInput));
  for (auto job = end; job != plan.jobs.end(); ++job) {
    const Failure isInput(job->input, job->output + " is an input itself; -f overwrites it", Cause::OutputTaken);
    plan.outcomes.push_back(outcomeOf(*job, Outcome::Status::Failed, isInput));
  }
  plan.jobs.erase(end, plan.jobs.end());
  return plan;
}

}  // namespace orbel
