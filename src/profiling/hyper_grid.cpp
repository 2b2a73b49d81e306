#include "profiling/hyper_grid.h"

#include <algorithm>
#include <cmath>

#include "foundation/exponential.h"
#include "profiling/quadrature.h"

namespace Hovar {
namespace {

/// Posterior weights below this are left out.
constexpr double kNegligibleWeight = 2e-5;

/// With so many hospitals mu is so well known beside their effects that a rule of 3 nodes does.
constexpr std::size_t kManyHospitals = 500;

/// The fall of the log-likelihood to which the grid of tau reaches.
constexpr double kDrop = 10;

/// The log-likelihood of all hospitals at several points near each other: each mode is the start
/// for the next point's.
class RepeatedLikelihood {
 public:
  explicit RepeatedLikelihood(std::span<const HospitalOutcomes> hospitals)
      : hospitals_(hospitals), modes_(hospitals.size()) {}

  double At(const EffectParameters& at) {
    double sum = 0;
    for (std::size_t h = 0; h < hospitals_.size(); ++h) {
      sum += LogMarginal(hospitals_[h], at.Mean(hospitals_[h]), at.tau, modes_[h]);
    }
    return sum;
  }

 private:
  std::span<const HospitalOutcomes> hospitals_;
  std::vector<Mode> modes_;
};

/// The points of a rule about the maximum of a slice, in the axes in which its curvature is 1, with
/// log weights.
template <typename Rule>
void AppendPoints(std::vector<HyperPoint>& points, RepeatedLikelihood& likelihood,
                  const EffectFit& best, const Rule& rule, MeanModel meanModel) {
  const double sdMu = std::sqrt(best.variance[0]);
  const bool hasGamma = meanModel == MeanModel::kByCovariate;
  const double slope = best.covarianceMuGamma / best.variance[0];
  const double sdGamma =
      hasGamma ? std::sqrt(std::max(0.0, best.variance[1] - slope * best.covarianceMuGamma)) : 0;
  const std::size_t count = rule.nodes.size();
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t j = 0; j < (hasGamma ? count : 1); ++j) {
      EffectParameters at = best.at;
      at.mu += sdMu * rule.nodes[i];
      double weight = sdMu * rule.scaledWeights[i];
      if (hasGamma) {
        at.gamma += slope * sdMu * rule.nodes[i] + sdGamma * rule.nodes[j];
        weight *= sdGamma * rule.scaledWeights[j];
      }
      points.push_back({at, Vell::Exp(likelihood.At(at) - best.logLikelihood) * weight});
    }
  }
}

}  // namespace

TauGrid MakeTauGrid(std::span<const HospitalOutcomes> hospitals, const EffectFit& fit,
                    MeanModel meanModel) noexcept {
  const double least = fit.logLikelihood - kDrop;
  EffectParameters at = fit.at;
  const auto isLikely = [&](double tau) {
    at.tau = tau;
    return StepMeans(hospitals, at, meanModel).logLikelihood >= least;
  };
  constexpr int kBisections = 8;
  constexpr double kSmallestReach = 0.02;
  double inside = fit.at.tau;
  double outside = std::max(kSmallestReach, 1.5 * fit.at.tau);
  while (outside < kTauBound && isLikely(outside)) {
    inside = outside;
    outside *= 1.5;
  }
  double end = kTauBound;
  if (outside < kTauBound) {
    for (int step = 0; step < kBisections; ++step) {
      const double middle = (inside + outside) / 2;
      (isLikely(middle) ? inside : outside) = middle;
    }
    end = outside;
  }
  double first = 0;
  if (fit.at.tau > 0 && !isLikely(0)) {
    inside = fit.at.tau;
    for (int step = 0; step < kBisections; ++step) {
      const double middle = (inside + first) / 2;
      (isLikely(middle) ? inside : first) = middle;
    }
  }
  return {first, (end - first) / kTauNodes};
}

HyperPosterior MakeHyperPosterior(std::span<const HospitalOutcomes> hospitals, const TauGrid& grid,
                                  const EffectFit& fit, MeanModel meanModel) {
  HyperPosterior posterior;
  posterior.fit = fit;
  const auto nearest = static_cast<std::size_t>(
      std::clamp((fit.at.tau - grid.first) / grid.width, 0.0, kTauNodes - 1.0));
  const auto step = [&](std::size_t j, const EffectFit& from) {
    EffectParameters start = from.at;
    start.tau = grid.Node(j);
    posterior.slices[j].best = StepMeans(hospitals, start, meanModel);
  };
  step(nearest, fit);
  for (std::size_t j = nearest + 1; j < kTauNodes; ++j) {
    step(j, posterior.slices[j - 1].best);
  }
  for (std::size_t j = nearest; j-- > 0;) {
    step(j, posterior.slices[j + 1].best);
  }

  double largest = -HUGE_VAL;
  for (const TauSlice& slice : posterior.slices) {
    largest = std::max(largest, slice.best.logLikelihood);
  }
  RepeatedLikelihood likelihood(hospitals);
  double total = 0;
  for (TauSlice& slice : posterior.slices) {
    const double height = Vell::Exp(slice.best.logLikelihood - largest);
    if (height < kNegligibleWeight) {
      continue;
    }
    const std::size_t begin = posterior.points.size();
    if (meanModel == MeanModel::kPlain && hospitals.size() < kManyHospitals) {
      AppendPoints(posterior.points, likelihood, slice.best, GaussHermite<5>::Rule(), meanModel);
    } else {
      AppendPoints(posterior.points, likelihood, slice.best, GaussHermite<3>::Rule(), meanModel);
    }
    for (std::size_t k = begin; k < posterior.points.size(); ++k) {
      posterior.points[k].weight *= height;
      slice.mass += posterior.points[k].weight;
    }
    total += slice.mass;
  }
  for (TauSlice& slice : posterior.slices) {
    slice.mass /= total;
  }
  std::erase_if(posterior.points,
                [&](const HyperPoint& point) { return point.weight < kNegligibleWeight * total; });
  double kept = 0;
  for (const HyperPoint& point : posterior.points) {
    kept += point.weight;
  }
  for (HyperPoint& point : posterior.points) {
    point.weight /= kept;
  }
  return posterior;
}

}  // namespace Hovar
