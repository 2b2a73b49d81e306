#include "profiling/profile_summary.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

namespace Hovar {
namespace {

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

/// Mean and 95 % interval of a hospital's ranks: of m draws in ascending order those from which 2.5 %
/// are at most as extreme.
void SummariseRanks(HospitalJudgement& judgement, std::span<const std::uint32_t> ranks,
                    std::size_t hospital, std::size_t hospitals, std::vector<std::uint32_t>& own) {
  own.clear();
  double sum = 0;
  for (std::size_t i = hospital; i < ranks.size(); i += hospitals) {
    own.push_back(ranks[i]);
    sum += ranks[i];
  }
  if (own.empty()) {
    judgement.rank = kNotANumber;
    judgement.rankLimits95 = {kNotANumber, kNotANumber};
    return;
  }
  judgement.rank = sum / static_cast<double>(own.size());
  const std::size_t outside = own.size() / 40;
  const auto at = [&](std::size_t place) {
    std::nth_element(own.begin(), own.begin() + static_cast<std::ptrdiff_t>(place), own.end());
    return static_cast<double>(own[place]);
  };
  judgement.rankLimits95 = {at(outside), at(own.size() - 1 - outside)};
}

/// The variance of a hospital's events in the average hospital, a mean over the studies.
double Information(const RatioEvidence& evidence, const EtaGrid& grid, double mu) {
  const EtaGrid::Place place = grid.Find(std::clamp(mu, grid.First(), grid.Last()));
  const double left = evidence.second[place.interval];
  const double right = evidence.second[place.interval + 1];
  return (left + (right - left) * place.fraction) / evidence.studies;
}

void Flags(HospitalJudgement& judgement, bool hasModel) {
  if (judgement.isSmall) {
    return;
  }
  judgement.byLimits = FlagByP(judgement.ratio.p, judgement.ratio.ratio > 1);
  if (hasModel) {
    judgement.byDifferences =
        FlagByP(judgement.shrunken.predictiveP, judgement.shrunken.isPredictedHigh);
    judgement.byPosterior = FlagByPosterior(judgement.shrunken.aboveOne);
  }
}

void CountFlags(ProfileSummary& summary) {
  for (const HospitalJudgement& judgement : summary.hospitals) {
    if (judgement.isSmall) {
      continue;
    }
    summary.byLimits.Add(judgement.byLimits);
    if (!summary.effects.hasModel) {
      continue;
    }
    summary.byDifferences.Add(judgement.byDifferences);
    summary.byPosterior.Add(judgement.byPosterior);
    const double aboveOne = judgement.shrunken.aboveOne;
    const double wrong = std::min(aboveOne, 1 - aboveOne);
    const Flag flag = judgement.byPosterior;
    summary.byPosterior.byChance += flag == Flag::kNone ? 0 : wrong;
    const bool isStrict = flag == Flag::kVeryHigh || flag == Flag::kVeryLow;
    summary.byPosterior.strictByChance += isStrict ? wrong : 0;
  }
  for (FlagCounts* counts : {&summary.byLimits, &summary.byDifferences}) {
    counts->byChance = kFlagLevel * counts->judged;
    counts->strictByChance = kStrictFlagLevel * counts->judged;
  }
}

}  // namespace

ProfileSummary SummariseProfile(const ProfileEvidence& evidence, const ProfileLayout& layout,
                                const ProfileSettings& settings) {
  const std::size_t count = evidence.ratios.size();
  ProfileSummary summary;
  summary.hospitals.resize(count);
  summary.effects = SummariseEffects(evidence.effects, layout.tauGrid);
  summary.jointDraws = count == 0 ? 0 : static_cast<std::int32_t>(evidence.ranks.size() / count);
  std::vector<double> p;
  std::vector<double> information;
  std::vector<std::uint32_t> own;
  for (std::size_t h = 0; h < count; ++h) {
    HospitalJudgement& judgement = summary.hospitals[h];
    const RatioEvidence& ratio = evidence.ratios[h];
    judgement.ratio = SummariseRatio(ratio, layout.etaGrids[h]);
    p.push_back(judgement.ratio.p);
    const double midShare = judgement.ratio.expected >= kExpectedForMidP ? 0.5 : 1;
    const RatioGrid none;
    judgement.shrunken = SummariseShrunken(evidence.shrunken[h],
                                           layout.hasModel ? layout.ratioGrids[h] : none, midShare);
    if (evidence.shrunken[h].studies > 0) {
      information.push_back(Information(ratio, layout.etaGrids[h], summary.effects.mu));
    }
    // A hospital without cases in any study has draws of a prior alone.
    const bool hasRank = evidence.shrunken[h].studies > 0;
    SummariseRanks(judgement,
                   hasRank ? std::span(evidence.ranks) : std::span<const std::uint32_t>(), h, count,
                   own);
    judgement.isSmall = !(judgement.ratio.expected >= settings.smallest);
    Flags(judgement, summary.effects.hasModel);
  }
  const std::vector<double> q = FalseDiscoveryRates(p);
  for (std::size_t h = 0; h < count; ++h) {
    summary.hospitals[h].q = q[h];
  }
  CountFlags(summary);
  summary.reliability = ReliabilityOfFlags(information, summary.effects.tau, settings.threshold);
  return summary;
}

}  // namespace Hovar
