#pragma once

#include <string>
#include <string_view>

#include "kit/foundation/bundle.h"

// The links to the game's page in the app store, built in one place. `host`
// is the bundle's "storeHost"; `id` the store identifier as text.
namespace storelink {

// The game's own page, from the bundle's "storeHost" and "appStoreId" (the
// identifier printed as a signed 32-bit number, as the link always was).
std::string gamePage(const kit::Bundle& bundle);
// The page in the store app: itms-apps://HOST/app/idID.
std::string appPage(std::string_view host, std::string_view id);
// The regional page the ad controller opens: itms-apps://HOST/us/app/idID?mt=8.
std::string regionalAppPage(std::string_view host, std::string_view id);
// The web page for store apps too old to take the link: https://HOST/us/app/ID.
std::string webPage(std::string_view host, std::string_view id);

}  // namespace storelink
