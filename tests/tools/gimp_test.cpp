// orbel gimp: the presets in GIMP's list, and nothing lost of what the user keeps there.
#include "tools/orbel_run.h"

namespace {

constexpr const char* file = "GIMP/2.10/filters/GimpGegl-orbel-band-equalizer-config.settings";

TEST_F(Orbel, GimpGetsAllPresetsOnce) {
  runWell("gimp");
  const std::string text = contentOf(file);
  for (const char* const name : {"clarity", "soft skin", "neutral"}) {
    EXPECT_TRUE(contains(text, "(GimpGegl-orbel-band-equalizer-config \"" + std::string(name) + "\"\n")) << name;
  }
  EXPECT_TRUE(contains(text, "(gain-4 225)\n")) << text;
  EXPECT_EQ(runWell("gimp").errors, "");
  EXPECT_EQ(contentOf(file), text);
}

TEST_F(Orbel, GimpKeepsWhatIsThere) {
  const std::string own =
      "# mine\n(GimpGegl-orbel-band-equalizer-config \"clarity\" (gain-1 5))\n"
      "(GimpGegl-orbel-band-equalizer-config \"a \\\") b\" (time 3))";
  saveText(file, own);
  EXPECT_TRUE(contains(runWell("gimp").errors, "'clarity' already"));
  const std::string text = contentOf(file);
  EXPECT_TRUE(begins(text, own));
  EXPECT_FALSE(contains(text, "\"clarity\"\n"));
  EXPECT_TRUE(contains(text, "\"crisp\"\n"));
}

TEST_F(Orbel, GimpLeavesOtherFilesAlone) {
  for (const char* const other : {"gain = 3\n", "(a", "(a))", "(a \"b", "\"a\""}) {
    saveText("other", other);
    const Ending ending = run("gimp -o other");
    EXPECT_EQ(ending.code(), 2) << other;
    EXPECT_TRUE(contains(ending.errors, "other: ")) << ending.errors;
    EXPECT_EQ(contentOf("other"), other);
  }
  EXPECT_EQ(run("gimp -p missing -o new").code(), 2);
  EXPECT_FALSE(fs::exists("new"));
}

}  // namespace
