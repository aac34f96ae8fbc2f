#pragma once

#include <filesystem>
#include <string>

namespace kit {

// What the program may ask about the device it runs on. Plain data, filled by
// the host from the chosen device profile and the machine.
struct Device {
  enum class Idiom { Phone = 0, Pad = 1 };

  Idiom userInterfaceIdiom = Idiom::Phone;
  std::string systemVersion = "12";  // the distribution's version number
  std::string model = "x86_64";      // a stable hardware model string
  double screenWidth = 320;          // main screen bounds, points
  double screenHeight = 568;
  double screenScale = 2.0;

  bool isPad() const { return userInterfaceIdiom == Idiom::Pad; }

  // The facts of this machine (version from /etc/os-release, model from DMI
  // or uname); screen values stay as given.
  static Device detect();
  // The same, reading those files below `root` instead of "/".
  static Device detect(const std::filesystem::path& root);
};

}  // namespace kit
