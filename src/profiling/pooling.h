#pragma once

// Estimates and tests of several completed studies as one.

#include <array>
#include <cstddef>
#include <limits>

#include "profiling/effect_model.h"
#include "profiling/hyper_grid.h"
#include "profiling/ratio_interval.h"

namespace Hovar {

/// A number that every completed study estimates, with its variance.
/// Sources: D. B. Rubin, Multiple Imputation for Nonresponse in Surveys (1987), section 3.3, for
/// estimate, variance and degrees of freedom.
struct PooledEstimate {
  double studies = 0;
  double sum = 0;
  double squares = 0;
  double varianceSum = 0;

  void Add(double estimate, double variance) noexcept;
  void Add(const PooledEstimate& other) noexcept;

  /// What follows is not a number without studies.
  double Mean() const noexcept;
  /// Within studies, and between them times 1 + 1 / m.
  double Variance() const noexcept;
  double Degrees() const noexcept;
  Interval Limits95() const noexcept;
  /// Two-sided, of 0.
  double P() const noexcept;
};

/// The maximum of a study's log-likelihood over mu (and gamma) for one tau, as a quadratic function of
/// them, summed over studies; so the sum's maximum is known.
class QuadraticSum {
 public:
  void Add(const EffectFit& best, MeanModel meanModel) noexcept;
  void Add(const QuadraticSum& other) noexcept;
  double Maximum() const noexcept;

 private:
  double constant_ = 0;
  std::array<double, 2> linear_{};
  std::array<double, 3> square_{};  // mu mu, mu gamma, gamma gamma
};

/// What the studies say of tau = 0.
///
/// The likelihood ratio is pooled by the averaged likelihood: with D the ratio statistic of the mean
/// of the studies' log-likelihoods, each hypothesis with its own maximum, and d the mean of their own
/// statistics, r = (m + 1) / (m - 1) (d - D) estimates what the missing data add to the variance, and
/// D / (1 + r) is compared with the F distribution of 1 and df(r) degrees of freedom (K. W. Chan, X.-L.
/// Meng, Multiple improvements of multiple imputation likelihood ratio tests, Statistica Sinica 32,
/// 2022, pages 1489-1514; df of X.-L. Meng, D. B. Rubin, Biometrika 79, 1992, pages 103-111). As tau
/// cannot be negative, half of that probability is meant (S. G. Self, K.-Y. Liang, Journal of the
/// American Statistical Association 82, 1987, pages 605-610; D. O. Stram, J. W. Lee, Biometrics 50,
/// 1994, pages 1171-1177), and 1 where D is 0.
class TauTest {
 public:
  /// Adds a study: its fit, the one without differences, and the maxima for the taus of the grid.
  void Add(const EffectFit& fit, const EffectFit& withoutDifferences,
           const HyperPosterior& posterior, MeanModel meanModel) noexcept;
  void Add(const TauTest& other) noexcept;

  /// The pooled statistic D, at least 0.
  double Statistic(const TauGrid& grid) const noexcept;
  double P(const TauGrid& grid) const noexcept;

 private:
  double MeanStatistic() const noexcept { return statistics_ / studies_; }

  double studies_ = 0;
  double statistics_ = 0;
  QuadraticSum atZero_;
  std::array<QuadraticSum, kTauNodes> slices_;
};

/// The tau below which lies the posterior probability p, given the masses of the intervals.
double TauQuantile(const TauGrid& grid, const std::array<double, kTauNodes>& masses,
                   double p) noexcept;

}  // namespace Hovar
