// Runs the built program on files, as people do.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>
#include <vips/vips8>

extern char** environ;

namespace fs = std::filesystem;
using vips::VImage;

struct Ending {
  int status = 0;  // as of waitpid
  std::string errors;
  int code() const { return WIFEXITED(status) ? WEXITSTATUS(status) : -1; }
};

inline std::string contentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class Orbel : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    VIPS_INIT("orbel_test");
    vips_cache_set_max(0);
  }
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "orbel-test-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }
  void TearDown() override { fs::remove_all(folder_); }

  std::string path(const std::string& name) const { return (folder_ / name).string(); }

  pid_t start(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), program_);
    std::vector<char*> raw;
    for (std::string& argument : arguments) raw.push_back(argument.data());
    raw.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, path("errors").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t process = -1;
    EXPECT_EQ(posix_spawn(&process, program_.c_str(), &actions, nullptr, raw.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    return process;
  }
  Ending finish(pid_t process) const {
    Ending outcome;
    waitpid(process, &outcome.status, 0);
    outcome.errors = contentOf(path("errors"));
    return outcome;
  }
  Ending run(const std::vector<std::string>& arguments) const { return finish(start(arguments)); }

  bool temporaryIsThere() const {
    return std::any_of(fs::directory_iterator(folder_), {}, [](const fs::directory_entry& entry) {
      return entry.path().filename().string().rfind(".orbel-", 0) == 0;
    });
  }

  fs::path folder_;
  std::string program_ = ORBEL_PROGRAM;
};

// 256 x 256 samples that take every value of 16 bits, each band in another order; the same scaled for other formats.
inline VImage testPicture(int bands, VipsBandFormat format) {
  std::vector<VImage> planes;
  const VImage xy = VImage::xyz(256, 256);
  for (int band = 0; band < bands; ++band) {
    const VImage value = band % 2 == 0 ? xy[0] * 256 + xy[1] : (65535 - xy[0] * 256) - xy[1];
    planes.push_back(format == VIPS_FORMAT_USHORT  ? value
                     : format == VIPS_FORMAT_UCHAR ? (value / 256).floor()
                                                   : value / 65535 * 1.25 - 0.125);
  }
  const bool grey = bands < 3;
  const VipsInterpretation model =
      format == VIPS_FORMAT_UCHAR    ? (grey ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB)
      : format == VIPS_FORMAT_USHORT ? (grey ? VIPS_INTERPRETATION_GREY16 : VIPS_INTERPRETATION_RGB16)
                                     : (grey ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_scRGB);
  return VImage::bandjoin(planes).cast(format).copy(VImage::option()->set("interpretation", model));
}

inline VImage load(const std::string& name) { return VImage::new_from_file(name.c_str()); }

inline double difference(const VImage& a, const VImage& b) { return (a - b).abs().max(); }
