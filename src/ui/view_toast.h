#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "kit/foundation/geometry.h"
#include "kit/foundation/log.h"
#include "kit/ui/image.h"
#include "kit/ui/view.h"

// Toasts on any view: a rounded, translucent black panel with a white message
// (optionally a bold title and an 80 x 80 image) that fades in, stays for a
// while, fades out and removes itself. Nobody keeps a handle on it: the toast
// is an ordinary subview of its host until it goes. Beside it, the activity
// toast: a 100 x 100 panel with a spinner, at most one per host, shown until
// hideToastActivity. Main thread only; timing follows kit::Animator::current()
// (without one, changes apply at once and a toast is gone before the call
// returns).

// Where a toast goes in its host: one of the words "top", "center" and
// "bottom", matched without regard to case; a point that becomes the toast's
// centre in the host's bounds coordinates; or nothing (nil). Any other word,
// and nil, are invalid: the toast then goes to the bottom after the warning
// "Warning: Invalid position for toast." on the toast log.
class ToastPosition {
 public:
  // Nil.
  ToastPosition() = default;
  // Implicit, so that a word or a point reads as a position at the call:
  // makeToast(view, text, 1.5, "center"). A null pointer is nil.
  ToastPosition(const char* word);
  ToastPosition(std::string word) : value_(std::move(word)) {}
  ToastPosition(kit::Point point) : value_(point) {}

  static ToastPosition fromString(std::string word) { return ToastPosition(std::move(word)); }
  static ToastPosition fromPoint(kit::Point point) { return ToastPosition(point); }
  static ToastPosition none() { return {}; }

  // The word or the point, or nullptr when the position is not of that kind.
  const std::string* word() const { return std::get_if<std::string>(&value_); }
  const kit::Point* point() const { return std::get_if<kit::Point>(&value_); }

 private:
  std::variant<std::monostate, std::string, kit::Point> value_;
};

// The log the toast functions write their warnings to. Until the application
// installs one, warnings go to stderr. Returns the previous log (nullptr
// stands for stderr); `log` must outlive its installation.
kit::Log* setToastLog(kit::Log* log);

// [Message toasts] The message, title and image may each be nil; with all
// three nil nothing is shown. The duration is the time in seconds the toast
// stays fully shown, between a 0.2 s fade-in and a 0.2 s fade-out. The short
// forms use 3 seconds at "bottom".
void makeToast(kit::View& view, const std::optional<std::string>& message);
void makeToast(kit::View& view, const std::optional<std::string>& message, double duration,
               const ToastPosition& position);
void makeToast(kit::View& view, const std::optional<std::string>& message, double duration,
               const ToastPosition& position, const std::optional<std::string>& title);
void makeToast(kit::View& view, const std::optional<std::string>& message, double duration,
               const ToastPosition& position, const std::shared_ptr<kit::Image>& image);
void makeToast(kit::View& view, const std::optional<std::string>& message, double duration,
               const ToastPosition& position, const std::optional<std::string>& title,
               const std::shared_ptr<kit::Image>& image);

// Shows any view as a toast: centred at `position`, added on top of the
// host's subviews at alpha 0, faded in, kept, faded out and removed. A null
// toast shows nothing and reports nothing. Toasts are not queued: each one
// keeps its own timing and later ones lie on top.
void showToast(kit::View& view, const std::shared_ptr<kit::View>& toast);
void showToast(kit::View& view, const std::shared_ptr<kit::View>& toast, double duration,
               const ToastPosition& position);

// [Activity toast] Shows the spinner panel (at "center" by default) unless the
// host already has one, including one that is still fading out.
void makeToastActivity(kit::View& view);
void makeToastActivity(kit::View& view, const ToastPosition& position);
// Fades the host's activity panel out from wherever it is and then removes
// it; does nothing when there is none.
void hideToastActivity(kit::View& view);

// [Layout] The point at which to centre `toast` in the host: "top" and
// "bottom" keep 10 points from the host's edge, "center" is the middle of the
// host's bounds size (its origin is not used), a point is returned unchanged.
// An invalid position logs the warning and answers the bottom placement.
kit::Point centerPointForPosition(const kit::View& view, const ToastPosition& position,
                                  const kit::View& toast);

// A new, laid-out toast panel for the host's size (text is measured with the
// real fonts within 0.8 of the host's width less the image, by 0.8 of its
// height), or nullptr when message, title and image are all nil. The caller
// owns it until it is added to a host. The panel's height counts the title
// only through the message below it: with a title and no message the panel is
// 20 points high (100 with an image) and a taller title spills out of it.
std::shared_ptr<kit::View> viewForMessage(const kit::View& view,
                                          const std::optional<std::string>& message,
                                          const std::optional<std::string>& title,
                                          const std::shared_ptr<kit::Image>& image);
