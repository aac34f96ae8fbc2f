#include "adsdk/creative_source.h"

#include <algorithm>
#include <cmath>

#include "kit/ui/image_context.h"
#include "kit/ui/svg_image.h"

namespace {

AdAnswer failure(GADErrorCode code, std::string reason) {
  return {std::nullopt, GADRequestError(code, std::move(reason))};
}

bool looksLikeSvg(std::string_view bytes) {
  const std::string_view head = bytes.substr(0, 1024);
  return head.find("<svg") != std::string_view::npos;
}

}  // namespace

std::string BundledCreatives::resourceName(const std::string& file) const {
  return folder_.empty() ? file : folder_ + "/" + file;
}

std::optional<std::string> BundledCreatives::manifest(AdAnswer& error) {
  const std::string name = resourceName("manifest.json");
  kit::Result<std::string> text = resources_.read(name, kMaxManifestBytes);
  if (!text) {
    error =
        failure(GADErrorCode::InternalError,
                "the bundled ad manifest is missing or too large: " + resources_.location(name));
    return std::nullopt;
  }
  return std::move(*text);
}

std::optional<std::string> BundledCreatives::picture(const std::string& file, AdAnswer& error) {
  kit::Result<std::string> bytes = AdManifest::isSafeFile(file)
                                       ? resources_.read(resourceName(file), kMaxPictureBytes)
                                       : kit::Error{"not a picture's name"};
  if (!bytes) {
    error = failure(GADErrorCode::InternalError,
                    "the bundled ad picture is missing or too large: " + file);
    return std::nullopt;
  }
  return std::move(*bytes);
}

ServedCreatives::ServedCreatives(std::string manifestURL, int64_t totalTimeoutMs)
    : manifestURL_(std::move(manifestURL)), totalTimeoutMs_(totalTimeoutMs) {
  const size_t slash = manifestURL_.rfind('/');
  const size_t scheme = manifestURL_.find("://");
  base_ = slash != std::string::npos && scheme != std::string::npos && slash > scheme + 2
              ? manifestURL_.substr(0, slash + 1)
              : manifestURL_ + "/";
}

kit::HttpRequest ServedCreatives::request(const std::string& url, size_t maxBytes) const {
  kit::HttpRequest request;
  request.url = url;
  request.totalTimeoutMs = totalTimeoutMs_;
  request.connectTimeoutMs = std::min(kConnectTimeoutMs, totalTimeoutMs_);
  request.maxBodyBytes = maxBytes;
  return request;
}

AdAnswer ServedCreatives::failure(const std::string& url, const kit::HttpResponse& response) {
  const GADErrorCode code =
      response.status >= 400 ? GADErrorCode::ServerError : GADErrorCode::NetworkError;
  return ::failure(code, "the ad server failed for " + url + ": " + response.error);
}

std::optional<std::string> ServedCreatives::pictureURL(const std::string& file,
                                                       AdAnswer& error) const {
  if (!AdManifest::isSafeFile(file)) {
    error = ::failure(GADErrorCode::ServerError, "the ad server named a bad picture: " + file);
    return std::nullopt;
  }
  return base_ + file;
}

std::optional<std::string> FetchedCreatives::picture(const std::string& file, AdAnswer& error) {
  if (file != file_) {
    error = ::failure(GADErrorCode::ServerError, "the ad server named a bad picture: " + file);
    return std::nullopt;
  }
  return picture_;
}

namespace {

// The ad loadCreative() shows and its picture; nullptr when there is none.
const AdManifest::Entry* chooseEntry(const AdManifest& manifest, const AdSlot& slot,
                                     size_t sequence) {
  const std::vector<AdManifest::Entry>& entries = manifest.entries(slot.format);
  return entries.empty() ? nullptr : &entries[sequence % entries.size()];
}

}  // namespace

std::optional<std::string> pictureToLoad(const std::string& manifest, const AdSlot& slot,
                                         size_t sequence) {
  const kit::Result<AdManifest> parsed = AdManifest::parse(manifest, nullptr);
  if (!parsed)
    return std::nullopt;
  const AdManifest::Entry* entry = chooseEntry(*parsed, slot, sequence);
  if (!entry)
    return std::nullopt;
  return AdManifest::pictureFor(*entry, slot.size).file;
}

namespace {

// The pixel size a PNG's header claims (IHDR follows the signature).
std::optional<std::pair<int64_t, int64_t>> pngSize(std::string_view bytes) {
  if (bytes.size() < 24 || bytes.compare(12, 4, "IHDR") != 0)
    return std::nullopt;
  auto big = [&](size_t at) {
    int64_t v = 0;
    for (size_t i = 0; i < 4; ++i)
      v = v << 8 | static_cast<unsigned char>(bytes[at + i]);
    return v;
  };
  return std::make_pair(big(16), big(20));
}

// The pixels per point a picture of `size` points is drawn at: `scale`, or
// less when that many pixels would pass the limits.
double drawingScale(kit::Size size, double scale) {
  if (!(std::isfinite(scale) && scale > 0))
    scale = 1;
  if (!(size.width > 0 && size.height > 0))
    return scale;
  const double side = kit::kMaxSvgPixelSide;
  double fits = std::min({scale, side / size.width, side / size.height});
  const double pixels = size.width * size.height * fits * fits;
  if (pixels > double(kMaxPicturePixels))
    fits *= std::sqrt(double(kMaxPicturePixels) / pixels);
  // Rounding to whole pixels must not step over the limits.
  return fits < scale ? fits * 0.999 : scale;
}

std::optional<kit::Image> decodePng(const std::string& bytes, kit::Size size, double scale,
                                    std::string* error) {
  const auto stored = pngSize(bytes);
  if (stored && stored->first * stored->second > kMaxPicturePixels) {
    if (error)
      *error = "a PNG of " + std::to_string(stored->first) + " x " +
               std::to_string(stored->second) + " pixels, more than the limit of " +
               std::to_string(kMaxPicturePixels) + " pixels";
    return std::nullopt;
  }
  std::optional<kit::Image> image = kit::Image::fromPngData(bytes, scale, error);
  if (!image || !(size.width > 0 && size.height > 0))
    return image;
  const double drawn = drawingScale(size, scale);
  if (image->pixelWidth() <= std::ceil(size.width * drawn) &&
      image->pixelHeight() <= std::ceil(size.height * drawn)) {
    return image;
  }
  kit::ImageContext context(size, drawn);
  context.drawImage(*image, {{0, 0}, size}, kit::BlendMode::Normal);
  return context.takeImage();
}

}  // namespace

std::optional<kit::Image> decodePicture(const std::string& bytes, kit::Size size, double scale,
                                        std::string* error) {
  if (bytes.size() >= 8 && bytes.compare(0, 4, "\x89PNG") == 0)
    return decodePng(bytes, size, scale, error);
  if (looksLikeSvg(bytes))
    return kit::rasterizeSvg(bytes, size, drawingScale(size, scale), error);
  if (error)
    *error = "neither a PNG nor an SVG picture";
  return std::nullopt;
}

AdAnswer loadCreative(CreativeSource& source, const AdSlot& slot, size_t sequence,
                      std::vector<std::string>& warnings) {
  AdAnswer answer;
  const std::optional<std::string> text = source.manifest(answer);
  if (!text)
    return answer;
  const kit::Result<AdManifest> manifest = AdManifest::parse(*text, &warnings);
  if (!manifest)
    return failure(source.brokenContentCode(), manifest.error());
  const AdManifest::Entry* chosen = chooseEntry(*manifest, slot, sequence);
  if (!chosen)
    return failure(GADErrorCode::NoFill, slot.format == AdFormat::Banner
                                             ? "no house ad to show in a banner"
                                             : "no house ad to show full screen");

  const AdManifest::Entry& entry = *chosen;
  const AdManifest::Picture& picture = AdManifest::pictureFor(entry, slot.size);
  const std::optional<std::string> bytes = source.picture(picture.file, answer);
  if (!bytes)
    return answer;
  // Drawn as large as the picture's shape fits in the slot.
  const double fit =
      std::min(slot.size.width / picture.size.width, slot.size.height / picture.size.height);
  const kit::Size drawn{picture.size.width * fit, picture.size.height * fit};
  std::string why;
  std::optional<kit::Image> image = decodePicture(*bytes, drawn, slot.scale, &why);
  if (!image)
    return failure(source.brokenContentCode(),
                   "ad \"" + entry.name + "\": " + picture.file + ": " + why);
  answer.creative =
      AdCreative{entry.name, entry.clickURL, std::make_shared<kit::Image>(std::move(*image))};
  answer.error.reset();
  return answer;
}
