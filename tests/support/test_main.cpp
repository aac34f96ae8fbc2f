// Every test binary runs with the backend's own text and image systems
// installed (tests assert real font metrics and real pixels). An application
// a test makes installs its services' graphics over these while it lives.
#include <gtest/gtest.h>

#include "kit/foundation/graphics.h"
#include "kit/platform/backend.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const std::shared_ptr<kit::Graphics> graphics = kit::makeBackendGraphics();
  kit::Graphics::setCurrent(graphics.get());
  return RUN_ALL_TESTS();
}
