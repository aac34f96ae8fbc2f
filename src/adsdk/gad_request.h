#pragma once

// What an ad view sends to ask for an ad. House ads need no targeting, so a
// request carries nothing; it exists so that calls read as the SDK's do.
class GADRequest {
 public:
  static GADRequest request() { return GADRequest(); }
};
