// twinlanes-tint IN.png COLOR MODE OUT.png [--scale S]
//
// Writes a tinted copy of a PNG: MODE "tint" fills the image's shape with the
// colour, "gradient" lays the colour over the image's shading, a number from 0
// to 27 tints with that blend mode. Exit status 0 on success, 1 when a file
// cannot be read or written, 2 for bad arguments.

#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <string>

#include "kit/foundation/graphics.h"
#include "kit/foundation/strings.h"
#include "kit/platform/backend.h"
#include "kit/ui/screen.h"
#include "ui/image_tint.h"

namespace {

constexpr const char* kProgram = "twinlanes-tint";

// #rrggbb or #rrggbbaa; the '#' may be left out, since an unquoted one starts a
// shell comment.
std::optional<kit::Color> parseColor(std::string text) {
  if (!text.empty() && text[0] == '#')
    text.erase(0, 1);
  if (text.size() != 6 && text.size() != 8)
    return std::nullopt;
  double channels[4] = {0, 0, 0, 1};
  for (size_t i = 0; i < text.size(); i += 2) {
    int high = kit::hexDigitValue(text[i]), low = kit::hexDigitValue(text[i + 1]);
    if (high < 0 || low < 0)
      return std::nullopt;
    channels[i / 2] = (high * 16 + low) / 255.0;
  }
  return kit::Color{channels[0], channels[1], channels[2], channels[3]};
}

struct Mode {
  enum class Kind { Tint, Gradient, Number } kind;
  kit::BlendMode blendMode = kit::BlendMode::DestinationIn;
};

std::optional<Mode> parseMode(const std::string& text) {
  if (text == "tint")
    return Mode{Mode::Kind::Tint};
  if (text == "gradient")
    return Mode{Mode::Kind::Gradient};
  if (text.empty() || text.size() > 2 ||
      text.find_first_not_of("0123456789") != std::string::npos) {
    return std::nullopt;
  }
  auto blendMode = kit::blendModeFromNumber(std::stol(text));
  if (!blendMode)
    return std::nullopt;
  return Mode{Mode::Kind::Number, *blendMode};
}

// Above 16 pixels per point no screen exists, and images grow past what fits.
std::string checkScale(const std::string& text) {
  char* end = nullptr;
  double scale = std::strtod(text.c_str(), &end);
  if (end == text.c_str() || *end != '\0' || !(scale > 0 && scale <= 16)) {
    return "the scale must be a number above 0 and at most 16, not \"" + text + "\"";
  }
  return {};
}

int fail(int status, const std::string& message) {
  std::fprintf(stderr, "%s: %s\n", kProgram, message.c_str());
  return status;
}

int run(int argc, char** argv) {
  CLI::App app{"Writes a tinted copy of a PNG image.", kProgram};
  std::string input, colorText, modeText, output;
  double scale = kit::Screen::kDefaultScale;
  app.add_option("IN", input, "the PNG image to tint")->required();
  app.add_option("COLOR", colorText, "the tint colour, #rrggbb or #rrggbbaa")->required();
  app.add_option("MODE", modeText, "tint, gradient, or a blend mode number from 0 to 27")
      ->required();
  app.add_option("OUT", output, "where to write the tinted PNG")->required();
  app.add_option("--scale", scale,
                 "the screen scale in pixels per point, above 0 and at most 16 (the input is read "
                 "at it too)")
      ->check(CLI::Validator(checkScale, ""))
      ->capture_default_str();
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    return app.exit(e) == 0 ? 0 : 2;
  }

  auto color = parseColor(colorText);
  if (!color)
    return fail(2, "bad colour \"" + colorText + "\": expected #rrggbb or #rrggbbaa");
  auto mode = parseMode(modeText);
  if (!mode) {
    return fail(2, "bad mode \"" + modeText + "\": expected tint, gradient or a number 0 to 27");
  }

  kit::Screen::main().setScale(scale);
  const std::shared_ptr<kit::Graphics> graphics = kit::makeBackendGraphics();
  kit::Graphics::setCurrent(graphics.get());
  std::string error;
  auto image = kit::Image::loadPng(input, scale, &error);
  if (!image)
    return fail(1, error);

  kit::Image tinted = mode->kind == Mode::Kind::Tint ? imageWithTintColor(*image, *color)
                      : mode->kind == Mode::Kind::Gradient
                          ? imageWithGradientTintColor(*image, *color)
                          : imageWithTintColor(*image, *color, mode->blendMode);
  if (!tinted.savePng(output, &error))
    return fail(1, error);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& e) {
    return fail(1, e.what());
  }
}
