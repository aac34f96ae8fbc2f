#include <gtest/gtest.h>
#include <sys/stat.h>
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

TEST_F(TintToolTest, OutputGoesThroughAnUnpredictableFileAndNeverThroughLinksFifosOrDevices) {
  // A link planted where the old fixed temporary name was is left alone.
  const std::string victim = path("victim.txt");
  std::ofstream(victim) << "keep";
  std::filesystem::create_symlink(victim, out + ".part");
  ASSERT_EQ(run({in, "#ff3333", "tint", out}), 0) << errors;
  EXPECT_TRUE(kit::Image::loadPng(out));
  std::stringstream kept;
  kept << std::ifstream(victim).rdbuf();
  EXPECT_EQ(kept.str(), "keep");

  // Outputs that are not regular files are refused and stay what they were.
  // (Never a real device here: a tool with this fault, run as root, would
  // replace it for the whole machine.)
  std::filesystem::create_symlink(victim, path("link.png"));
  ASSERT_EQ(::mkfifo(path("fifo.png").c_str(), 0600), 0);
  for (const std::string& target : {path("link.png"), path("fifo.png")}) {
    EXPECT_EQ(run({in, "#ff3333", "tint", target}), 1) << target;
    EXPECT_NE(errors.find("not a regular file"), std::string::npos) << errors;
  }
  EXPECT_TRUE(std::filesystem::is_symlink(path("link.png")));
  EXPECT_TRUE(std::filesystem::is_fifo(path("fifo.png")));
  // Nothing is left behind beside the outputs.
  int files = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(dir.path()))
    ++files;
  EXPECT_EQ(files, 7);  // in, out, out.part, victim, link, fifo, err.txt
}

TEST_F(TintToolTest, ABadChecksumOrAnEmptyImageIsReportedAsSuchNotAsOutOfMemory) {
  std::stringstream good;
  good << std::ifstream(in, std::ios::binary).rdbuf();
  std::string bytes = good.str();
  const size_t data = bytes.find("IDAT") + 4;
  bytes[data + 2] = static_cast<char>(bytes[data + 2] ^ 0xff);  // the checksum no longer holds
  std::ofstream(path("crc.png"), std::ios::binary) << bytes;
  // A header of 0 x 0 pixels, its own checksum right.
  const unsigned char empty[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n', 0,    0,    0,
                                 13,   'I', 'H', 'D', 'R',  0,    0,    0,    0,    0,    0,
                                 0,    0,   8,   6,   0,    0,    0,    0x3b, 0x8b, 0x7c, 0x12};
  std::ofstream(path("empty.png"), std::ios::binary)
      .write(reinterpret_cast<const char*>(empty), sizeof empty);
  for (const char* name : {"crc.png", "empty.png"}) {
    EXPECT_EQ(run({path(name), "#ff0000", "tint", out}), 1) << name;
    EXPECT_NE(errors.find("corrupt PNG"), std::string::npos) << errors;
    EXPECT_EQ(errors.find("memory"), std::string::npos) << errors;
  }
  EXPECT_NE(errors.find("0x0 pixels"), std::string::npos) << errors;
}

}  // namespace
