// The game's entry point in the page: the page's query becomes the command
// line (--seed N, --lang CODE, --device phone|pad, --autoplay); the game
// lives as long as the page, and window.twinlanes reaches it through the
// functions below.
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

#include "app/web/web_game.h"
#include "kit/foundation/preferred_languages.h"

namespace {

// The page's one game.
std::unique_ptr<WebGame>& theGame() {
  static std::unique_ptr<WebGame> game;
  return game;
}

WebGame::Options parse(int argc, char** argv) {
  WebGame::Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string flag = argv[i];
    const bool hasValue = i + 1 < argc;
    if (flag == "--seed" && hasValue) {
      char* end = nullptr;
      const unsigned long seed = std::strtoul(argv[++i], &end, 10);
      if (end && *end == '\0')
        options.seed = static_cast<unsigned>(seed);
    } else if (flag == "--lang" && hasValue) {
      const std::string code = argv[++i];
      if (kit::languageCodeOf(code))
        options.language = code;
    } else if (flag == "--device" && hasValue) {
      const std::string device = argv[++i];
      if (device == "phone" || device == "pad")
        options.device = device;
    } else if (flag == "--autoplay") {
      options.autoplay = true;
    }
  }
  return options;
}

}  // namespace

extern "C" {

const char* twinlanes_dump() {
  static std::string text;
  text = theGame() ? theGame()->dump() : "null";
  return text.c_str();
}

const char* twinlanes_stats() {
  static std::string text;
  text = theGame() ? theGame()->stats() : "null";
  return text.c_str();
}

void twinlanes_reset_stats() {
  if (theGame())
    theGame()->resetStats();
}

void twinlanes_autoplay(int on) {
  if (theGame())
    theGame()->setAutoplay(on != 0);
}
}

int main(int argc, char** argv) {
  theGame() = std::make_unique<WebGame>(parse(argc, argv));
  std::string error;
  if (!theGame()->launch(&error)) {
    std::cerr << "twinlanes: " << error << '\n';
    return 1;
  }
  theGame()->run();
  return 0;
}
