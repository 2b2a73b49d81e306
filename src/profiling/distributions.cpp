#include "profiling/distributions.h"

#include <array>
#include <cmath>
#include <span>

#include "foundation/exponential.h"
#include "foundation/logarithm.h"

namespace Hovar {
namespace {

double Polynomial(std::span<const double> descending, double x) noexcept {
  double value = 0;
  for (const double coefficient : descending) {
    value = value * x + coefficient;
  }
  return value;
}

/// P(Z > x), x >= 0.
double UpperTail(double x) noexcept {
  constexpr double kFar = 7.07106781186547;
  constexpr double kZero = 38;
  constexpr double kSqrtTwoPi = 2.506628274631000502;
  if (x > kZero) {
    return 0;
  }
  const double density = Vell::Exp(-x * x / 2);
  if (x < kFar) {
    constexpr std::array<double, 7> kUpper{
        3.52624965998911e-02, 0.700383064443688, 6.37396220353165, 33.912866078383,
        112.079291497871,     221.213596169931,  220.206867912376};
    constexpr std::array<double, 8> kLower{8.83883476483184e-02, 1.75566716318264, 16.064177579207,
                                           86.7807322029461,     296.564248779674, 637.333633378831,
                                           793.826512519948,     440.413735824752};
    return density * Polynomial(kUpper, x) / Polynomial(kLower, x);
  }
  double fraction = x;
  for (int k = 24; k > 0; --k) {
    fraction = x + k / fraction;
  }
  return density / (fraction * kSqrtTwoPi);
}

/// log Gamma(x), x > 0, by Stirling's series from 10 on.
double LogGamma(double x) noexcept {
  constexpr double kLarge = 10;
  constexpr double kHalfLogTwoPi = 0.918938533204672742;
  double shift = 0;
  while (x < kLarge) {
    shift -= Vell::Log(x);
    x += 1;
  }
  const double inverse = 1 / (x * x);
  const double series =
      (1.0 / 12 -
       inverse * (1.0 / 360 - inverse * (1.0 / 1260 - inverse * (1.0 / 1680 - inverse / 1188)))) /
      x;
  return shift + (x - 0.5) * Vell::Log(x) - x + kHalfLogTwoPi + series;
}

/// The continued fraction of the incomplete beta function, by the modified method of Lentz.
double BetaFraction(double a, double b, double x) noexcept {
  constexpr int kMostTerms = 100'000;
  constexpr double kTiny = 1e-300;
  constexpr double kCloseEnough = 1e-15;
  const auto nonZero = [](double value) { return std::fabs(value) < kTiny ? kTiny : value; };
  double c = 1;
  double d = 1 / nonZero(1 - (a + b) * x / (a + 1));
  double fraction = d;
  for (int term = 1; term <= kMostTerms; ++term) {
    const double m = term;
    const double even = m * (b - m) * x / ((a + 2 * m - 1) * (a + 2 * m));
    d = 1 / nonZero(1 + even * d);
    c = nonZero(1 + even / c);
    fraction *= d * c;
    const double odd = -(a + m) * (a + b + m) * x / ((a + 2 * m) * (a + 2 * m + 1));
    d = 1 / nonZero(1 + odd * d);
    c = nonZero(1 + odd / c);
    fraction *= d * c;
    if (std::fabs(d * c - 1) < kCloseEnough) {
      break;
    }
  }
  return fraction;
}

/// The regularised incomplete beta function I_x(a, b); `complement` is 1 - x.
double IncompleteBeta(double a, double b, double x, double complement) noexcept {
  if (x <= 0 || complement <= 0) {
    return x <= 0 ? 0 : 1;
  }
  const double front = Vell::Exp(LogGamma(a + b) - LogGamma(a) - LogGamma(b) + a * Vell::Log(x) +
                                 b * Vell::Log(complement));
  return x < (a + 1) / (a + b + 2) ? front * BetaFraction(a, b, x) / a
                                   : 1 - front * BetaFraction(b, a, complement) / b;
}

}  // namespace

double NormalDistribution(double x) noexcept { return x > 0 ? 1 - UpperTail(x) : UpperTail(-x); }

double StudentTwoSided(double t, double degrees) noexcept {
  constexpr double kNormal = 1e6;
  if (!(degrees < kNormal)) {
    return 2 * UpperTail(t);
  }
  const double total = degrees + t * t;
  return IncompleteBeta(degrees / 2, 0.5, degrees / total, t * t / total);
}

double StudentQuantile(double p, double degrees) noexcept {
  double lower = 0;
  double upper = 1;
  constexpr int kDoublings = 1000;
  for (int k = 0; k < kDoublings && StudentTwoSided(upper, degrees) > p; ++k) {
    lower = upper;
    upper *= 2;
  }
  constexpr int kBisections = 80;
  for (int k = 0; k < kBisections; ++k) {
    const double middle = (lower + upper) / 2;
    (StudentTwoSided(middle, degrees) > p ? lower : upper) = middle;
  }
  return (lower + upper) / 2;
}

}  // namespace Hovar
