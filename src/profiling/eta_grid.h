#pragma once

// Where the functions of a hospital's shift eta are tabulated: 48 nodes on the log-odds scale.
//
// Most of them lie close together over the shifts under which the hospital's outcomes are not all
// but impossible (the core); some more span the shifts that other hospitals have, which matter to
// what is expected of the hospital's patients elsewhere. In each part the nodes are evenly spaced,
// so that the interval of a shift is found without a search.

#include <array>
#include <cstddef>
#include <span>

namespace Hovar {

inline constexpr std::size_t kEtaNodes = 48;
inline constexpr std::size_t kEtaIntervals = kEtaNodes - 1;

class EtaGrid {
 public:
  /// A place within an interval: node + fraction * width, 0 <= fraction <= 1 between the ends of
  /// the grid; below 0 or above 1 beyond them.
  struct Place {
    std::size_t interval;
    double fraction;
    double perWidth;  // 1 / width
  };

  EtaGrid() = default;

  /// Spans first .. last with the core coreFirst .. coreLast within it; all are finite,
  /// first <= coreFirst < coreLast <= last.
  EtaGrid(double first, double coreFirst, double coreLast, double last) noexcept;

  double Node(std::size_t j) const noexcept;
  double First() const noexcept { return first_; }
  double Last() const noexcept { return last_; }
  double Width(std::size_t interval) const noexcept {
    return interval < left_ ? leftWidth_ : interval < right_ ? coreWidth_ : rightWidth_;
  }

  Place Find(double eta) const noexcept {
    if (eta < coreFirst_ && left_ > 0) {
      return FindIn(eta - first_, 0, left_, perLeftWidth_);
    }
    if (eta > coreLast_ && right_ < kEtaIntervals) {
      return FindIn(eta - coreLast_, right_, kEtaIntervals, perRightWidth_);
    }
    return FindIn(eta - coreFirst_, left_, right_, perCoreWidth_);
  }

 private:
  static Place FindIn(double distance, std::size_t begin, std::size_t end,
                      double perWidth) noexcept {
    const double steps = distance * perWidth;
    const auto last = static_cast<int>(end - begin) - 1;
    const int whole = steps < 1 ? 0 : steps >= last ? last : static_cast<int>(steps);
    return {begin + static_cast<std::size_t>(whole), steps - whole, perWidth};
  }

  double first_ = -1;
  double coreFirst_ = -1;
  double coreLast_ = 1;
  double last_ = 1;
  std::size_t left_ = 0;               // the core's first interval
  std::size_t right_ = kEtaIntervals;  // the first one right of it
  double leftWidth_ = 1;
  double coreWidth_ = 2.0 / kEtaIntervals;
  double rightWidth_ = 1;
  double perLeftWidth_ = 1;
  double perCoreWidth_ = kEtaIntervals / 2.0;
  double perRightWidth_ = 1;
};

/// One number per node.
using EtaValues = std::array<double, kEtaNodes>;

/// A function's value and first two derivatives.
struct Derivatives {
  double value = 0;
  double slope = 0;
  double curvature = 0;
};

/// The polynomial of degree 5 that has these derivatives at both ends of an interval; an
/// interpolation by it misses a function f by at most width^6 max |f^(6)| / 46080.
/// Source: J. Stoer, R. Bulirsch, Introduction to Numerical Analysis, 3rd ed. (2002), section
/// 2.1.5 (Hermite interpolation).
class Quintic {
 public:
  Quintic() = default;
  Quintic(const Derivatives& left, const Derivatives& right, double width) noexcept
      : c_(Coefficients(left, right, width)) {}

  double Slope(double x, double perWidth) const noexcept {
    return ((((5 * c_[5] * x + 4 * c_[4]) * x + 3 * c_[3]) * x + 2 * c_[2]) * x + c_[1]) * perWidth;
  }
  double Value(double x) const noexcept {
    return ((((c_[5] * x + c_[4]) * x + c_[3]) * x + c_[2]) * x + c_[1]) * x + c_[0];
  }
  Derivatives At(double x, double perWidth) const noexcept {
    const double slope =
        (((5 * c_[5] * x + 4 * c_[4]) * x + 3 * c_[3]) * x + 2 * c_[2]) * x + c_[1];
    const double curvature = ((20 * c_[5] * x + 12 * c_[4]) * x + 6 * c_[3]) * x + 2 * c_[2];
    return {Value(x), slope * perWidth, curvature * perWidth * perWidth};
  }

 private:
  static std::array<double, 6> Coefficients(const Derivatives& left, const Derivatives& right,
                                            double width) noexcept {
    const double slope = width * left.slope;
    const double curvature = width * width * left.curvature;
    const double a = right.value - (left.value + slope + curvature / 2);
    const double b = width * right.slope - (slope + curvature);
    const double c = width * width * right.curvature - curvature;
    return {left.value,           slope, curvature / 2, 10 * a - 4 * b + c / 2, 7 * b - 15 * a - c,
            6 * a - 3 * b + c / 2};
  }

  std::array<double, 6> c_{};
};

}  // namespace Hovar
