// Settings from their five sources, as files, and as what scripts take.

#include "settings/settings.h"

#include <nlohmann/json.hpp>

#include "cli/settings_options.h"
#include "orbel_run.h"
#include "settings/settings_file.h"

using namespace orbel;

namespace {

class SettingsTest : public Orbel {
 protected:
  // What it says, and the exit code.
  template <typename Line>
  std::string said(const Line& line) const {
    const Ending ending = run(line);
    return ending.output + ending.errors + std::to_string(ending.code());
  }
};

std::string refusalOf(const std::string& file) {
  SettingsArguments arguments;
  arguments.preset = file;
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
  arguments.preset = "a.toml";
  saveText("a.toml", "contrast = [1, 1, 1, 1, 1]\nradius = 7\nhalf = true\nmix = 40\nref-edge = 900\n");
  arguments.gain = "2,2,2,2,2";
  arguments.bands = {"3:gain=3,edges=off", "4:contrast=3", "5:gain=3"};
  arguments.pairs = {"CON4=4", "CON5=4", "CON5=5"};
  arguments.half = false;
  arguments.mix = "60";
  const Settings settings = chooseSettings(arguments);
  const std::pair<const char*, double> expected[] = {{"CON1", 2}, {"CON2", 2}, {"CON3", 3},   {"CON4", 4}, {"CON5", 5},
                                                     {"RAD1", 7}, {"RAD5", 7}, {"EDG1", 0},   {"EDG2", 1}, {"EDG3", 0},
                                                     {"HALF", 0}, {"LUMI", 1}, {"THR1", 255}, {"WDTH", 0}};
  for (const auto& [key, value] : expected) EXPECT_EQ(valueOf(settings, key), value) << key;
  EXPECT_EQ(settings.run.mix, 60);
  EXPECT_EQ(settings.run.reference_edge, 900);
}

TEST_F(SettingsTest, ComeBackFromTheirText) {
  Settings settings;
  setBands(settings, "", *bandWord("gain"), "0.1,-3,1000,123.4567890123,1e-7");
  setBands(settings, "", *bandWord("edges"), "on,off,on,off,on");
  setPair(settings, "", "WDTH=32767");
  setPair(settings, "", "LUMI=off");
  settings.run.mix = 33.3;
  settings.mask = fs::absolute("it's a \"mask\"\\\n\x01 ü.png");
  settings.run.reference_edge = 6000;
  const std::string text = settingsText(settings, "Says \"what\"\nit is for.");
  Settings back;
  setBands(back, "", *bandWord("radius"), "99");
  saveText("back.toml", text);
  EXPECT_EQ(readSettings("back.toml", back), "Says \"what\"\nit is for.");
  EXPECT_EQ(settingsText(back, "Says \"what\"\nit is for."), text);
  EXPECT_EQ(back.run.bands[3].gain, 123.4567890123);
  EXPECT_EQ(back.run.bands[0].radius, 3);
  EXPECT_EQ(back.mask, settings.mask);
}

TEST_F(SettingsTest, RadiiScaleWithThePicture) {
  Settings settings;
  setBands(settings, "", *bandWord("radius"), "1,2,3,4,5");
  EXPECT_EQ(scaledTo(4000, 3000, settings.run).bands[4].radius, 5);
  settings.run.reference_edge = 2000;
  EXPECT_EQ(scaledTo(3000, 4000, settings.run).bands[0].radius, 2);
  EXPECT_EQ(scaledTo(4000, 3000, settings.run).bands[4].radius, 10);
  EXPECT_EQ(scaledTo(4000, 3000, settings.run).bands[4].threshold, 10);
}

TEST_F(SettingsTest, AMaskCountsFromTheFilesFolder) {
  Settings settings;
  saveText("sub/a.toml", "mask = 'white.png'");
  readSettings("sub/a.toml", settings);
  EXPECT_EQ(settings.mask, std::string("sub/white.png"));
}

TEST_F(SettingsTest, NameTheFileAndTheLine) {
  const std::pair<const char*, const char*> wrong[] = {
      {"\ncontras = 3", ":2: there is no setting 'contras'"},
      {"contrast = [1, 2]", ":1: 'contrast' takes one value or five"},
      {"factor = 1\n\nradius = [1, 2, 3,\n 4, 'x']", ":3: 'radius' takes a number"},
      {"radius = nan", ":1: 'radius' takes a number"},
      {"radius = [[1], 2, 3, 4, 5]", ":1: 'radius' takes a number"},
      {"half = 1", ":1: 'half' takes true or false"},
      {"edges = [true, true, true, true, 1]", ":1: 'edges' takes true or false"},
      {"cross = 1.5", ":1: 'cross' takes a whole number"},
      {"cross = 3000000000", ":1: 'cross' takes a whole number"},
      {"half = true\nthreshold = [255, 10, -1, 10, 10]", ":2: -1 is out of range; threshold goes from 0 to 255"},
      {"mix = 100.5", ":1: mix: a mix goes from 0 to 100"},
      {"ref-edge = -1", ":1: ref-edge: an edge goes from 0 to 32767 pixels"},
      {"mask = 1", ":1: 'mask' takes a text in quotes"},
      {"half = true\nhalf = true", ":2: "},
      {"description = \"\xff\"", ":1: "}};
  for (const auto& [text, message] : wrong) {
    saveText("wrong.toml", text);
    EXPECT_TRUE(begins(refusalOf("wrong.toml"), std::string("wrong.toml") + message)) << refusalOf("wrong.toml");
  }
  std::string deep = "a";
  for (int i = 0; i < 60000; ++i) deep += ".a";  // the parser would run out of stack
  saveText("deep.toml", deep + " = 1");
  for (const std::string name : {"./", "nowhere.toml", "deep.toml"}) {
    EXPECT_TRUE(begins(refusalOf(name), name + ": ")) << refusalOf(name);
  }
}

TEST_F(SettingsTest, AreNotSaidToBePrintedOnAFullDisk) {
  output_ = "/dev/full";
  for (const char* line : {"keys", "jsx", "presets list --json"}) EXPECT_EQ(run(line).code(), 1) << line;
}

TEST_F(SettingsTest, PresetsThatShipAreGoodAndSayWhatTheyAreFor) {
  Words names;
  for (const auto& preset : nlohmann::json::parse(runWell("presets list --json").output)) {
    names.push_back(preset["name"]);
    EXPECT_GT(preset["description"].get<std::string>().size(), 40U) << preset;
    EXPECT_FALSE(preset["own"].get<bool>());
  }
  EXPECT_EQ(names, (Words{"clarity", "crisp", "detail map", "landscape", "neutral", "protect grain", "soft skin"}));
}

TEST_F(SettingsTest, PresetsAreSavedFoundAndChecked) {
  const std::string saved = fs::absolute("orbel/presets/my-look.toml").string();
  EXPECT_EQ(said(Words{"presets", "save", "My Look", "--description", "Mine", "-p", "Soft-Skin", "-s", "CON1=1"}),
            saved + "\n0");
  EXPECT_EQ(said(Words{"jsx", "-p", "my look", "--print-settings"}),
            said(Words{"jsx", "-p", "SOFT SKIN", "-s", "CON1=1", "--print-settings"}));
  EXPECT_EQ(said("presets save my-look"), "orbel: " + saved + ": is there already; -f overwrites it\n1");
  EXPECT_EQ(said("presets save my-look -f --json"), "{\n  \"file\": \"" + saved + "\"\n}\n0");
  EXPECT_TRUE(contains(said("presets save ../x"), "can't be one\n2"));
  saveText("orbel/presets/neutral.toml", "half = true");
  EXPECT_TRUE(contains(said("jsx -p neutral"), "\"HALF\"), true"));
  EXPECT_EQ(said("presets check neutral my-look"), "neutral: good\nmy-look: good\n0");
  saveText("bad.toml", "hal = 1");
  EXPECT_EQ(said("presets check neutral bad.toml"), "neutral: good\norbel: bad.toml:1: there is no setting 'hal'\n2");
}

}  // namespace
