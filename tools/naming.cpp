#include "naming.h"

#include <filesystem>
#include <map>
#include <set>

#include "failure.h"

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

std::string filled(std::string pattern, const std::string& name) {
  for (std::size_t at = 0; (at = pattern.find("%s", at)) != std::string::npos; at += name.size()) {
    pattern.replace(at, 2, name);
  }
  return pattern;
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
      job.output = filled(output, withoutExtension(input.below));
      // The pattern's own extension counts: a point in the name doesn't begin one.
      if (!a.extension && !extensionOf(output).empty()) break;
      job.output = filled(withoutExtension(output), withoutExtension(input.below)) + suffixFor(input, a, job);
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

bool isUpToDate(const Job& job) {
  std::error_code missing;
  const auto written = fs::last_write_time(job.output, missing);
  if (missing) return false;
  const auto read = fs::last_write_time(job.input, missing);
  return !missing && written >= read;
}

}  // namespace

Plan planJobs(const Inputs& inputs, const NamingArguments& a, bool recursive) {
  const bool several = inputs.files.size() > 1 || recursive;
  const Target target = targetOf(a, several);
  Plan plan;
  std::map<std::string, std::string> writers;
  std::set<std::string> names;  // without extensions
  for (const Input& input : inputs.files) names.insert(withoutExtension(input.file));
  // Not to be done again when its folder is, or its input by the same wildcard.
  const auto isResult = [&](const Input& input) {
    const std::string source = target == Target::Beside ? sourceOf(input.file) : "";
    return !source.empty() && (recursive || names.count(source) != 0);
  };
  const bool sparesInputs = a.update && !a.overwrite;
  std::set<std::string> originals;
  for (const Input& input : inputs.files) {
    if (sparesInputs && !isResult(input)) originals.insert(identityOf(input.file));
  }
  for (const auto& [folder, reason] : inputs.unreadable) {
    Job job;
    job.input = folder;
    plan.settled.push_back(settled(job, Outcome::Status::Failed, Failure(folder, reason, Cause::Unreadable)));
  }
  for (const Input& input : inputs.files) {
    if (input.file == pipeName && (inputs.files.size() > 1 || !a.output || (target == Target::Pipe && !a.extension))) {
      throw SettingsError("the standard input is read alone, and needs -o; -o - needs --ext");
    }
    Job job = jobFor(input, a, target);
    if (isResult(input)) {
      plan.settled.push_back(
          settled(job, Outcome::Status::Skipped, Failure(input.file, "is a result itself", Cause::OwnResult)));
      continue;
    }
    const std::string identity = identityOf(job.output);
    if (const auto [other, isNew] = writers.emplace(identity, input.file); !isNew && job.output != pipeName) {
      const std::string reason = job.output + " is already the output of " + other->second;
      plan.settled.push_back(settled(job, Outcome::Status::Failed, Failure(job.input, reason, Cause::OutputTaken)));
      continue;
    }
    if (originals.count(identity) != 0) {
      const std::string reason = job.output + " is an input itself; -f overwrites it";
      plan.settled.push_back(settled(job, Outcome::Status::Failed, Failure(job.input, reason, Cause::OutputTaken)));
      continue;
    }
    if (a.update && job.output != pipeName) {
      if (isUpToDate(job)) {
        const std::string reason = job.output + " is up to date";
        plan.settled.push_back(settled(job, Outcome::Status::Skipped, Failure(job.input, reason, Cause::UpToDate)));
        continue;
      }
      job.overwrite = true;
    }
    if (target == Target::Folder || target == Target::Pattern) {
      const std::string folder = fs::path(job.output).parent_path().string();
      if (!folder.empty() && (plan.folders.empty() || plan.folders.back() != folder)) plan.folders.push_back(folder);
    }
    plan.jobs.push_back(std::move(job));
  }
  return plan;
}
