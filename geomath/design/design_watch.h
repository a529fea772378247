#pragma once

#include <algorithm>
#include <functional>

namespace zel_cs::geomath {

/// Tells a caller how far a design is, and asks whether to go on. Shares never fall.
class DesignWatch {
 public:
  explicit DesignWatch(const std::function<bool(double)>& tell) : tell_(tell) {}

  /// What follows is the share from `from` to `to` of all work, in about `steps` steps.
  void Stage(double from, double to, int steps) {
    at_ = from;
    to_ = to;
    step_ = (to - from) / steps;
  }
  /// One step done. False once the caller has asked to stop.
  bool Step() {
    at_ = std::min(at_ + step_, to_);
    told_ = std::max(told_, at_);
    if (!stopped_ && tell_ && !tell_(told_)) stopped_ = true;
    return !stopped_;
  }
  bool Stopped() const { return stopped_; }

 private:
  const std::function<bool(double)>& tell_;
  double at_ = 0, to_ = 1, step_ = 0, told_ = 0;
  bool stopped_ = false;
};

}  // namespace zel_cs::geomath
