#pragma once

#include <cstdint>
#include <vector>

#include "profiling/flags.h"
#include "profiling/profile.h"

namespace Hovar {

/// The judgement of one hospital. What does not exist (a ratio without cases, anything of the model
/// without one) is not a number.
struct HospitalJudgement {
  RatioSummary ratio;
  double q = 1;  // false discovery rate of the ratio's p
  ShrunkenSummary shrunken;
  double rank = 0;  // expected; 1 is the hospital with the smallest effect
  Interval rankLimits95;
  bool isSmall = false;  // fewer expected events than the smallest: listed, never flagged
  Flag byLimits = Flag::kNone;
  Flag byDifferences = Flag::kNone;
  Flag byPosterior = Flag::kNone;
};

struct ProfileSummary {
  std::vector<HospitalJudgement> hospitals;
  EffectSummary effects;
  FlagCounts byLimits;
  FlagCounts byDifferences;
  FlagCounts byPosterior;
  FlagReliability reliability;
  std::int32_t jointDraws = 0;
};

/// Requires evidence of at least one study.
/// Errors: std::bad_alloc.
ProfileSummary SummariseProfile(const ProfileEvidence& evidence, const ProfileLayout& layout,
                                const ProfileSettings& settings);

}  // namespace Hovar
