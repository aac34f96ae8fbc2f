#pragma once

#include "kit/foundation/color.h"
#include "kit/platform/blend_mode.h"
#include "kit/ui/image.h"

// Tinted copies of an image: a new image of the same size in points at the
// main screen's scale, cut to the source's shape (its alpha). The source is
// only read.

// The source's shape filled with the flat colour (destination-in).
kit::Image imageWithTintColor(const kit::Image& image, const kit::Color& tintColor);

// The colour with the source's light and dark shading kept (overlay), cut to
// the source's shape.
kit::Image imageWithGradientTintColor(const kit::Image& image, const kit::Color& tintColor);

// The tint colour with the source drawn over it in blendMode, then cut to the
// source's shape unless blendMode already did that (destination-in).
kit::Image imageWithTintColor(const kit::Image& image, const kit::Color& tintColor,
                              kit::BlendMode blendMode);
