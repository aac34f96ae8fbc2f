#pragma once

#include <string>

namespace kit::web {

// Bytes made on the JavaScript side (an encoded image, a measured string's
// pixels) reach C++ through one stash: the JavaScript function leaves them in
// Module.twinlanesStash and returns; takeStash() copies them out and empties
// the stash. Main thread only, one hand-over at a time.
std::string takeStash();

}  // namespace kit::web
