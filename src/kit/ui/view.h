#pragma once

#include <any>
#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "kit/foundation/color.h"
#include "kit/foundation/geometry.h"
#include "kit/ui/animation_options.h"

namespace kit {

class Window;
struct AnimationTrack;

// Resizing rules of a view when its superview's size changes, with the
// platform's bit values (a stored mask of 45 is the four margins).
struct Autoresizing {
  static constexpr unsigned None = 0;
  static constexpr unsigned FlexibleLeftMargin = 1;
  static constexpr unsigned FlexibleWidth = 2;
  static constexpr unsigned FlexibleRightMargin = 4;
  static constexpr unsigned FlexibleTopMargin = 8;
  static constexpr unsigned FlexibleHeight = 16;
  static constexpr unsigned FlexibleBottomMargin = 32;
};

// A rectangle of the retained view tree. Views are always held by shared_ptr
// (create them with std::make_shared): a superview owns its subviews, a
// subview points back weakly. Geometry is in points, origin upper left, y down.
// The properties here are the model values; while an animation runs, the
// renderer and dumps read the presentation*() values instead. Main thread only.
class View : public std::enable_shared_from_this<View> {
 public:
  explicit View(Rect frame = {});
  virtual ~View();
  View(const View&) = delete;
  View& operator=(const View&) = delete;

  // The class name shown in dumps ("View", "Label", ...).
  virtual std::string className() const { return "View"; }

  // [Geometry] The frame is in the superview's bounds coordinates. Changing
  // the size (through frame or bounds) resizes the subviews by their masks.
  // Non-finite coordinates count as 0.
  Rect frame() const { return frame_; }
  void setFrame(Rect frame);
  // Origin (the scroll offset of the content, normally zero) plus the size.
  // Setting the bounds keeps the center and changes the frame's size.
  Rect bounds() const { return {boundsOrigin_, frame_.size}; }
  void setBounds(Rect bounds);
  Point center() const { return {frame_.midX(), frame_.midY()}; }
  void setCenter(Point center);

  unsigned autoresizingMask() const { return autoresizingMask_; }
  void setAutoresizingMask(unsigned mask) { autoresizingMask_ = mask; }
  bool autoresizesSubviews() const { return autoresizesSubviews_; }
  void setAutoresizesSubviews(bool on) { autoresizesSubviews_ = on; }

  // The size that fits in `size`; a plain view answers its own size.
  virtual Size sizeThatFits(Size size) const;

  // [Appearance] Alpha is clamped to 0..1 (NaN counts as 0).
  double alpha() const { return alpha_; }
  void setAlpha(double alpha);
  bool isHidden() const { return hidden_; }
  void setHidden(bool hidden) { hidden_ = hidden; }
  // Default clear (no fill).
  Color backgroundColor() const { return backgroundColor_; }
  void setBackgroundColor(Color color);
  bool clipsToBounds() const { return clipsToBounds_; }
  void setClipsToBounds(bool clips) { clipsToBounds_ = clips; }
  int tag() const { return tag_; }
  void setTag(int tag) { tag_ = tag; }

  // Layer look: rounded corners (also clip the content when clipsToBounds)
  // and a drop shadow of the rounded shape, drawn when shadowOpacity > 0.
  double cornerRadius() const { return cornerRadius_; }
  void setCornerRadius(double radius) { cornerRadius_ = radius; }
  Color shadowColor() const { return shadowColor_; }
  void setShadowColor(Color color) { shadowColor_ = color; }
  double shadowOpacity() const { return shadowOpacity_; }
  void setShadowOpacity(double opacity) { shadowOpacity_ = opacity; }
  double shadowRadius() const { return shadowRadius_; }
  void setShadowRadius(double radius) { shadowRadius_ = radius; }
  Size shadowOffset() const { return shadowOffset_; }
  void setShadowOffset(Size offset) { shadowOffset_ = offset; }

  // [Hierarchy] Subviews in drawing order: the last one is on top.
  std::shared_ptr<View> superview() const { return superview_.lock(); }
  const std::vector<std::shared_ptr<View>>& subviews() const { return subviews_; }
  // The window at the top of this view's tree, or nullptr.
  std::shared_ptr<Window> window() const;

  // Adds `view` on top, taking it from its former superview (a view already
  // here moves to the top). Adding this view or one of its ancestors, or a
  // null view, is ignored.
  void addSubview(std::shared_ptr<View> view);
  // Inserts at `index` (clamped to the subview count), same rules as above.
  void insertSubview(std::shared_ptr<View> view, size_t index);
  // Detaches from the superview. Running animations go on to their end.
  void removeFromSuperview();
  void bringSubviewToFront(const std::shared_ptr<View>& view);
  void sendSubviewToBack(const std::shared_ptr<View>& view);
  bool isDescendantOfView(const View* view) const;
  // The first view with this tag, depth first, this view included.
  std::shared_ptr<View> viewWithTag(int tag);

  // [Input] The deepest visible, interactive view under `point` (in this
  // view's bounds coordinates), or nullptr. Hidden views, views with alpha
  // below 0.01 and views with user interaction off ignore the point, and so
  // do their subviews; subviews outside their superview's bounds are not
  // reached. Model values are used, as the platform does.
  virtual std::shared_ptr<View> hitTest(Point point);
  // Bounds containment, left and top edges in, right and bottom edges out.
  virtual bool pointInside(Point point) const;
  bool isUserInteractionEnabled() const { return userInteractionEnabled_; }
  void setUserInteractionEnabled(bool on) { userInteractionEnabled_ = on; }

  // Point conversion between the bounds coordinates of two views of one tree;
  // nullptr stands for the top of the tree (the window).
  Point convertPointToView(Point point, const View* view) const;
  Point convertPointFromView(Point point, const View* view) const;
  Rect convertRectToView(Rect rect, const View* view) const;

  // [Associated objects] Values kept on the view under a key whose identity
  // alone matters (the address of a static). Setting an empty value clears it.
  // The view owns what it holds and releases it when destroyed.
  void setAssociatedObject(const void* key, std::any value);
  // The value under `key`, or nullptr.
  const std::any* associatedObject(const void* key) const;
  // The value under `key` as a T, or T{} when absent or of another type.
  template <class T>
  T associatedObjectAs(const void* key) const {
    const std::any* value = associatedObject(key);
    const T* typed = value ? std::any_cast<T>(value) : nullptr;
    return typed ? *typed : T{};
  }

  // [Animation] Runs `animations` at once; the alpha, frame (center, bounds
  // size) and background colour changes it makes to any view are animated
  // over `duration` seconds after `delay` seconds. See Animator for timing
  // and completions. A new animation of a property that is already animating
  // takes it over: it starts from the current presentation value with
  // BeginFromCurrentState, otherwise from the model value before the change
  // (the running one's target); the one taken over finishes with false once
  // nothing of it runs any more. Setting such a property outside an animation
  // block stops its animation the same way. A non-positive duration with no
  // delay applies the changes at once (the completion still waits for the next
  // tick). Negative or non-finite times count as 0. With no animator
  // installed, changes apply at once and the completion runs before return.
  static void animateWithDuration(double duration, double delay, AnimationOptions options,
                                  const std::function<void()>& animations,
                                  std::function<void(bool finished)> completion);
  static void animateWithDuration(double duration, const std::function<void()>& animations,
                                  std::function<void(bool finished)> completion);
  static void animateWithDuration(double duration, const std::function<void()>& animations);

  // What is on screen now: the model values, or the animated ones.
  double presentationAlpha() const;
  Rect presentationFrame() const;
  Color presentationBackgroundColor() const;
  bool hasAnimations() const;
  // Stops this view's animations; they finish with false at the next tick.
  void removeAllAnimations();

  // [Dumps] One line per view, indented by depth, with the presentation
  // frame and alpha and the subclass's describe() details.
  std::string recursiveDescription() const;

 protected:
  // Extra details for dumps, e.g. a label's text. Empty by default.
  virtual std::string describe() const { return {}; }

 private:
  friend struct AnimatorAccess;
  static constexpr size_t kAnimatedProperties = 3;  // alpha, frame, background colour

  void attach(std::shared_ptr<View> view, size_t index);
  void resizeSubviews(Size oldSize);
  void autoresize(Size oldSuperSize, Size newSuperSize);
  Point toRoot(Point point) const;
  Point fromRoot(Point point) const;
  void describeInto(std::string& out, int depth) const;

  Rect frame_;
  Point boundsOrigin_;
  double alpha_ = 1;
  bool hidden_ = false;
  Color backgroundColor_ = Color::clear();
  bool clipsToBounds_ = false;
  bool userInteractionEnabled_ = true;
  int tag_ = 0;
  double cornerRadius_ = 0;
  Color shadowColor_ = Color::black();
  double shadowOpacity_ = 0;
  double shadowRadius_ = 3;
  Size shadowOffset_ = {0, -3};
  unsigned autoresizingMask_ = Autoresizing::None;
  bool autoresizesSubviews_ = true;

  std::weak_ptr<View> superview_;
  std::vector<std::shared_ptr<View>> subviews_;
  std::unordered_map<const void*, std::any> associated_;
  std::array<std::shared_ptr<AnimationTrack>, kAnimatedProperties> tracks_;
};

}  // namespace kit
