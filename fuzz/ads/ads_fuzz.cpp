// The ad network's manifest reader and the store's version-lookup reply, fed
// arbitrary bytes: both arrive from servers we do not control.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ads/store_lookup_reply.h"
#include "adsdk/ad_manifest.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);

  std::vector<std::string> warnings;
  if (auto manifest = AdManifest::parse(text, &warnings)) {
    for (AdFormat format : {AdFormat::Banner, AdFormat::Interstitial}) {
      const auto& entries = manifest->entries(format);
      if (entries.size() > AdManifest::kMaxEntries)
        __builtin_trap();
      for (const auto& entry : entries) {
        if (entry.pictures.empty() || entry.pictures.size() > AdManifest::kMaxPictures)
          __builtin_trap();
        for (const auto& picture : entry.pictures) {
          if (!AdManifest::isSafeFile(picture.file))
            __builtin_trap();
        }
        AdManifest::pictureFor(entry, {320, 50});
      }
    }
  }

  // The version lookup reads results[0].version from the same kind of text.
  (void)storeVersionFromReply(text);
  return 0;
}
