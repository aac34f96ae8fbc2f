#pragma once

#include <optional>
#include <string>

#include "adsdk/ad_manifest.h"
#include "adsdk/ad_network.h"
#include "kit/foundation/http.h"
#include "kit/platform/resource_store.h"

// Where a house-ad network finds its manifest and pictures: resources below
// a folder, or what was downloaded from an ad server. Read on the ad
// network's worker thread; nothing they return is trusted (sizes are
// capped, and the manifest is checked when read).
class CreativeSource {
 public:
  // Largest manifest and picture, in bytes.
  static constexpr size_t kMaxManifestBytes = 64 * 1024;
  static constexpr size_t kMaxPictureBytes = 1 << 20;

  virtual ~CreativeSource() = default;

  // The manifest text, or nullopt with the failure in `error`.
  virtual std::optional<std::string> manifest(AdAnswer& error) = 0;
  // The bytes of `file` (a path the manifest named), or nullopt with the
  // failure in `error`.
  virtual std::optional<std::string> picture(const std::string& file, AdAnswer& error) = 0;
  // The code of a failure caused by what the source holds (a broken
  // manifest or picture).
  virtual GADErrorCode brokenContentCode() const = 0;
};

// manifest.json and the pictures in one folder of a resource store (the
// bundled ads: "ads"; "" for the top of the store). The store is borrowed
// and outlives the source.
class BundledCreatives final : public CreativeSource {
 public:
  BundledCreatives(const kit::ResourceStore& resources, std::string folder)
      : resources_(resources), folder_(std::move(folder)) {}
  std::optional<std::string> manifest(AdAnswer& error) override;
  std::optional<std::string> picture(const std::string& file, AdAnswer& error) override;
  GADErrorCode brokenContentCode() const override { return GADErrorCode::InternalError; }

 private:
  std::string resourceName(const std::string& file) const;

  const kit::ResourceStore& resources_;
  std::string folder_;
};

// A manifest served at an http or https URL, with the pictures at paths
// relative to it: the requests (with short time limits) a network downloads
// them with, and what a failed download means. What arrived goes to
// FetchedCreatives.
class ServedCreatives final {
 public:
  static constexpr int64_t kConnectTimeoutMs = 3000;
  static constexpr int64_t kTotalTimeoutMs = 6000;

  explicit ServedCreatives(std::string manifestURL, int64_t totalTimeoutMs = kTotalTimeoutMs);

  const std::string& manifestURL() const { return manifestURL_; }
  // The URL of a picture the manifest named; nullopt (with the failure in
  // `error`) for a name that could leave the server's folder.
  std::optional<std::string> pictureURL(const std::string& file, AdAnswer& error) const;
  kit::HttpRequest request(const std::string& url, size_t maxBytes) const;
  // Why a response that is not ok brought no ad.
  static AdAnswer failure(const std::string& url, const kit::HttpResponse& response);

 private:
  std::string manifestURL_;
  std::string base_;  // the manifest URL up to its last '/'
  int64_t totalTimeoutMs_;
};

// A served manifest and the one picture of it that was downloaded.
class FetchedCreatives final : public CreativeSource {
 public:
  FetchedCreatives(std::string manifest, std::string file, std::string picture)
      : manifest_(std::move(manifest)), file_(std::move(file)), picture_(std::move(picture)) {}
  std::optional<std::string> manifest(AdAnswer&) override { return manifest_; }
  std::optional<std::string> picture(const std::string& file, AdAnswer& error) override;
  GADErrorCode brokenContentCode() const override { return GADErrorCode::ServerError; }

 private:
  std::string manifest_;
  std::string file_;
  std::string picture_;
};

// The picture loadCreative() would read for the slot from this manifest
// text; nullopt when the manifest is broken or has no ad of the format
// (loadCreative() then says why).
std::optional<std::string> pictureToLoad(const std::string& manifest, const AdSlot& slot,
                                         size_t sequence);

// Loads the `sequence`-th ad of the slot's format (counting round the
// manifest's entries) from `source`, drawn for the slot: the creative, or
// the error saying why there is none. Notes on left-out manifest entries go
// to `warnings`. Runs on any thread.
AdAnswer loadCreative(CreativeSource& source, const AdSlot& slot, size_t sequence,
                      std::vector<std::string>& warnings);

// Most pixels a picture may have, as stored (a PNG's header) or as drawn;
// larger pictures are refused before any pixel memory is taken.
inline constexpr int64_t kMaxPicturePixels = 4096 * 4096;

// A PNG or SVG picture drawn to fit `size` points at `scale`, holding no
// more pixels than it is drawn with: a larger PNG is scaled down here, on
// the caller's thread, so that showing it costs a frame nothing. When `size`
// at `scale` would pass kMaxSvgPixelSide on a side or kMaxPicturePixels in
// all, the picture is drawn at the largest scale that fits and stretched on
// screen. Nullopt with the reason in `error` when the bytes are neither
// kind, broken, or too large.
std::optional<kit::Image> decodePicture(const std::string& bytes, kit::Size size, double scale,
                                        std::string* error);
