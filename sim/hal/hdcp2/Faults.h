// Programmed faults of an authentication.
#pragma once

#include "hdcp2/Hdcp2State.h"

namespace sim::hdcp2 {

class Faults {
 public:
  explicit Faults(const Hdcp2Order& order) : order_(order) {}

  /// Returns whether this fault happens now, and counts it if so.
  bool Happens(Hdcp2Fault fault) {
    if (order_.fault != fault) return false;
    if (order_.timesLeft > 0 && --order_.timesLeft == 0) order_.fault = Hdcp2Fault::kNone;
    return true;
  }

  /// The part of the order that remains.
  const Hdcp2Order& Left() const { return order_; }

 private:
  Hdcp2Order order_;
};

}  // namespace sim::hdcp2
