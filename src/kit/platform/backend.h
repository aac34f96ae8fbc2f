#pragma once

#include <memory>

#include "kit/foundation/clock.h"
#include "kit/foundation/device.h"
#include "kit/foundation/http.h"
#include "kit/foundation/log.h"
#include "kit/foundation/url_opener.h"
#include "kit/platform/event_source.h"
#include "kit/platform/frame_host.h"
#include "kit/platform/http_fetcher.h"
#include "kit/platform/image_codec.h"
#include "kit/platform/mail_hand_off.h"
#include "kit/platform/preference_store.h"
#include "kit/platform/render_target.h"
#include "kit/platform/resource_store.h"
#include "kit/platform/text_system.h"

namespace kit {

// Everything a platform supplies to the portable kit, in one place. A backend
// (src/kit/backends/<platform>/) builds one and owns every part; the
// application borrows it for its whole life. Parts a platform lacks stay
// null (no window headless: no render target, events or frame host).
// Built and used on the main thread.
struct Backend {
  virtual ~Backend() = default;

  std::unique_ptr<Clock> clock;
  std::unique_ptr<Log> log;
  std::unique_ptr<Device> device;
  std::unique_ptr<ResourceStore> resources;
  std::unique_ptr<PreferenceStore> preferences;
  std::unique_ptr<HttpClient> http;  // blocking; for workers and tools
  std::unique_ptr<HttpFetcher> fetcher;
  std::unique_ptr<UrlOpener> urlOpener;
  std::unique_ptr<MailHandOff> mail;
  std::unique_ptr<TextSystem> text;
  std::unique_ptr<ImageCodec> images;
  // The window, when there is one.
  std::unique_ptr<RenderTarget> target;
  std::unique_ptr<EventSource> events;
  std::unique_ptr<FrameHost> frames;
};

}  // namespace kit
