#pragma once

#include <memory>
#include <string>

#include "kit/ui/view.h"

// A horizontal bar that fills from the left as progress grows: the view
// itself is the translucent track and one white subview the filled part.
// Built from plain views, so any view renderer draws it. Create it with
// create(); main thread only.
class ProgressBarView : public kit::View {
 private:
  struct Token {
    explicit Token() = default;
  };

 public:
  static std::shared_ptr<ProgressBarView> create(kit::Rect frame);
  ProgressBarView(Token, kit::Rect frame);
  std::string className() const override { return "ProgressBarView"; }

  double progress() const { return progress_; }
  // Clamped to 0..1 (NaN counts as 0); the fill follows at once.
  void setProgress(double progress);
  const std::shared_ptr<kit::View>& fillView() const { return fill_; }

 private:
  std::shared_ptr<kit::View> fill_;
  double progress_ = 0;
};
