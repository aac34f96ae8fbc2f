#pragma once

#include <optional>
#include <string_view>

#include "kit/platform/image_codec.h"

namespace kit::web {

// PNG and JPEG pictures downloaded with fetch(). The browser decodes them
// only asynchronously, so BrowserHttpFetcher has the page decode one before
// its answer settles (Module.twinlanesPictures.add); the page keeps the
// straight RGBA pixels of the few latest by their exact bytes, and the
// synchronous decoders look them up here. Pictures larger than
// Image::kMaxPngSide a side are not kept. Without a page (node) nothing is
// kept. Main thread only.
void installDownloadedPictures();

// The pixels the page decoded from exactly these bytes; nothing when it
// decoded none (not downloaded, not a picture, too large or dropped since).
std::optional<PixelBuffer> findDownloadedPicture(std::string_view bytes);

}  // namespace kit::web
