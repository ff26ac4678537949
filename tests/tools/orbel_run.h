// Runs the built program on files, as people do.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/inotify.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>
#include <vips/vips8>

extern char** environ;

namespace fs = std::filesystem;
using vips::VImage;
using Words = std::vector<std::string>;

struct Ending {
  int status = 0;  // as of waitpid
  std::string output, errors;
  int code() const { return WIFEXITED(status) ? WEXITSTATUS(status) : -1; }
};

inline std::string contentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

inline bool begins(const std::string& text, const std::string& with) { return text.rfind(with, 0) == 0; }
inline bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

inline Words split(const std::string& line) {
  std::istringstream words(line);
  return {std::istream_iterator<std::string>(words), {}};
}

inline VImage load(const std::string& name) { return VImage::new_from_file(name.c_str()).copy_memory(); }
inline void save(const std::string& name, const VImage& picture) { picture.write_to_file(name.c_str()); }
inline void saveText(const std::string& name, const std::string& text) {
  fs::create_directories(fs::absolute(name).parent_path());
  std::ofstream(name, std::ios::binary) << text;
}

// Each test works in a folder of its own, which is where the user's presets are, too.
class Orbel : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    VIPS_INIT("orbel_test");
    vips_cache_set_max(0);
  }
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "orbel-test-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
    output_ = folder_ / "output";
    errors_ = folder_ / "errors";
    fs::create_directory(folder_ / "work");
    fs::current_path(folder_ / "work");
    setenv("XDG_CONFIG_HOME", fs::current_path().c_str(), 1);
  }
  void TearDown() override {
    fs::current_path(before_);
    fs::remove_all(folder_);
  }

  pid_t start(Words words) const {
    words.insert(words.begin(), program_);
    std::vector<char*> raw;
    for (std::string& word : words) raw.push_back(word.data());
    raw.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, output_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, errors_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t process = -1;
    EXPECT_EQ(posix_spawn(&process, program_.c_str(), &actions, nullptr, raw.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    return process;
  }
  Ending finish(pid_t process) const {
    Ending ending;
    waitpid(process, &ending.status, 0);
    if (fs::is_regular_file(output_)) ending.output = contentOf(output_);
    ending.errors = contentOf(errors_);
    return ending;
  }
  Ending run(const Words& words) const { return finish(start(words)); }
  Ending run(const std::string& line) const { return run(split(line)); }  // no blanks in a word
  template <typename Line>
  Ending runWell(const Line& line) const {
    const Ending ending = run(line);
    EXPECT_EQ(ending.code(), 0) << ending.errors;
    return ending;
  }

  // Whether it comes true within half a minute.
  template <typename Condition>
  static bool await(Condition condition) {
    for (int i = 0; i < 6000 && !condition(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return condition();
  }

  // All files, and what is in them.
  static std::map<std::string, std::string> files() {
    std::map<std::string, std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(".")) {
      std::error_code loop;
      if (entry.is_regular_file(loop)) found[entry.path().string().substr(2)] = contentOf(entry.path());
    }
    return found;
  }
  static bool temporaryIsThere() {
    return std::any_of(fs::directory_iterator("."), {}, [](const fs::directory_entry& entry) {
      return begins(entry.path().filename().string(), ".orbel-");
    });
  }

  std::string program_ = ORBEL_PROGRAM;
  fs::path output_, errors_;  // what it says, beside its folder

 private:
  fs::path before_ = fs::current_path();
  fs::path folder_;
};

// What happens to the names in the current folder from here on, as the kernel tells: each time one comes to stand for
// another file, or for none.
class Watch {
 public:
  struct Event {
    bool appears;
    std::string name;
  };
  Watch() { inotify_add_watch(descriptor_, ".", IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO); }
  ~Watch() { close(descriptor_); }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  std::vector<Event> events() const {
    std::vector<Event> all;
    alignas(inotify_event) char buffer[1 << 16];
    for (ssize_t count = 0; (count = read(descriptor_, buffer, sizeof buffer)) > 0;) {
      for (const char* at = buffer; at < buffer + count;) {
        const auto* const event = reinterpret_cast<const inotify_event*>(at);
        all.push_back({(event->mask & (IN_CREATE | IN_MOVED_TO)) != 0, event->name});
        at += sizeof *event + event->len;
      }
    }
    return all;
  }

 private:
  int descriptor_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
};

// 256 x 256 samples that take every value of 16 bits, each band in another order; the same scaled for other formats.
inline VImage testPicture(int bands, VipsBandFormat format = VIPS_FORMAT_UCHAR) {
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

inline double difference(const VImage& a, const VImage& b) { return (a - b).abs().max(); }
