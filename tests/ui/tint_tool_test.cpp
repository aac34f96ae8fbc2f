#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <tuple>

#include "kit/foundation/temp_dir.h"
#include "kit/ui/image.h"
#include "kit/ui/image_context.h"

namespace {

using Pixel = kit::Image::Pixel;

class TintToolTest : public ::testing::Test {
 protected:
  void SetUp() override {
    kit::ImageContext context({2, 1}, 1);  // opaque mid grey, then transparent
    context.fillRect({{0, 0}, {1, 1}}, {0.5, 0.5, 0.5, 1});
    ASSERT_TRUE(context.takeImage().savePng(in));
  }

  // Runs the tool as a user would: its exit status (-1 when it did not exit
  // normally), with what it wrote to stderr left in `errors`.
  int run(const std::vector<std::string>& args) {
    std::string command = TINT_TOOL;
    for (const auto& arg : args)
      command += " '" + arg + "'";
    const int raw = std::system((command + " 2>'" + path("err.txt") + "' >/dev/null").c_str());
    std::stringstream text;
    text << std::ifstream(path("err.txt")).rdbuf();
    errors = text.str();
    return raw != -1 && WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  }
  std::string path(const std::string& name) const { return (dir.path() / name).string(); }

  kit::TempDir dir{"tint_tool_test"};
  const std::string in = path("in.png"), out = path("out.png");
  std::string errors;
};

TEST_F(TintToolTest, TintsAGoodFileKeepingItsPixelSizeAndShapeAndRefusesBadInput) {
  ASSERT_EQ(run({in, "#ff3333", "tint", out}), 0) << errors;
  auto tinted = kit::Image::loadPng(out);
  ASSERT_TRUE(tinted && tinted->pixelWidth() == 2);
  EXPECT_EQ(tinted->pixelAt(0, 0), (Pixel{255, 51, 51, 255}));
  EXPECT_EQ(tinted->pixelAt(1, 0), Pixel{});
  // An alpha byte, no '#', another scale; a mode by its number.
  ASSERT_EQ(run({in, "ff333380", "tint", out, "--scale", "1"}), 0) << errors;
  EXPECT_NEAR(kit::Image::loadPng(out)->pixelAt(0, 0).alpha, 128, 1);
  EXPECT_EQ(run({in, "#3366cc", "3", out}), 0) << errors;
  std::filesystem::remove(out);

  std::ofstream(path("corrupt.png")) << "\x89PNG\r\n\x1a\n not really";
  const std::tuple<std::vector<std::string>, int, std::string> bad[] = {
      {{path("missing.png"), "#ff0000", "tint", out}, 1, "missing.png"},
      {{path("corrupt.png"), "#ff0000", "tint", out}, 1, "corrupt PNG"},
      {{in, "#ff0000", "tint", path("no/folder/out.png")}, 1, "out.png"},
      {{in, "#gg0000", "tint", out}, 2, "colour"},
      {{in, "#ff0000", "28", out}, 2, "mode"},
      {{in, "#ff0000", "tint", out, "--scale", "0"}, 2, "scale"},
      {{in, "#ff0000", "tint"}, 2, "OUT"},
  };
  for (const auto& [args, status, mentions] : bad) {
    EXPECT_EQ(run(args), status) << errors;
    EXPECT_NE(errors.find(mentions), std::string::npos) << errors;
    EXPECT_FALSE(std::filesystem::exists(out));
  }
}

}  // namespace
