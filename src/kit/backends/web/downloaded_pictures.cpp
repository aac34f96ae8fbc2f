#include "kit/backends/web/downloaded_pictures.h"

#include <emscripten/emscripten.h>

#include <cstdint>

#include "kit/backends/web/js_bytes.h"
#include "kit/platform/bitmap.h"
#include "kit/ui/image.h"

// clang-format off
EM_JS(void, tl_pictures_install, (int maxSide, int kept), {
  if (Module.twinlanesPictures || typeof document === 'undefined' ||
      typeof createImageBitmap === 'undefined') return;
  // Oldest first (a Map keeps insertion order); a lookup moves an entry last.
  const entries = new Map();
  // latin1 maps every byte to a code point of its own, so equal keys are
  // equal bytes.
  const keyOf = (bytes) => new TextDecoder('latin1').decode(bytes);
  const isPng = (b) => b.length >= 24 && b[0] === 0x89 && b[1] === 0x50 && b[2] === 0x4e &&
                       b[3] === 0x47;
  const isJpeg = (b) => b.length >= 3 && b[0] === 0xff && b[1] === 0xd8 && b[2] === 0xff;
  // A PNG says its size up front: one too large is not even decoded.
  const pngTooLarge = (b) => {
    const view = new DataView(b.buffer, b.byteOffset, b.length);
    return view.getUint32(16) > maxSide || view.getUint32(20) > maxSide;
  };
  const decode = async (body) => {
    const bitmap = await createImageBitmap(new Blob([body]),
        {premultiplyAlpha: 'none', colorSpaceConversion: 'none'});
    try {
      const width = bitmap.width, height = bitmap.height;
      if (width < 1 || height < 1 || width > maxSide || height > maxSide) return null;
      const canvas = document.createElement('canvas');
      canvas.width = width;
      canvas.height = height;
      const context = canvas.getContext('2d', {willReadFrequently: true});
      context.drawImage(bitmap, 0, 0);
      return {width, height, rgba: context.getImageData(0, 0, width, height).data};
    } finally {
      bitmap.close();
    }
  };
  Module.twinlanesPictures = {
    async add(body) {
      if (!(isPng(body) && !pngTooLarge(body)) && !isJpeg(body)) return;
      const key = keyOf(body);
      if (entries.has(key)) return;
      let picture = null;
      try {
        picture = await decode(body);
      } catch (e) {
        // Not decodable: the ad fails when it is drawn, saying so.
      }
      if (!picture) return;
      entries.set(key, picture);
      while (entries.size > kept) entries.delete(entries.keys().next().value);
    },
    find(bytes) {
      const key = keyOf(bytes);
      const picture = entries.get(key);
      if (!picture) return null;
      entries.delete(key);
      entries.set(key, picture);
      return picture;
    },
  };
});

// The picture's size as width * 65536 + height, its pixels left in the
// stash; 0 when the page has none for these bytes.
EM_JS(int, tl_pictures_find, (const char* bytes, int length), {
  const pictures = Module.twinlanesPictures;
  const picture = pictures && pictures.find(HEAPU8.subarray(bytes, bytes + length));
  if (!picture) return 0;
  Module.twinlanesStash = picture.rgba;
  return picture.width * 65536 + picture.height;
});
// clang-format on

namespace kit::web {
namespace {

// Ads show one banner and one interstitial at a time; a few more cover the
// next ones loaded while those are on screen.
constexpr int kPicturesKept = 6;

static_assert(Image::kMaxPngSide < 32768, "the size crosses as width * 65536 + height");

}  // namespace

void installDownloadedPictures() {
  tl_pictures_install(Image::kMaxPngSide, kPicturesKept);
}

std::optional<PixelBuffer> findDownloadedPicture(std::string_view bytes) {
  const int size = tl_pictures_find(bytes.data(), static_cast<int>(bytes.size()));
  if (size <= 0)
    return std::nullopt;
  PixelBuffer pixels{size / 65536, size % 65536, {}};
  const std::string rgba = takeStash();
  if (rgba.size() != Bitmap::pixelCount(pixels.width, pixels.height) * 4)
    return std::nullopt;
  pixels.rgba.assign(rgba.begin(), rgba.end());
  return pixels;
}

}  // namespace kit::web
