#include "kit/backends/files/file_resource_store.h"

#include "kit/foundation/read_file.h"

namespace kit {

Result<std::string> FileResourceStore::read(std::string_view name, size_t maxBytes) const {
  if (!isSafeName(name))
    return Error{"not a resource name: " + std::string(name)};
  return readSmallFileOrWhy(folder_ / name, maxBytes);
}

bool FileResourceStore::exists(std::string_view name) const {
  std::error_code ec;
  return isSafeName(name) && std::filesystem::is_regular_file(folder_ / name, ec);
}

std::string FileResourceStore::location(std::string_view name) const {
  return (folder_ / name).string();
}

}  // namespace kit
