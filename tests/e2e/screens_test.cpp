// What a player sees: the home screen, a run in play and the game-over
// screen, on a phone and on a pad, checked in screenshots of the real game.
#include "e2e_fixture.h"
#include "kit/ui/text_layout.h"

namespace e2e {
namespace {

struct Device {
  std::string name;
  double w, h;   // the scene, in points (= pixels at scale 1)
  double strip;  // the banner strip under it
};

void PrintTo(const Device& d, std::ostream* os) {
  *os << d.name;
}

const auto dashWhite = [](Rgb p) { return p.r > 180 && p.g > 180 && p.b > 180; };
const auto teal = [](Rgb p) { return p.g > p.r + 60 && p.b > p.r + 50; };
const auto dark = [](Rgb p) { return p.brightness() < 70; };
const auto titleOrange = [](Rgb p) { return p.r > 200 && p.g > 120 && p.b < 110; };
// The game-over labels' colour, (0.02, 0.7, 1.0), on the dark panel.
const auto labelCyan = [](Rgb p) { return p.b > 150 && p.b > p.r + 90 && p.g > 80; };

class ScreensTest : public EndToEndTest, public ::testing::WithParamInterface<Device> {
 protected:
  // Scene points (y up) to screenshot pixels.
  double y(double sceneY) const { return GetParam().h - sceneY; }
  Outcome play(const std::string& script) {
    const Device& d = GetParam();
    Outcome r = run({"--scale", "1", "--prefs-dir", prefs()},
                    "seed 5\ndevice " + d.name + " " + std::to_string(int(d.w)) + " " +
                        std::to_string(int(d.h)) + "\nstart\n" + script);
    EXPECT_EQ(r.exitCode, 0) << r.err;
    return r;
  }
  // White lane dashes along the left lane line (x = W/4): bright in play,
  // dimmed under an overlay.
  int dashPixels(const kit::Image& shot) const {
    const double x = GetParam().w * 0.25;
    return count(shot, x - 1, 0, x + 2, GetParam().h, dashWhite);
  }
};

TEST_P(ScreensTest, TheHomeScreenIsDimmedWithThePlayButtonUpAndNothingElse) {
  play("frames 3\nscreenshot " + shot("home.png") + "\n");
  const kit::Image home = screenshot("home.png");
  const Device d = GetParam();
  ASSERT_EQ(home.pixelWidth(), int(d.w));
  ASSERT_EQ(home.pixelHeight(), int(d.h + d.strip));
  EXPECT_EQ(dashPixels(home), 0);  // the dark overlay is up
  // The play button in the middle: a white arrow in a teal disc.
  const double side = d.name == "pad" ? d.w / 4.5 : d.w / 3;
  EXPECT_GT(at(home, d.w / 2, d.h / 2).brightness(), 230);
  EXPECT_TRUE(teal(at(home, d.w / 2 - side * 0.3, d.h / 2)));
}

TEST_P(ScreensTest, InPlayTheRoadIsBrightTheCarsSitOnTheirLanesAndTheScoreShows) {
  const Outcome r = play("tapbutton play\nframes 10\nautoplay on\nwait 3\nscreenshot " +
                         shot("play.png") + "\ndump\n");
  ASSERT_EQ(r.dumps.size(), 1u) << r.out;
  const auto& state = r.dumps[0];
  ASSERT_TRUE(state["startFlag"].get<bool>()) << state.dump();
  const kit::Image playing = screenshot("play.png");
  const Device d = GetParam();
  EXPECT_GT(dashPixels(playing), 60);  // overlay down, lines drawn
  for (const char* car : {"leftCar", "rightCar"}) {
    const double x = state[car]["x"], y = state[car]["y"], w = state[car]["w"], h = state[car]["h"];
    EXPECT_GT(count(playing, x - w / 2, this->y(y + h / 2), x + w / 2, this->y(y - h / 2), teal),
              int(w * h) / 4)
        << car << " at x " << x;
  }
  // The score's digits, black on the white backdrop at the top.
  const double font = d.name == "pad" ? 70 : 40;
  const double sy = y(d.h - font * 0.8);
  EXPECT_GT(count(playing, d.w / 2 - font, sy - font / 2, d.w / 2 + font, sy + font / 2, dark),
            font * 2)
      << "score " << state["labels"]["score"];
}

// How much of `mask` (w × h, row-major) lines up with the label-coloured
// pixels of `shot` around (cx, cy), at the best offset within a few pixels:
// the intersection over the union.
double overlap(const kit::Image& shot, const kit::TextBitmap& text, double cx, double cy) {
  double best = 0;
  for (int dy = -3; dy <= 3; ++dy) {
    for (int dx = -3; dx <= 3; ++dx) {
      const int x0 = int(std::lround(cx - text.width / 2.0)) + dx;
      const int y0 = int(std::lround(cy - text.height / 2.0)) + dy;
      int both = 0, either = 0;
      for (int y = 0; y < text.height; ++y)
        for (int x = 0; x < text.width; ++x) {
          const bool inked = text.rgba[(size_t(y) * text.width + x) * 4 + 3] > 128;
          const auto p = shot.pixelAt(x0 + x, y0 + y);
          const bool seen = labelCyan({p.red, p.green, p.blue});
          both += inked && seen;
          either += inked || seen;
        }
      if (either > 0)
        best = std::max(best, double(both) / either);
    }
  }
  return best;
}

kit::TextBitmap drawn(const std::string& text, double size) {
  kit::TextBlock block;
  block.text = text;
  block.font = kit::Font::fontWithName("Arial-BoldMT", size);
  return kit::TextLayout(block).render({}, 1, kit::Color::white());
}

TEST_P(ScreensTest, TheGameOverScreenShowsTheScoreAndTheNewRecordInRealGlyphs) {
  const Outcome r =
      play("tapbutton play\nframes 10\nautoplay on\nwait 3\nautoplay off\nwait 6\nscreenshot " +
           shot("over.png") + "\ndump\n");
  ASSERT_EQ(r.dumps.size(), 1u) << r.out;
  const auto& state = r.dumps[0];
  ASSERT_TRUE(state["overFlag"].get<bool>());
  ASSERT_EQ(state["layers"]["over"].get<double>(), 1.0);
  ASSERT_GT(state["score"].get<int>(), 0) << "the autoplayer should have scored";
  ASSERT_EQ(state["labels"]["overBest"], "新记录");
  const kit::Image over = screenshot("over.png");
  const Device d = GetParam();
  EXPECT_EQ(dashPixels(over), 0);  // dimmed again
  // The title at the top.
  const double titleH = 0.65 * d.w / 4.5;
  EXPECT_GT(count(over, 0, y(d.h - titleH), d.w, y(d.h - 2 * titleH), titleOrange),
            int(titleH * d.w * 0.05));
  // Score and best lines, by the layer's geometry.
  const bool pad = d.name == "pad";
  const double side = pad ? d.w / 4.5 : d.w / 3.5;
  const double againY = d.h / 2 - 0.4 * side;
  const double scoreSize = pad ? 60 : 35, bestSize = pad ? 40 : 20;
  const double scoreY = againY + side * (!pad && d.h > 500 ? 1.6 : 1.4);
  const double bestY = scoreY - scoreSize / 2 - bestSize / 2;
  EXPECT_GT(count(over, d.w / 2 - scoreSize, y(scoreY) - scoreSize / 2, d.w / 2 + scoreSize,
                  y(scoreY) + scoreSize / 2, labelCyan),
            int(scoreSize * 3));
  // "新记录" is drawn with the CJK font, not as boxes for missing glyphs:
  // the screen matches the text far better than three such boxes.
  const double real = overlap(over, drawn("新记录", bestSize), d.w / 2, y(bestY));
  const double boxes =
      overlap(over, drawn("\U000F0001\U000F0002\U000F0003", bestSize), d.w / 2, y(bestY));
  EXPECT_GT(real, 0.6);
  EXPECT_GT(real, boxes + 0.25) << "real " << real << ", boxes " << boxes;
  // And the play-again button below.
  EXPECT_GT(at(over, d.w / 2, y(againY)).brightness(), 230);
}

INSTANTIATE_TEST_SUITE_P(Devices, ScreensTest,
                         ::testing::Values(Device{"phone", 320, 568, 50},
                                           Device{"pad", 768, 1024, 90}),
                         [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace e2e
