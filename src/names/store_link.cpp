#include "names/store_link.h"

#include <cstdint>

namespace storelink {

namespace {

constexpr std::string_view kStoreScheme = "itms-apps://";

std::string join(std::initializer_list<std::string_view> parts) {
  std::string link;
  for (std::string_view part : parts)
    link += part;
  return link;
}

}  // namespace

std::string appPage(std::string_view host, std::string_view id) {
  return join({kStoreScheme, host, "/app/id", id});
}

std::string gamePage(const kit::Bundle& bundle) {
  const std::string host = bundle.infoValue("storeHost").stringValue().value_or("");
  const auto id = static_cast<int32_t>(bundle.infoValue("appStoreId").integerValue());
  return appPage(host, std::to_string(id));
}

std::string regionalAppPage(std::string_view host, std::string_view id) {
  return join({kStoreScheme, host, "/us/app/id", id, "?mt=8"});
}

std::string webPage(std::string_view host, std::string_view id) {
  return join({"https://", host, "/us/app/", id});
}

}  // namespace storelink
