// Settings from their five sources, as files, and as what scripts take.

#include "settings.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "settings_file.h"
#include "settings_options.h"

namespace {

namespace fs = std::filesystem;

class SettingsTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "settings-test-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }
  void TearDown() override { fs::remove_all(folder_); }

  std::string file(const std::string& name, const std::string& text) const {
    fs::create_directories((folder_ / name).parent_path());
    std::ofstream(folder_ / name) << text;
    return (folder_ / name).string();
  }

  // What `orbel ARGUMENTS` prints, with the user's presets in the test's folder.
  std::string outputOf(const std::string& arguments) const {
    const std::string command =
        "XDG_CONFIG_HOME='" + folder_.string() + "' " ORBEL_PROGRAM " " + arguments + " 2>&1; echo $?";
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string output;
    for (std::array<char, 4096> part{}; fgets(part.data(), part.size(), pipe.get()) != nullptr;) output += part.data();
    return output;
  }

  fs::path folder_;
};

std::string refusalOf(const SettingsArguments& arguments) {
  try {
    chooseSettings(arguments);
  } catch (const SettingsError& error) {
    return error.what();
  }
  return "nothing refused";
}

// Contrast 1 to 5 is set by ever later sources: the number tells the last one that may.
TEST_F(SettingsTest, LaterSourcesWin) {
  SettingsArguments arguments;
  arguments.preset = file("a.toml", "contrast = [1, 1, 1, 1, 1]\nradius = 7\nhalf = true\nmix = 40\nref-edge = 900\n");
  arguments.contrast = "2,2,2,2,2";
  arguments.bands = {"3:contrast=3,edges=off", "4:contrast=3", "5:contrast=3"};
  arguments.pairs = {"CON4=4", "CON5=4", "CON5=5"};
  arguments.half = false;
  arguments.mix = "60";
  const SettingsChoice choice = chooseSettings(arguments);
  const std::vector<std::pair<const char*, double>> expected = {
      {"CON1", 2}, {"CON2", 2}, {"CON3", 3}, {"CON4", 4}, {"CON5", 5}, {"RAD1", 7},   {"RAD5", 7},
      {"EDG1", 0}, {"EDG2", 1}, {"EDG3", 0}, {"HALF", 0}, {"LUMI", 1}, {"THR1", 255}, {"WDTH", 0}};
  for (const auto& [key, value] : expected) EXPECT_EQ(choice.settings.value(key), value) << key;
  EXPECT_EQ(choice.mix, 60);
  EXPECT_EQ(choice.refEdge, 900);
}

TEST_F(SettingsTest, ComeBackFromTheirText) {
  SettingsChoice choice;
  choice.settings.setBands("", "CON", "0.1,-3,1e300,12345678.9,1e-7");
  choice.settings.setBands("", "EDG", "on,off,on,off,on");
  choice.settings.setPair("", "WDTH=-2147483648");
  choice.settings.setPair("", "LUMI=off");
  choice.mix = 33.3;
  choice.mask = folder_ / "it's a \"mask\"\\\n\x01 ü.png";
  choice.refEdge = 6000;
  const std::string text = settingsText(choice, "Says \"what\"\nit is for.");
  SettingsChoice back;
  back.settings.setBands("", "RAD", "99");
  EXPECT_EQ(readSettings(file("back.toml", text), back), "Says \"what\"\nit is for.");
  EXPECT_EQ(settingsText(back, "Says \"what\"\nit is for."), text);
  EXPECT_EQ(back.settings.value("CON3"), 1e300);
  EXPECT_EQ(back.settings.value("RAD1"), 3);
  EXPECT_EQ(back.mask, choice.mask);
}

TEST_F(SettingsTest, AMaskCountsFromTheFilesFolder) {
  SettingsChoice choice;
  readSettings(file("sub/a.toml", "mask = 'white.png'"), choice);
  EXPECT_EQ(choice.mask, folder_ / "sub/white.png");
}

TEST_F(SettingsTest, NameTheFileAndTheLine) {
  const std::vector<std::pair<const char*, const char*>> wrong = {
      {"\ncontras = 3", ":2: there is no setting 'contras'"},
      {"contrast = [1, 2]", ":1: 'contrast' takes one value or five"},
      {"factor = 1\n\nradius = [1, 2, 3,\n 4, 'x']", ":3: 'radius' takes a number"},
      {"radius = nan", ":1: 'radius' takes a number"},
      {"radius = [[1], 2, 3, 4, 5]", ":1: 'radius' takes a number"},
      {"half = 1", ":1: 'half' takes true or false"},
      {"edges = [true, true, true, true, 1]", ":1: 'edges' takes true or false"},
      {"cross = 1.5", ":1: 'cross' takes a whole number"},
      {"cross = 3000000000", ":1: 'cross' takes a whole number"},
      {"mix = 100.5", ":1: mix: a mix goes from 0 to 100"},
      {"ref-edge = -1", ":1: ref-edge: an edge can't be below 0 pixels"},
      {"mask = 1", ":1: 'mask' takes a text in quotes"},
      {"[contrast]\na = 1", ":1: 'contrast' takes a number"},
      {"half = true\nhalf = true", ":2: "},
      {"half = ", ":1: "},
      {"description = \"\xff\"", ":1: "}};
  for (const auto& [text, message] : wrong) {
    SettingsArguments arguments;
    arguments.preset = file("wrong.toml", text);
    EXPECT_EQ(refusalOf(arguments).rfind(*arguments.preset + message, 0), 0U) << refusalOf(arguments);
  }
  std::string deep = "a";
  for (int i = 0; i < 60000; ++i) deep += ".a";  // the parser would run out of stack
  const std::string deepFile = file("deep.toml", deep + " = 1");
  for (const std::string& name : {folder_.string() + "/", (folder_ / "nowhere.toml").string(), deepFile}) {
    SettingsArguments arguments;
    arguments.preset = name;
    EXPECT_EQ(refusalOf(arguments).rfind(name + ": ", 0), 0U) << refusalOf(arguments);
  }
}

TEST_F(SettingsTest, AreNotSaidToBePrintedOnAFullDisk) {
  for (const char* command : {"keys", "jsx", "presets list --json"}) {
    EXPECT_EQ(outputOf(command + std::string(" >/dev/full")), "1\n") << command;
  }
}

TEST_F(SettingsTest, PresetsThatShipAreGoodAndSayWhatTheyAreFor) {
  std::string output = outputOf("presets list --json");
  output.resize(output.size() - 2);  // the exit code
  const nlohmann::json list = nlohmann::json::parse(output);
  std::vector<std::string> names;
  for (const auto& preset : list) {
    names.push_back(preset["name"]);
    EXPECT_GT(preset["description"].get<std::string>().size(), 40U) << preset;
    EXPECT_FALSE(preset["own"].get<bool>());
  }
  EXPECT_EQ(names, (std::vector<std::string>{"clarity", "crisp", "detail map", "landscape", "neutral", "protect grain",
                                             "soft skin"}));
}

TEST_F(SettingsTest, PresetsAreSavedFoundAndChecked) {
  const std::string saved = (folder_ / "orbel/presets/my-look.toml").string();
  EXPECT_EQ(outputOf("presets save 'My Look' --description Mine -p Soft-Skin -s CON1=1"), saved + "\n0\n");
  EXPECT_EQ(outputOf("jsx -p 'my look' --print-settings"), outputOf("jsx -p 'SOFT SKIN' -s CON1=1 --print-settings"));
  EXPECT_EQ(outputOf("presets save 'my look'"), "orbel: " + saved + ": is there already; -f overwrites it\n1\n");
  EXPECT_EQ(outputOf("presets save 'my look' -f --json"), "{\n  \"file\": \"" + saved + "\"\n}\n0\n");
  EXPECT_NE(outputOf("presets save ../x").find("can't be one\n2\n"), std::string::npos);
  file("orbel/presets/neutral.toml", "half = true");
  EXPECT_NE(outputOf("jsx -p neutral").find("\"HALF\"), true"), std::string::npos);
  EXPECT_EQ(outputOf("presets check neutral 'my look'"), "neutral: good\nmy look: good\n0\n");
  const std::string bad = file("bad.toml", "hal = 1");
  EXPECT_EQ(outputOf("presets check neutral " + bad),
            "neutral: good\norbel: " + bad + ":1: there is no setting 'hal'\n2\n");
}

}  // namespace
