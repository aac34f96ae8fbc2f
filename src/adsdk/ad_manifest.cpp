#include "adsdk/ad_manifest.h"

#include <cmath>

#include "kit/foundation/json.h"

namespace {

constexpr size_t kMaxNameBytes = 64;
constexpr size_t kMaxURLBytes = 2048;
constexpr size_t kMaxFileBytes = 200;

bool startsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

// http or https, with a host, and nothing a URL opener could misread.
bool isClickURL(std::string_view url) {
  if (url.size() > kMaxURLBytes)
    return false;
  std::string_view rest;
  if (startsWith(url, "https://"))
    rest = url.substr(8);
  else if (startsWith(url, "http://"))
    rest = url.substr(7);
  else
    return false;
  if (rest.empty() || rest.front() == '/')
    return false;
  for (char c : url) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte <= 0x20 || byte == 0x7f || c == '"' || c == '<' || c == '>' || c == '\\')
      return false;
  }
  return true;
}

bool isName(std::string_view name) {
  if (name.empty() || name.size() > kMaxNameBytes)
    return false;
  for (char c : name) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
      return false;
  }
  return true;
}

std::optional<double> side(const kit::Value& value) {
  const double d = value.doubleValue();
  const bool number = value.ifInteger() || value.ifReal();
  if (!number || !std::isfinite(d) || d <= 0 || d > AdManifest::kMaxSide)
    return std::nullopt;
  return d;
}

// The entry, or the reason it is left out.
std::optional<AdManifest::Entry> readEntry(const kit::Value& value, std::string& why) {
  if (!value.ifDictionary()) {
    why = "not an object";
    return std::nullopt;
  }
  AdManifest::Entry entry;
  const std::string* name = value["name"].ifString();
  if (!name || !isName(*name)) {
    why = "no usable \"name\"";
    return std::nullopt;
  }
  entry.name = *name;
  const std::string* url = value["url"].ifString();
  if (!url || !isClickURL(*url)) {
    why = "\"url\" is not an http or https address";
    return std::nullopt;
  }
  entry.clickURL = *url;
  const kit::Value::Array* pictures = value["images"].ifArray();
  if (!pictures || pictures->empty()) {
    why = "no \"images\"";
    return std::nullopt;
  }
  for (const kit::Value& p : *pictures) {
    if (entry.pictures.size() == AdManifest::kMaxPictures)
      break;
    const std::string* file = p["file"].ifString();
    const auto width = side(p["width"]), height = side(p["height"]);
    if (!file || !AdManifest::isSafeFile(*file) || !width || !height) {
      why = "an image needs a plain relative \"file\" and a positive \"width\" and \"height\"";
      return std::nullopt;
    }
    entry.pictures.push_back({*file, {*width, *height}});
  }
  return entry;
}

void readEntries(const kit::Value& list, std::string_view key, std::vector<AdManifest::Entry>& out,
                 std::vector<std::string>* warnings) {
  if (list.isNil())
    return;
  const kit::Value::Array* entries = list.ifArray();
  if (!entries) {
    if (warnings)
      warnings->push_back("ad manifest: \"" + std::string(key) + "\" is not a list");
    return;
  }
  for (size_t i = 0; i < entries->size(); ++i) {
    if (out.size() == AdManifest::kMaxEntries) {
      if (warnings)
        warnings->push_back("ad manifest: only the first " +
                            std::to_string(AdManifest::kMaxEntries) + " " + std::string(key) +
                            " are used");
      return;
    }
    std::string why;
    if (auto entry = readEntry((*entries)[i], why)) {
      out.push_back(std::move(*entry));
    } else if (warnings) {
      warnings->push_back("ad manifest: " + std::string(key) + "[" + std::to_string(i) +
                          "] left out: " + why);
    }
  }
}

}  // namespace

kit::Result<AdManifest> AdManifest::parse(std::string_view json,
                                          std::vector<std::string>* warnings) {
  const std::optional<kit::Value> document = kit::parseJson(json, 16);
  if (!document)
    return kit::Error{"the ad manifest is not JSON"};
  if (!document->ifDictionary())
    return kit::Error{"the ad manifest is not a JSON object"};
  AdManifest manifest;
  readEntries((*document)["banners"], "banners", manifest.banners, warnings);
  readEntries((*document)["interstitials"], "interstitials", manifest.interstitials, warnings);
  return manifest;
}

bool AdManifest::isSafeFile(std::string_view file) {
  if (file.empty() || file.size() > kMaxFileBytes || file.front() == '/' || file.back() == '/')
    return false;
  for (char c : file) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       c == '.' || c == '-' || c == '_' || c == '/';
    if (!plain)
      return false;
  }
  // No empty, "." or ".." segment.
  size_t start = 0;
  while (start <= file.size()) {
    const size_t end = std::min(file.find('/', start), file.size());
    const std::string_view segment = file.substr(start, end - start);
    if (segment.empty() || segment == "." || segment == "..")
      return false;
    start = end + 1;
  }
  return true;
}

const AdManifest::Picture& AdManifest::pictureFor(const Entry& entry, kit::Size slot) {
  const auto aspect = [](kit::Size s) {
    return s.width > 0 && s.height > 0 ? std::log(s.width / s.height) : 0.0;
  };
  const double wanted = aspect(slot);
  const Picture* best = &entry.pictures.front();
  for (const Picture& p : entry.pictures) {
    const double distance = std::abs(aspect(p.size) - wanted);
    const double bestDistance = std::abs(aspect(best->size) - wanted);
    const bool larger = p.size.width * p.size.height > best->size.width * best->size.height;
    if (distance < bestDistance - 1e-9 || (std::abs(distance - bestDistance) <= 1e-9 && larger))
      best = &p;
  }
  return *best;
}
