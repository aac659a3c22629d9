// What goes wrong in an authentication, as it was ordered.
#pragma once

#include "hdcp2/Hdcp2State.h"

namespace sim::hdcp2 {

class Faults {
 public:
  explicit Faults(const Hdcp2Order& order) : order_(order) {}

  /// Whether this goes wrong now. Each time counts.
  bool Happens(Hdcp2Fault fault) {
    if (order_.fault != fault) return false;
    if (order_.timesLeft > 0 && --order_.timesLeft == 0) order_.fault = Hdcp2Fault::kNone;
    return true;
  }

  /// What is left of the order.
  const Hdcp2Order& Left() const { return order_; }

 private:
  Hdcp2Order order_;
};

}  // namespace sim::hdcp2
