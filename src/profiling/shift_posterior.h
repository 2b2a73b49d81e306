#pragma once

// The posterior distribution of one hospital's shift eta = m + tau z, given the mean m, tau and its
// outcomes: tabulated in z at 25 points within 6 standard deviations of the mode, where it is as
// smooth as a normal density. What lies beyond is left out, some 1e-6 of the most skewed ones. Sums of
// the density at so close points are integrals to all digits (the error of the trapezoidal rule falls
// like exp(-2 (pi / h)^2) with points h standard deviations apart), and the distribution function
// between them, from a rule with the end points' first two derivatives, has an error below 1e-5.

#include <array>
#include <cstddef>

#include "profiling/hospital_likelihood.h"

namespace Hovar {

class ShiftPosterior {
 public:
  /// Requires a hospital with cases and tau > 0.
  ShiftPosterior(const HospitalOutcomes& outcomes, double mean, double tau) noexcept;

  /// P(log K'(eta) <= value): of the hospital's expected events under its own shift. `density` is its
  /// derivative. Calls should come with ascending values, for which the search goes on where the last one
  /// ended.
  double DistributionOfLogEvents(double value, double& density) noexcept;

  /// The posterior mean of K'(eta).
  double MeanEvents() const noexcept { return meanEvents_; }

  /// The eta below which the shift lies with probability u, 0 < u < 1.
  double Quantile(double u) const noexcept;

  /// log K' at the ends of the table.
  double FirstLogEvents() const noexcept { return logEvents_.front(); }
  double LastLogEvents() const noexcept { return logEvents_.back(); }

 private:
  static constexpr std::size_t kPoints = 25;
  using Values = std::array<double, kPoints>;

  double Distribution(std::size_t interval, double fraction) const noexcept;

  double mean_;
  double tau_;
  double firstZ_ = 0;
  double step_ = 0;  // in z
  Values density_{};
  Values densitySlope_{};
  Values distribution_{};
  Values logEvents_{};
  Values zByLogEvents_{};  // dz / d log K'
  double meanEvents_ = 0;
  std::size_t place_ = 0;  // of the last search
};

}  // namespace Hovar
