#include "profiling/effect_model.h"

#include <algorithm>
#include <cmath>

namespace Hovar {
namespace {

constexpr std::size_t kParameters = 3;
using Column = std::array<double, kParameters>;
using Square = std::array<Column, kParameters>;

/// The log-likelihood with gradient and Hessian by mu, gamma and tau.
struct Evaluation {
  double value = 0;
  Column gradient{};
  Square hessian{};

  Evaluation(std::span<const HospitalOutcomes> hospitals, const EffectParameters& at) noexcept {
    for (const HospitalOutcomes& outcomes : hospitals) {
      const MarginalLikelihood m = Marginal(outcomes, at.Mean(outcomes), at.tau);
      const double x = outcomes.covariate;
      value += m.value;
      gradient[0] += m.byMean;
      gradient[1] += m.byMean * x;
      gradient[2] += m.byTau;
      hessian[0][0] += m.byMeanMean;
      hessian[1][0] += m.byMeanMean * x;
      hessian[1][1] += m.byMeanMean * x * x;
      hessian[2][0] += m.byMeanTau;
      hessian[2][1] += m.byMeanTau * x;
      hessian[2][2] += m.byTauTau;
    }
  }
};

/// The negative Hessian of the free parameters with 1 on the diagonal for the others, factored as
/// L L^T after what it takes to make it positive definite was added to its diagonal.
class Curvature {
 public:
  Curvature(const Evaluation& evaluation, const std::array<bool, kParameters>& isFree) noexcept {
    Square a{};
    double largest = 1e-8;
    for (std::size_t i = 0; i < kParameters; ++i) {
      for (std::size_t j = 0; j <= i; ++j) {
        a[i][j] = isFree[i] && isFree[j] ? -evaluation.hessian[i][j] : 0;
      }
      largest = std::max(largest, std::fabs(a[i][i]));
    }
    for (std::size_t i = 0; i < kParameters; ++i) {
      a[i][i] = isFree[i] ? a[i][i] : largest;
    }
    double added = 0;
    constexpr int kMostTries = 60;
    for (int tries = 0; tries < kMostTries && !Factor(a, added, 1e-10 * largest); ++tries) {
      added = std::max(1e-3 * largest, 4 * added);
    }
    isExact_ = added == 0;
  }

  /// Nothing had to be added.
  bool IsExact() const noexcept { return isExact_; }

  Column Solve(Column b) const noexcept {
    for (std::size_t i = 0; i < kParameters; ++i) {
      for (std::size_t j = 0; j < i; ++j) {
        b[i] -= l_[i][j] * b[j];
      }
      b[i] /= l_[i][i];
    }
    for (std::size_t i = kParameters; i-- > 0;) {
      for (std::size_t j = i + 1; j < kParameters; ++j) {
        b[i] -= l_[j][i] * b[j];
      }
      b[i] /= l_[i][i];
    }
    return b;
  }

 private:
  bool Factor(const Square& a, double added, double least) noexcept {
    for (std::size_t i = 0; i < kParameters; ++i) {
      for (std::size_t j = 0; j <= i; ++j) {
        double sum = a[i][j] + (i == j ? added : 0);
        for (std::size_t k = 0; k < j; ++k) {
          sum -= l_[i][k] * l_[j][k];
        }
        if (i != j) {
          l_[i][j] = sum / l_[j][j];
        } else if (sum > least) {
          l_[i][i] = std::sqrt(sum);
        } else {
          return false;
        }
      }
    }
    return true;
  }

  Square l_{};
  bool isExact_ = true;
};

EffectParameters Moved(const EffectParameters& at, const Column& step, double share) noexcept {
  // The likelihood is the same for tau and -tau.
  return {at.mu + share * step[0], at.gamma + share * step[1], std::fabs(at.tau + share * step[2])};
}

void StoreVariances(EffectFit& fit, const Curvature& curvature,
                    const std::array<bool, kParameters>& isFree) noexcept {
  for (std::size_t i = 0; i < kParameters; ++i) {
    Column unit{};
    unit[i] = 1;
    const Column column = curvature.Solve(unit);
    fit.variance[i] = isFree[i] ? column[i] : 0;
    if (i == 0 && isFree[1]) {
      fit.covarianceMuGamma = column[1];
    }
  }
}

EffectFit Climb(std::span<const HospitalOutcomes> hospitals, const EffectParameters& start,
                const std::array<bool, kParameters>& isFree) noexcept {
  constexpr int kMostSteps = 60;
  constexpr int kMostHalvings = 30;
  constexpr double kTolerance = 1e-9;
  constexpr double kRounding = 1e-12;
  EffectFit fit{start};
  Evaluation now(hospitals, fit.at);
  for (int step = 0; step < kMostSteps && !fit.converged; ++step) {
    Column gradient{};
    for (std::size_t i = 0; i < kParameters; ++i) {
      gradient[i] = isFree[i] ? now.gradient[i] : 0;
    }
    const Curvature curvature(now, isFree);
    Column move = curvature.Solve(gradient);
    double length = 0;
    for (const double part : move) {
      length = std::max(length, std::fabs(part));
    }
    double share = std::min(1.0, 1 / std::max(length, 1e-300));
    fit.converged = length < kTolerance && curvature.IsExact();
    const double before = now.value;
    for (int halving = 0; halving < kMostHalvings; ++halving) {
      const EffectParameters next = Moved(fit.at, move, share);
      const Evaluation there(hospitals, next);
      if (there.value >= before - kRounding * (1 + std::fabs(before))) {
        fit.at = next;
        now = there;
        break;
      }
      share /= 2;
    }
  }
  fit.logLikelihood = now.value;
  StoreVariances(fit, Curvature(now, isFree), isFree);
  return fit;
}

}  // namespace

bool HasEffectModel(std::span<const HospitalOutcomes> hospitals) noexcept {
  constexpr int kFewest = 3;
  int count = 0;
  double events = 0;
  double patients = 0;
  for (const HospitalOutcomes& outcomes : hospitals) {
    count += outcomes.curve->Patients() > 0 ? 1 : 0;
    events += outcomes.observed;
    patients += outcomes.curve->Patients();
  }
  return count >= kFewest && events > 0 && events < patients;
}

double LogLikelihood(std::span<const HospitalOutcomes> hospitals,
                     const EffectParameters& at) noexcept {
  double sum = 0;
  for (const HospitalOutcomes& outcomes : hospitals) {
    Mode mode;
    sum += LogMarginal(outcomes, at.Mean(outcomes), at.tau, mode);
  }
  return sum;
}

EffectFit FitMeans(std::span<const HospitalOutcomes> hospitals, const EffectParameters& start,
                   MeanModel meanModel) noexcept {
  return Climb(hospitals, start, {true, meanModel == MeanModel::kByCovariate, false});
}

EffectFit StepMeans(std::span<const HospitalOutcomes> hospitals, const EffectParameters& start,
                    MeanModel meanModel) noexcept {
  const std::array<bool, kParameters> isFree = {true, meanModel == MeanModel::kByCovariate, false};
  const Evaluation now(hospitals, start);
  const Column gradient = {now.gradient[0], isFree[1] ? now.gradient[1] : 0, 0};
  const Curvature curvature(now, isFree);
  const Column move = curvature.Solve(gradient);
  EffectFit fit{Moved(start, move, 1)};
  fit.logLikelihood = now.value + (gradient[0] * move[0] + gradient[1] * move[1]) / 2;
  StoreVariances(fit, curvature, isFree);
  fit.converged = curvature.IsExact();
  return fit;
}

EffectFit FitEffects(std::span<const HospitalOutcomes> hospitals, const EffectParameters& start,
                     MeanModel meanModel) noexcept {
  // Without differences the likelihood is concave.
  const EffectFit none = FitMeans(hospitals, {start.mu, start.gamma, 0}, meanModel);
  // Newton's method finds the maximum that it begins near to: without a tau to start from, the best of
  // some is taken.
  EffectParameters best{none.at.mu, none.at.gamma, start.tau};
  if (!(start.tau > 0)) {
    double largest = -HUGE_VAL;
    for (const double tau : {0.05, 0.15, 0.4, 1.0}) {
      const EffectParameters at{none.at.mu, none.at.gamma, tau};
      const double value = LogLikelihood(hospitals, at);
      best.tau = value > largest ? tau : best.tau;
      largest = std::max(largest, value);
    }
  }
  EffectFit fit = Climb(hospitals, best, {true, meanModel == MeanModel::kByCovariate, true});
  constexpr double kSmallestTau = 1e-4;
  if (fit.at.tau < kSmallestTau || fit.logLikelihood <= none.logLikelihood) {
    return none;
  }
  return fit;
}

}  // namespace Hovar
