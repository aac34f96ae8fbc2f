// The twinlanes command, run as a separate process as a user or a bug report
// would run it.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "kit/backends/files/file_resource_store.h"
#include "kit/foundation/temp_dir.h"
#include "kit/render/interface_layout.h"

class TwinlanesCommand : public ::testing::Test {
 protected:
  struct Result {
    int status = -1;
    std::string out;
    std::string err;
  };

  static std::string readFile(const std::filesystem::path& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
  }
  // Runs the binary with `arguments` (already shell-quoted where needed),
  // feeding `input` on stdin.
  Result run(const std::string& arguments, const std::string& input = "") {
    const auto in = dir.path() / "stdin", out = dir.path() / "stdout", err = dir.path() / "stderr";
    std::ofstream(in) << input;
    const std::string command = "'" + std::string(TWINLANES_BINARY) + "' " + arguments + " < '" +
                                in.string() + "' > '" + out.string() + "' 2> '" + err.string() +
                                "'";
    const int raw = std::system(command.c_str());
    return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, readFile(out), readFile(err)};
  }

  kit::TempDir dir{"twinlanes-e2e"};
};

TEST_F(TwinlanesCommand, SameSeedSameGame) {
  const std::string text = "start\nautoplay on\nwait 20\ndump\n";
  const auto a = run("--headless --seed 99 --script -", text);
  const auto b = run("--headless --seed 99 --script -", text);
  ASSERT_EQ(a.status, 0) << a.err;
  EXPECT_EQ(a.out, b.out);
}

TEST_F(TwinlanesCommand, ABadScriptLineFailsWithItsLineNumberAndStatus2) {
  std::ofstream(dir.path() / "bad.tl") << "start\nframes 3\njump\ndump\n";
  const auto r = run("--headless --script '" + (dir.path() / "bad.tl").string() + "'");
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("bad.tl:3: unknown command 'jump'"), std::string::npos) << r.err;
  EXPECT_EQ(r.out, "");

  const auto missing = run("--headless --script '" + (dir.path() / "none.tl").string() + "'");
  EXPECT_EQ(missing.status, 2);
  EXPECT_NE(missing.err.find("cannot read the script"), std::string::npos) << missing.err;
}

TEST_F(TwinlanesCommand, TheDeviceHelpListsTheLayoutsProfilesWithTheirSizes) {
  const auto layout =
      kit::InterfaceLayout::load(kit::FileResourceStore(TWINLANES_RESOURCES), "layout/main.json");
  ASSERT_TRUE(layout) << layout.error();
  const std::string help = run("--help").out;
  const size_t at = help.find("--device");
  ASSERT_NE(at, std::string::npos) << help;
  const std::string line = help.substr(at, help.find('\n', at) - at);
  for (const kit::DeviceProfile& profile : layout->profiles()) {
    const std::string entry = profile.name + " (" + std::to_string(int(profile.scene.width)) + "x" +
                              std::to_string(int(profile.scene.height)) + ")";
    EXPECT_NE(line.find(entry), std::string::npos) << line;
  }
}

TEST_F(TwinlanesCommand, FlagsOutsideTheirRangeAreRefusedWithAShortReason) {
  const std::pair<std::string, std::string> cases[] = {
      {"--scale nan", "--scale: expected from 0.25 to 8, not nan"},
      {"--scale inf", "--scale: expected from 0.25 to 8, not inf"},
      {"--frames 18446744073709551616",
       "--frames: expected a whole number from 1 to 1000000000, not 18446744073709551616"},
      {"--frames 0", "--frames: expected a whole number from 1 to 1000000000, not 0"},
      {"--prefs-dir ''", "--prefs-dir: expected a folder, not an empty name"},
  };
  for (const auto& [flags, message] : cases) {
    const auto r = run(flags);
    EXPECT_NE(r.status, 0) << flags;
    EXPECT_NE(r.err.find(message), std::string::npos) << flags << ": " << r.err;
    EXPECT_LT(r.err.size(), 200u) << r.err;
  }
}

TEST_F(TwinlanesCommand, ScriptsThatCannotBeReadOrNeverEndALineFailClearly) {
  const auto folder = run("--headless --script '" + dir.path().string() + "'");
  EXPECT_EQ(folder.status, 2);
  EXPECT_NE(folder.err.find("cannot read the script"), std::string::npos) << folder.err;
  const auto zero = run("--headless --script /dev/zero");
  EXPECT_EQ(zero.status, 2);
  EXPECT_NE(zero.err.find("/dev/zero:1: the line is longer than"), std::string::npos) << zero.err;
  EXPECT_LT(zero.err.size(), 200u);
}
