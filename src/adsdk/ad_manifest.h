#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "adsdk/ad_network.h"
#include "kit/foundation/geometry.h"
#include "kit/foundation/result.h"

// The list of house ads a network can show, read from a JSON document:
//
//   { "banners":       [ ENTRY, ... ],
//     "interstitials": [ ENTRY, ... ] }
//   ENTRY = { "name": "night-roads", "url": "https://...",
//             "images": [ { "file": "night-320x50.svg", "width": 320, "height": 50 }, ... ] }
//
// Each entry has one picture per shape it was drawn for; the network picks
// the one whose shape is nearest the slot's. A file is a relative path of
// letters, digits, '.', '-', '_' and '/', without "..": a file below the
// bundled ads folder, or a path below the manifest's own URL.
struct AdManifest {
  struct Picture {
    std::string file;
    kit::Size size;  // the shape it was drawn for, in points
  };
  struct Entry {
    std::string name;
    std::string clickURL;  // http or https
    std::vector<Picture> pictures;
  };

  // More than this many entries of one format, or pictures of one entry,
  // are left out.
  static constexpr size_t kMaxEntries = 64;
  static constexpr size_t kMaxPictures = 8;
  // The largest side, in points, a picture may claim.
  static constexpr double kMaxSide = 4096;

  std::vector<Entry> banners;
  std::vector<Entry> interstitials;

  const std::vector<Entry>& entries(AdFormat format) const {
    return format == AdFormat::Banner ? banners : interstitials;
  }

  // Reads a manifest. Text that is not a JSON object is refused with the
  // reason; an entry with a missing or bad field is left out, with one line
  // saying why added to `warnings` when given.
  static kit::Result<AdManifest> parse(std::string_view json,
                                       std::vector<std::string>* warnings = nullptr);

  // Whether `file` is a path a manifest may name.
  static bool isSafeFile(std::string_view file);
  // The picture of `entry` whose shape is nearest `slot`'s (ties: the larger).
  static const Picture& pictureFor(const Entry& entry, kit::Size slot);
};
