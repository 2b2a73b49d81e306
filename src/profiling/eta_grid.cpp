#include "profiling/eta_grid.h"

namespace Hovar {
namespace {

/// Intervals on either side of the core, where there is something to span.
constexpr std::size_t kSide = 8;

}  // namespace

EtaGrid::EtaGrid(double first, double coreFirst, double coreLast, double last) noexcept
    : first_(first), coreFirst_(coreFirst), coreLast_(coreLast), last_(last) {
  const auto isShort = [&](double length) { return length < 1e-3 * (coreLast - coreFirst); };
  if (isShort(coreFirst - first)) {
    coreFirst_ = first_;
  } else {
    left_ = kSide;
    leftWidth_ = (coreFirst_ - first_) / kSide;
  }
  if (isShort(last - coreLast)) {
    coreLast_ = last_;
  } else {
    right_ = kEtaIntervals - kSide;
    rightWidth_ = (last_ - coreLast_) / kSide;
  }
  coreWidth_ = (coreLast_ - coreFirst_) / static_cast<double>(right_ - left_);
  perLeftWidth_ = 1 / leftWidth_;
  perCoreWidth_ = 1 / coreWidth_;
  perRightWidth_ = 1 / rightWidth_;
}

double EtaGrid::Node(std::size_t j) const noexcept {
  if (j < left_) {
    return first_ + static_cast<double>(j) * leftWidth_;
  }
  if (j > right_) {
    return last_ - static_cast<double>(kEtaIntervals - j) * rightWidth_;
  }
  return coreFirst_ + static_cast<double>(j - left_) * coreWidth_;
}

}  // namespace Hovar
