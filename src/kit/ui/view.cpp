#include "kit/ui/view.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "kit/ui/animation_track.h"
#include "kit/ui/window.h"

namespace kit {
namespace {

double finite(double v) {
  return std::isfinite(v) ? v : 0;
}

Rect sanitized(Rect r) {
  return {{finite(r.origin.x), finite(r.origin.y)}, {finite(r.size.width), finite(r.size.height)}};
}

AnimatedValue pack(double alpha) {
  return {alpha, 0, 0, 0};
}
AnimatedValue pack(Rect r) {
  return {r.origin.x, r.origin.y, r.size.width, r.size.height};
}
AnimatedValue pack(Color c) {
  return {c.red, c.green, c.blue, c.alpha};
}

// Shares a change of the superview's size along one axis among the flexible
// parts (leading margin, length, trailing margin), in proportion to their
// current sizes, or equally when they are all zero.
void resizeAxis(double& position, double& length, double oldSuper, double newSuper, bool flexLead,
                bool flexLength, bool flexTrail) {
  const double delta = newSuper - oldSuper;
  const int flexible = int(flexLead) + int(flexLength) + int(flexTrail);
  if (delta == 0 || flexible == 0)
    return;
  const double lead = flexLead ? std::max(position, 0.0) : 0;
  const double span = flexLength ? std::max(length, 0.0) : 0;
  const double trail = flexTrail ? std::max(oldSuper - position - length, 0.0) : 0;
  const double total = lead + span + trail;
  auto share = [&](bool flex, double part) {
    if (!flex)
      return 0.0;
    return total > 0 ? delta * part / total : delta / flexible;
  };
  position += share(flexLead, lead);
  length = std::max(0.0, length + share(flexLength, span));
}

std::string number(double v) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%g", v);
  return buffer;
}

}  // namespace

View::View(Rect frame) : frame_(sanitized(frame)) {}

View::~View() = default;

void View::setFrame(Rect frame) {
  frame = sanitized(frame);
  const Rect old = frame_;
  frame_ = frame;
  AnimatorAccess::propertyChanged(*this, AnimatedProperty::Frame, pack(old), pack(frame));
  if (old.size != frame.size)
    resizeSubviews(old.size);
}

void View::setBounds(Rect bounds) {
  bounds = sanitized(bounds);
  boundsOrigin_ = bounds.origin;
  const Point c = center();
  setFrame({{c.x - bounds.size.width / 2, c.y - bounds.size.height / 2}, bounds.size});
}

void View::setCenter(Point center) {
  const Size size = frame_.size;
  setFrame({{finite(center.x) - size.width / 2, finite(center.y) - size.height / 2}, size});
}

Size View::sizeThatFits(Size) const {
  return frame_.size;
}

void View::setAlpha(double alpha) {
  alpha = std::isnan(alpha) ? 0 : std::clamp(alpha, 0.0, 1.0);
  const double old = alpha_;
  alpha_ = alpha;
  AnimatorAccess::propertyChanged(*this, AnimatedProperty::Alpha, pack(old), pack(alpha));
}

void View::setBackgroundColor(Color color) {
  const Color old = backgroundColor_;
  backgroundColor_ = color;
  AnimatorAccess::propertyChanged(*this, AnimatedProperty::BackgroundColor, pack(old), pack(color));
}

void View::resizeSubviews(Size oldSize) {
  if (!autoresizesSubviews_)
    return;
  const auto subviews = subviews_;
  for (const auto& view : subviews)
    view->autoresize(oldSize, frame_.size);
}

void View::autoresize(Size oldSuper, Size newSuper) {
  const unsigned m = autoresizingMask_;
  if (m == Autoresizing::None)
    return;
  Rect f = frame_;
  resizeAxis(f.origin.x, f.size.width, oldSuper.width, newSuper.width,
             m & Autoresizing::FlexibleLeftMargin, m & Autoresizing::FlexibleWidth,
             m & Autoresizing::FlexibleRightMargin);
  resizeAxis(f.origin.y, f.size.height, oldSuper.height, newSuper.height,
             m & Autoresizing::FlexibleTopMargin, m & Autoresizing::FlexibleHeight,
             m & Autoresizing::FlexibleBottomMargin);
  if (f != frame_)
    setFrame(f);
}

// [Hierarchy]

std::shared_ptr<Window> View::window() const {
  const View* top = this;
  while (auto parent = top->superview())
    top = parent.get();
  auto shared = std::const_pointer_cast<View>(top->weak_from_this().lock());
  return std::dynamic_pointer_cast<Window>(shared);
}

void View::addSubview(std::shared_ptr<View> view) {
  insertSubview(std::move(view), subviews_.size());
}

void View::insertSubview(std::shared_ptr<View> view, size_t index) {
  if (!view || isDescendantOfView(view.get()))
    return;
  if (view->superview_.lock().get() == this) {
    std::erase(subviews_, view);
  } else {
    view->removeFromSuperview();
  }
  attach(std::move(view), index);
}

void View::attach(std::shared_ptr<View> view, size_t index) {
  view->superview_ = weak_from_this();
  index = std::min(index, subviews_.size());
  subviews_.insert(subviews_.begin() + static_cast<std::ptrdiff_t>(index), std::move(view));
}

void View::removeFromSuperview() {
  auto parent = superview_.lock();
  if (!parent)
    return;
  auto self = weak_from_this().lock();  // the superview may hold the last reference
  superview_.reset();
  auto& siblings = parent->subviews_;
  siblings.erase(std::remove_if(siblings.begin(), siblings.end(),
                                [this](const auto& v) { return v.get() == this; }),
                 siblings.end());
}

void View::bringSubviewToFront(const std::shared_ptr<View>& view) {
  auto it = std::find(subviews_.begin(), subviews_.end(), view);
  if (it != subviews_.end())
    std::rotate(it, it + 1, subviews_.end());
}

void View::sendSubviewToBack(const std::shared_ptr<View>& view) {
  auto it = std::find(subviews_.begin(), subviews_.end(), view);
  if (it != subviews_.end())
    std::rotate(subviews_.begin(), it, it + 1);
}

bool View::isDescendantOfView(const View* view) const {
  if (!view)
    return false;
  for (const View* v = this; v;) {
    if (v == view)
      return true;
    auto parent = v->superview();
    v = parent.get();  // the parent owns v's siblings; it stays alive through `this`
  }
  return false;
}

std::shared_ptr<View> View::viewWithTag(int tag) {
  if (tag_ == tag)
    return weak_from_this().lock();
  for (const auto& view : subviews_) {
    if (auto found = view->viewWithTag(tag))
      return found;
  }
  return nullptr;
}

// [Input]

std::shared_ptr<View> View::hitTest(Point point) {
  if (hidden_ || alpha_ < 0.01 || !userInteractionEnabled_ || !pointInside(point))
    return nullptr;
  const auto subviews = subviews_;
  for (auto it = subviews.rbegin(); it != subviews.rend(); ++it) {
    const View& v = **it;
    const Point local{point.x - v.frame_.origin.x + v.boundsOrigin_.x,
                      point.y - v.frame_.origin.y + v.boundsOrigin_.y};
    if (auto hit = (*it)->hitTest(local))
      return hit;
  }
  return weak_from_this().lock();
}

bool View::pointInside(Point point) const {
  return point.x >= boundsOrigin_.x && point.x < boundsOrigin_.x + frame_.size.width &&
         point.y >= boundsOrigin_.y && point.y < boundsOrigin_.y + frame_.size.height;
}

Point View::toRoot(Point p) const {
  for (const View* v = this;;) {
    auto parent = v->superview();
    if (!parent)
      return p;
    p = {p.x - v->boundsOrigin_.x + v->frame_.origin.x,
         p.y - v->boundsOrigin_.y + v->frame_.origin.y};
    v = parent.get();
  }
}

Point View::fromRoot(Point p) const {
  std::vector<const View*> chain;  // this view up to, not including, the top
  for (const View* v = this;;) {
    auto parent = v->superview();
    if (!parent)
      break;
    chain.push_back(v);
    v = parent.get();
  }
  for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
    p = {p.x - (*it)->frame_.origin.x + (*it)->boundsOrigin_.x,
         p.y - (*it)->frame_.origin.y + (*it)->boundsOrigin_.y};
  }
  return p;
}

Point View::convertPointToView(Point point, const View* view) const {
  const Point top = toRoot(point);
  return view ? view->fromRoot(top) : top;
}

Point View::convertPointFromView(Point point, const View* view) const {
  return fromRoot(view ? view->toRoot(point) : point);
}

Rect View::convertRectToView(Rect rect, const View* view) const {
  return {convertPointToView(rect.origin, view), rect.size};
}

// [Associated objects]

void View::setAssociatedObject(const void* key, std::any value) {
  // The old value dies after the map is consistent again: its destructor may
  // reach back into this view.
  std::any old;
  auto it = associated_.find(key);
  if (it != associated_.end()) {
    old = std::move(it->second);
    associated_.erase(it);
  }
  if (value.has_value())
    associated_.emplace(key, std::move(value));
}

const std::any* View::associatedObject(const void* key) const {
  auto it = associated_.find(key);
  return it == associated_.end() ? nullptr : &it->second;
}

// [Animation]

double View::presentationAlpha() const {
  const auto& track = AnimatorAccess::slot(*this, AnimatedProperty::Alpha);
  return track ? track->value()[0] : alpha_;
}

Rect View::presentationFrame() const {
  const auto& track = AnimatorAccess::slot(*this, AnimatedProperty::Frame);
  if (!track)
    return frame_;
  const AnimatedValue v = track->value();
  return {{v[0], v[1]}, {v[2], v[3]}};
}

Color View::presentationBackgroundColor() const {
  const auto& track = AnimatorAccess::slot(*this, AnimatedProperty::BackgroundColor);
  if (!track)
    return backgroundColor_;
  const AnimatedValue v = track->value();
  return {v[0], v[1], v[2], v[3]};
}

bool View::hasAnimations() const {
  return std::any_of(tracks_.begin(), tracks_.end(), [](const auto& t) { return t != nullptr; });
}

void View::removeAllAnimations() {
  for (size_t i = 0; i < kAnimatedProperties; ++i) {
    AnimatorAccess::stop(*this, static_cast<AnimatedProperty>(i));
  }
}

// [Dumps]

std::string View::recursiveDescription() const {
  std::string out;
  describeInto(out, 0);
  return out;
}

void View::describeInto(std::string& out, int depth) const {
  const Rect f = presentationFrame();
  out.append(static_cast<size_t>(depth) * 2, ' ');
  out += className() + " frame=(" + number(f.origin.x) + " " + number(f.origin.y) + "; " +
         number(f.size.width) + " " + number(f.size.height) + ")";
  const double a = presentationAlpha();
  if (a != 1)
    out += " alpha=" + number(a);
  if (hidden_)
    out += " hidden";
  if (const std::string extra = describe(); !extra.empty())
    out += " " + extra;
  out += '\n';
  for (const auto& view : subviews_)
    view->describeInto(out, depth + 1);
}

}  // namespace kit
