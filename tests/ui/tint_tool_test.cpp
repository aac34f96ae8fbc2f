#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "kit/ui/image.h"
#include "kit/ui/image_context.h"

namespace {

namespace fs = std::filesystem;
using kit::Image;
using Pixel = kit::Image::Pixel;

struct Outcome {
  int status = -1;  // exit status; -1 when the tool did not exit normally
  std::string errors;
};

class TintToolTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/tint_tool_test.XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir = pattern;
    // 2x1 pixels: opaque mid grey, then transparent.
    kit::ImageContext context({2, 1}, 1);
    context.fillRect({{0, 0}, {1, 1}}, {0.5, 0.5, 0.5, 1});
    ASSERT_TRUE(context.takeImage().savePng(path("in.png")));
  }
  void TearDown() override { fs::remove_all(dir); }

  std::string path(const std::string& name) const { return (dir / name).string(); }

  // Runs the tool with the arguments, capturing what it writes to stderr.
  Outcome run(const std::vector<std::string>& args) const {
    std::string command = TINT_TOOL;
    for (const auto& arg : args)
      command += " '" + arg + "'";
    command += " 2>'" + path("stderr.txt") + "' >/dev/null";
    int raw = std::system(command.c_str());
    Outcome outcome;
    if (raw != -1 && WIFEXITED(raw))
      outcome.status = WEXITSTATUS(raw);
    std::stringstream text;
    text << std::ifstream(path("stderr.txt")).rdbuf();
    outcome.errors = text.str();
    return outcome;
  }

  Image output() const {
    auto image = Image::loadPng(path("out.png"));
    EXPECT_TRUE(image);
    return image ? *image : Image::blank({0, 0});
  }

  fs::path dir;
};

TEST_F(TintToolTest, TintsAGoodFileKeepingItsPixelSizeAndShape) {
  ASSERT_EQ(run({path("in.png"), "#ff3333", "tint", path("out.png")}).status, 0);
  Image tinted = output();
  EXPECT_EQ(tinted.pixelWidth(), 2);
  EXPECT_EQ(tinted.pixelAt(0, 0), (Pixel{255, 51, 51, 255}));
  EXPECT_EQ(tinted.pixelAt(1, 0), Pixel{});

  // An alpha byte, no '#', another scale: still one output pixel per input pixel.
  ASSERT_EQ(run({path("in.png"), "ff333380", "tint", path("out.png"), "--scale", "1"}).status, 0);
  EXPECT_EQ(output().pixelWidth(), 2);
  EXPECT_NEAR(output().pixelAt(0, 0).alpha, 128, 1);
}

TEST_F(TintToolTest, ModeNumberMeansThePlatformBlendMode) {
  ASSERT_EQ(run({path("in.png"), "#3366cc", "3", path("out.png")}).status, 0);
  Pixel byNumber = output().pixelAt(0, 0);
  ASSERT_EQ(run({path("in.png"), "#3366cc", "gradient", path("out.png")}).status, 0);
  EXPECT_EQ(output().pixelAt(0, 0), byNumber);
}

TEST_F(TintToolTest, BadInputFailsWithAMessageAndWritesNothing) {
  std::ofstream(path("corrupt.png")) << "\x89PNG\r\n\x1a\n not really";
  struct Case {
    std::vector<std::string> args;
    int status;
    std::string mentions;
  };
  const std::string in = path("in.png"), out = path("out.png");
  const Case cases[] = {
      {{path("missing.png"), "#ff0000", "tint", out}, 1, "missing.png"},
      {{path("corrupt.png"), "#ff0000", "tint", out}, 1, "corrupt PNG"},
      {{in, "#ff0000", "tint", path("no/folder/out.png")}, 1, "out.png"},
      {{in, "red", "tint", out}, 2, "colour"},
      {{in, "#ff00", "tint", out}, 2, "colour"},
      {{in, "#gg0000", "tint", out}, 2, "colour"},
      {{in, "#ff0000", "28", out}, 2, "mode"},
      {{in, "#ff0000", "overlay", out}, 2, "mode"},
      {{in, "#ff0000", "tint", out, "--scale", "0"}, 2, "scale"},
      {{in, "#ff0000", "tint"}, 2, "OUT"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.args.back());
    Outcome outcome = run(c.args);
    EXPECT_EQ(outcome.status, c.status) << outcome.errors;
    EXPECT_NE(outcome.errors.find(c.mentions), std::string::npos) << outcome.errors;
    EXPECT_FALSE(fs::exists(out));
  }
}

}  // namespace
