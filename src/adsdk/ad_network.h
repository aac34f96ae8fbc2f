#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "adsdk/gad_request_error.h"
#include "kit/foundation/geometry.h"
#include "kit/ui/image.h"

enum class AdFormat { Banner, Interstitial };

// The place an ad is asked for: its format, ad unit and size in points (the
// banner's frame, or the screen for an interstitial) at `scale` pixels per
// point.
struct AdSlot {
  AdFormat format = AdFormat::Banner;
  std::string adUnitID;
  kit::Size size;
  double scale = 2;
};

// One ad as the network hands it out: its name, the page a tap opens and
// its picture, drawn for the slot it was asked for.
struct AdCreative {
  std::string name;
  std::string clickURL;
  std::shared_ptr<kit::Image> image;  // never changed once made
};

// A network's answer: a creative, or the error saying why there is none.
struct AdAnswer {
  std::optional<AdCreative> creative;
  std::optional<GADRequestError> error;
};

// What the ad views ask of the network behind them. Views hold it weakly;
// whoever set the SDK up owns it. Main thread only.
class AdNetwork {
 public:
  using Completion = std::function<void(const AdAnswer&)>;

  virtual ~AdNetwork() = default;

  // Asks for an ad for `slot`. `done` runs exactly once, on the main thread
  // in a later run-loop pass, never inside this call; it is dropped unrun
  // when the network goes first.
  virtual void requestAd(const AdSlot& slot, Completion done) = 0;
  // The player tapped `creative`: opens its page.
  virtual void openClickThrough(const AdCreative& creative) = 0;
  // `creative` went on screen.
  virtual void recordImpression(AdFormat format, const AdCreative& creative) = 0;
};
