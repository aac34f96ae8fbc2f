// The game loads its artwork by name and stretches each image into a box of a
// fixed aspect; these checks rasterise every image the way the game does, at
// its phone size, so a missing file, a broken SVG or a wrong viewBox shows up
// here rather than as a blank or squashed sprite.
#include <SDL.h>
#include <SDL_image.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

struct SurfaceFree {
  void operator()(SDL_Surface* s) const { SDL_FreeSurface(s); }
};
using Surface = std::unique_ptr<SDL_Surface, SurfaceFree>;

// One image as the game draws it on a 320 x 568 phone scene.
struct Drawn {
  std::string name;
  double width;
  double height;
};

const std::vector<Drawn>& phoneImages() {
  static const std::vector<Drawn> images = {{"bg", 320, 568},
                                            {"line", 5, 1136},
                                            {"scorebg", 320 / 3.0, 55},
                                            {"car", 56, 42},
                                            {"circle", 48, 31.2},
                                            {"rect", 48, 31.2},
                                            {"fire1", 112, 112},
                                            {"fire2", 112, 112},
                                            {"fire3", 112, 112},
                                            {"fire4", 112, 112},
                                            {"fire5", 112, 112},
                                            {"fire6", 112, 112},
                                            {"play", 320 / 3.0, 320 / 3.0},
                                            {"helpstart", 320 / 6.0, 320 / 6.0},
                                            {"help", 208, 312},
                                            {"gameover", 208, 208 / 4.5},
                                            {"overscorebg", 128, 128 / 1.5},
                                            {"soundon", 48, 48},
                                            {"soundoff", 48, 48}};
  return images;
}

class ArtworkTest : public ::testing::Test {
 protected:
  static std::string imagePath(const std::string& name) {
    return std::string(TWINLANES_RESOURCES) + "/images/" + name + ".svg";
  }

  // Rasterises an SVG at the requested size, as 32-bit RGBA; null on failure.
  static Surface rasterise(const std::string& path, int w, int h) {
    SDL_RWops* rw = SDL_RWFromFile(path.c_str(), "rb");
    if (rw == nullptr)
      return nullptr;
    Surface raw(IMG_LoadSizedSVG_RW(rw, w, h));
    SDL_RWclose(rw);
    if (!raw)
      return nullptr;
    return Surface(SDL_ConvertSurfaceFormat(raw.get(), SDL_PIXELFORMAT_RGBA32, 0));
  }

  static Surface rasterise(const Drawn& d) {
    return rasterise(imagePath(d.name), static_cast<int>(std::lround(d.width)),
                     static_cast<int>(std::lround(d.height)));
  }

  static Uint8 alphaAt(const SDL_Surface* s, int x, int y) {
    const auto* row = static_cast<const Uint8*>(s->pixels) + y * s->pitch;
    return row[x * 4 + 3];
  }

  // Fraction of pixels that are at least partly painted.
  static double coverage(const SDL_Surface* s) {
    long painted = 0;
    for (int y = 0; y < s->h; ++y)
      for (int x = 0; x < s->w; ++x)
        painted += alphaAt(s, x, y) > 0 ? 1 : 0;
    return static_cast<double>(painted) / (static_cast<double>(s->w) * s->h);
  }
};

TEST_F(ArtworkTest, EveryImageRasterisesAtItsDrawnSizeWithoutDistortion) {
  for (const Drawn& phone : phoneImages()) {
    for (int scale : {1, 2}) {
      const Drawn d{phone.name, phone.width * scale, phone.height * scale};
      SCOPED_TRACE(d.name + " x" + std::to_string(scale));
      Surface s = rasterise(d);
      ASSERT_TRUE(s) << IMG_GetError();
      // The rasteriser keeps the SVG's own aspect, so a box of another shape
      // comes back smaller on one axis and the sprite would be stretched. The
      // slack covers rounding the box to whole pixels.
      EXPECT_NEAR(s->w, d.width, std::max(1.5, d.width * 0.015));
      EXPECT_NEAR(s->h, d.height, std::max(1.5, d.height * 0.015));
      EXPECT_GT(coverage(s.get()), 0.1);
    }
  }
}

TEST_F(ArtworkTest, BackgroundCoversTheWholeScene) {
  Surface s = rasterise({"bg", 320, 568});
  ASSERT_TRUE(s);
  for (int y = 0; y < s->h; ++y)
    for (int x = 0; x < s->w; ++x)
      ASSERT_EQ(alphaAt(s.get(), x, y), 255) << x << "," << y;
}

TEST_F(ArtworkTest, LaneLineRepeatsAfterHalfItsHeightSoTheScrollWrapIsSeamless) {
  // The line spans two scene heights and jumps back by one after scrolling it.
  for (int scale : {1, 2}) {
    Surface s = rasterise(imagePath("line"), 5 * scale, 1136 * scale);
    ASSERT_TRUE(s);
    ASSERT_EQ(s->h, 1136 * scale);
    const int half = s->h / 2;
    for (int y = 0; y < half; ++y) {
      for (int x = 0; x < s->w; ++x) {
        ASSERT_NEAR(alphaAt(s.get(), x, y), alphaAt(s.get(), x, y + half), 2)
            << "row " << y << " at scale " << scale;
      }
    }
  }
}

TEST_F(ArtworkTest, CrashFramesAllDifferSoTheFlamesAnimate) {
  std::vector<Surface> frames;
  for (int i = 1; i <= 6; ++i) {
    frames.push_back(rasterise(imagePath("fire" + std::to_string(i)), 112, 112));
    ASSERT_TRUE(frames.back()) << i;
  }
  for (size_t i = 0; i < frames.size(); ++i) {
    const SDL_Surface* a = frames[i].get();
    const SDL_Surface* b = frames[(i + 1) % frames.size()].get();
    EXPECT_NE(std::memcmp(a->pixels, b->pixels, static_cast<size_t>(a->pitch) * a->h), 0)
        << "fire" << i + 1 << " and its successor are identical";
  }
}

TEST_F(ArtworkTest, ApplicationIconExistsAsVectorAndAs256PixelBitmap) {
  Surface vector = rasterise(std::string(TWINLANES_RESOURCES) + "/icons/twinlanes.svg", 64, 64);
  ASSERT_TRUE(vector);
  EXPECT_EQ(vector->w, 64);
  EXPECT_EQ(vector->h, 64);

  const std::string png = std::string(TWINLANES_RESOURCES) + "/icons/twinlanes-256.png";
  Surface bitmap(IMG_Load(png.c_str()));
  ASSERT_TRUE(bitmap) << IMG_GetError();
  EXPECT_EQ(bitmap->w, 256);
  EXPECT_EQ(bitmap->h, 256);
}

}  // namespace
