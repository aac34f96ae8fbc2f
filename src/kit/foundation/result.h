#pragma once

#include <string>
#include <utility>
#include <variant>

namespace kit {

// Why a fallible call failed, in words fit for a log line or an error message.
struct Error {
  std::string message;
};

// The value of a call that can fail on outside data (a file, a reply, a
// script), or the Error saying why. Callers must look at it:
//
//   kit::Result<Image> image = Image::fromPngData(bytes, scale);
//   if (!image) { log.write(image.error()); return; }
//   use(*image);
template <typename T>
class [[nodiscard]] Result {
 public:
  Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}
  Result(Error error) : state_(std::in_place_index<1>, std::move(error)) {}

  bool ok() const { return state_.index() == 0; }
  explicit operator bool() const { return ok(); }

  // REQUIRES: ok().
  T& value() & { return std::get<0>(state_); }
  const T& value() const& { return std::get<0>(state_); }
  T&& value() && { return std::get<0>(std::move(state_)); }
  T& operator*() & { return value(); }
  const T& operator*() const& { return value(); }
  T&& operator*() && { return std::move(*this).value(); }
  T* operator->() { return &value(); }
  const T* operator->() const { return &value(); }

  // REQUIRES: !ok().
  const std::string& error() const { return std::get<1>(state_).message; }

 private:
  std::variant<T, Error> state_;
};

// Success or the Error saying why not, for calls with nothing to return.
template <>
class [[nodiscard]] Result<void> {
 public:
  Result() = default;
  Result(Error error) : error_(std::move(error)), ok_(false) {}

  bool ok() const { return ok_; }
  explicit operator bool() const { return ok_; }
  // REQUIRES: !ok().
  const std::string& error() const { return error_.message; }

 private:
  Error error_;
  bool ok_ = true;
};

using Status = Result<void>;

}  // namespace kit
