#pragma once

namespace kit::web {

// Tells the page (Module.twinlanesFirstFrame) that the first frame is on the
// canvas: window.twinlanes.ready turns true and the loading note goes.
void firstFrameShown();

}  // namespace kit::web
