#include "ads/store_lookup_reply.h"

#include "kit/foundation/json.h"

std::optional<std::string> storeVersionFromReply(std::string_view reply) {
  const std::optional<kit::Value> document = kit::parseJson(reply);
  if (!document)
    return std::nullopt;
  const kit::Value::Array* results = (*document)["results"].ifArray();
  if (!results || results->empty())
    return std::nullopt;
  const std::string* version = results->front()["version"].ifString();
  if (!version)
    return std::nullopt;
  return *version;
}
