#pragma once

#include "kit/platform/text_system.h"

// Pango's own declaration, so that this header needs none of its headers.
typedef struct _PangoContext PangoContext;

namespace kit {

// The desktop's text: Pango over fontconfig, drawn with Cairo. Holds the
// Pango context every measurement uses (unhinted metrics, unrounded glyph
// positions), made by the first of them: that loads fontconfig (about 10 ms,
// and Pango's loader threads) unless warmUp() did, so a program that shows
// no text pays nothing. Main thread only.
class PangoTextSystem final : public TextSystem {
 public:
  PangoTextSystem();
  ~PangoTextSystem() override;
  PangoTextSystem(const PangoTextSystem&) = delete;
  PangoTextSystem& operator=(const PangoTextSystem&) = delete;

  TextMetrics layout(const TextBlock& block) override;
  TextBitmap render(const TextBlock& block, const TextMetrics& metrics, Size area, double scale,
                    Color color) override;
  double firstBaseline(const TextBlock& block) override;
  void warmUp() override;

 private:
  PangoContext* measuring();

  PangoContext* measuring_ = nullptr;  // owned
};

}  // namespace kit
