#pragma once

#include <string>

// Why a request brought no ad (the SDK's codes).
enum class GADErrorCode {
  InvalidRequest = 0,  // no or malformed ad-unit identifier, no size
  NoFill = 1,          // the network had no ad to give
  NetworkError = 2,    // the ad server could not be reached
  ServerError = 3,     // the ad server's answer was unusable
  Timeout = 5,         // the answer did not come in time
  InternalError = 8,   // the bundled ads are broken
};

// A failed ad request: its code and a sentence a person can read.
class GADRequestError {
 public:
  GADRequestError(GADErrorCode code, std::string reason)
      : code_(code), reason_(std::move(reason)) {}

  GADErrorCode code() const { return code_; }
  const std::string& localizedFailureReason() const { return reason_; }

 private:
  GADErrorCode code_;
  std::string reason_;
};
