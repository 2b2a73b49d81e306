#include "profiling/shift_posterior.h"

#include <algorithm>
#include <iterator>

#include "foundation/logarithm.h"
#include "linalg/kernels/exponentials.h"

namespace Hovar {
namespace {

constexpr double kReach = 6;      // standard deviations
constexpr double kLeast = 1e-14;  // of K' beside the number of patients
constexpr double kFlat = 1e-9;    // of K'' beside K'

/// The cubic polynomial with these values and slopes (times the interval's width) at 0 and 1.
double Cubic(double left, double leftSlope, double right, double rightSlope, double x) noexcept {
  const double rise = right - left;
  const double b = 3 * rise - 2 * leftSlope - rightSlope;
  const double c = leftSlope + rightSlope - 2 * rise;
  return left + x * (leftSlope + x * (b + x * c));
}

}  // namespace

ShiftPosterior::ShiftPosterior(const HospitalOutcomes& outcomes, double mean, double tau) noexcept
    : mean_(mean), tau_(tau) {
  const Mode mode = ConditionalMode(outcomes, mean, tau);
  step_ = 2 * kReach / (kPoints - 1) * mode.sd;
  firstZ_ = mode.z - kReach * mode.sd;
  const double atMode = outcomes.LogLikelihood(mean + tau * mode.z).value - mode.z * mode.z / 2;
  Values slope;  // of the log density
  Values second;
  Values events;
  for (std::size_t i = 0; i < kPoints; ++i) {
    const double z = firstZ_ + static_cast<double>(i) * step_;
    const double eta = mean + tau * z;
    const Derivatives k = outcomes.curve->At(eta);
    density_[i] = outcomes.observed * eta - k.value - z * z / 2 - atMode;
    slope[i] = tau * (outcomes.observed - k.slope) - z;
    second[i] = -tau * tau * k.curvature - 1;
    // Where hardly a patient has the event, or hardly one has not, rounding could turn the order.
    events[i] =
        std::max({k.slope, kLeast * outcomes.curve->Patients(), i > 0 ? events[i - 1] : 0.0});
    logEvents_[i] = Vell::Log(events[i]);
    zByLogEvents_[i] = events[i] / (std::max(k.curvature, kFlat * events[i]) * tau);
  }
  Vell::ReplaceByExponentials(density_);
  double sum = 0;
  for (std::size_t i = 0; i < kPoints; ++i) {
    sum += density_[i];
    meanEvents_ += density_[i] * events[i];
  }
  meanEvents_ /= sum;
  for (std::size_t i = 0; i < kPoints; ++i) {
    density_[i] /= sum * step_;
    densitySlope_[i] = density_[i] * slope[i];
    second[i] = density_[i] * (slope[i] * slope[i] + second[i]);
  }
  // The integral of the polynomial that has density and two derivatives at both ends.
  const double h = step_;
  for (std::size_t i = 0; i + 1 < kPoints; ++i) {
    distribution_[i + 1] = distribution_[i] + h / 2 * (density_[i] + density_[i + 1]) +
                           h * h / 10 * (densitySlope_[i] - densitySlope_[i + 1]) +
                           h * h * h / 120 * (second[i] + second[i + 1]);
  }
}

double ShiftPosterior::Distribution(std::size_t interval, double fraction) const noexcept {
  const auto at = [&](std::size_t i) {
    return Derivatives{distribution_[i], density_[i], densitySlope_[i]};
  };
  return std::clamp(Quintic(at(interval), at(interval + 1), step_).Value(fraction), 0.0, 1.0);
}

double ShiftPosterior::DistributionOfLogEvents(double value, double& density) noexcept {
  density = 0;
  if (value <= logEvents_.front()) {
    return 0;
  }
  if (value >= logEvents_.back()) {
    return 1;
  }
  if (value < logEvents_[place_]) {
    place_ = 0;
  }
  while (value >= logEvents_[place_ + 1]) {
    ++place_;
  }
  const double width = logEvents_[place_ + 1] - logEvents_[place_];
  // The place in z, in steps from the interval's left end.
  const double fraction = std::clamp(
      Cubic(0, zByLogEvents_[place_] * width / step_, 1, zByLogEvents_[place_ + 1] * width / step_,
            (value - logEvents_[place_]) / width),
      0.0, 1.0);
  density = Cubic(density_[place_], densitySlope_[place_] * step_, density_[place_ + 1],
                  densitySlope_[place_ + 1] * step_, fraction) *
            (zByLogEvents_[place_] * (1 - fraction) + zByLogEvents_[place_ + 1] * fraction);
  return Distribution(place_, fraction);
}

double ShiftPosterior::Quantile(double u) const noexcept {
  const std::ptrdiff_t below = std::distance(
      distribution_.begin(), std::upper_bound(distribution_.begin(), distribution_.end(), u));
  const auto interval = static_cast<std::size_t>(
      std::clamp<std::ptrdiff_t>(below - 1, 0, static_cast<std::ptrdiff_t>(kPoints) - 2));
  double left = 0;
  double right = 1;
  constexpr int kBisections = 24;
  for (int step = 0; step < kBisections; ++step) {
    const double middle = (left + right) / 2;
    (Distribution(interval, middle) < u ? left : right) = middle;
  }
  const double z = firstZ_ + (static_cast<double>(interval) + (left + right) / 2) * step_;
  return mean_ + tau_ * z;
}

}  // namespace Hovar
