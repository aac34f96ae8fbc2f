#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kit/ui/view.h"

// A round progress view: a ring of dots that light up clockwise from twelve
// o'clock as progress grows. Each dot is a plain view with fully rounded
// corners, so any view renderer draws it. Create it with create(); main
// thread only.
class ProgressRingView : public kit::View {
 private:
  struct Token {
    explicit Token() = default;
  };

 public:
  static constexpr int kDots = 16;

  // A ring `diameter` points across, dots included.
  static std::shared_ptr<ProgressRingView> create(double diameter);
  ProgressRingView(Token, double diameter);
  std::string className() const override { return "ProgressRingView"; }

  double progress() const { return progress_; }
  // Clamped to 0..1 (NaN counts as 0). A dot lights once its whole share of
  // the ring is reached, so only 1 lights them all.
  void setProgress(double progress);
  int litDots() const { return lit_; }
  // In clockwise order from the top.
  const std::vector<std::shared_ptr<kit::View>>& dots() const { return dots_; }

 private:
  std::vector<std::shared_ptr<kit::View>> dots_;
  double progress_ = 0;
  int lit_ = 0;
};
