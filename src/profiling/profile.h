#pragma once

// Judging hospitals over completed studies: this is where the parts meet.
//
//     layout = MakeProfileLayout(study 1)         what all studies share: grids, cuts
//     for each study m: JudgeStudy(evidence, m)   sums; studies of a group in their order
//     sum.Add(evidence of each group)             groups in their order
//     SummariseProfile(sum)                       ratios, intervals, flags
//
// A study is needed only while it is judged, so memory does not grow with their number. Sums depend
// on the order in which they are made by their last bits: who shares studies among processes forms
// the same groups whatever the number of processes is.

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "profiling/completed_study.h"
#include "profiling/effect_evidence.h"
#include "profiling/eta_grid.h"
#include "profiling/ratio_interval.h"
#include "profiling/shrunken_ratio.h"

namespace Hovar {

inline constexpr std::size_t kRiskTenths = 10;

struct ProfileSettings {
  double threshold = 1.2;  // above 1
  double smallest = 5;     // expected events below which a hospital is never flagged
  MeanModel meanModel = MeanModel::kPlain;
  Vell::SeedWords seed;             // of the joint draws
  std::int32_t drawsPerStudy = 20;  // of all hospitals' effects together, for the ranks
};

/// What all completed studies have in common, found in the first one.
struct ProfileLayout {
  std::vector<EtaGrid> etaGrids;      // one per hospital
  std::vector<RatioGrid> ratioGrids;  // one per hospital; empty without a model
  bool hasModel = false;
  TauGrid tauGrid;
  EffectParameters start;                          // estimates in the first study
  std::array<double, kRiskTenths - 1> riskCuts{};  // risks, ascending
};

/// Patients with P = 0 of a tenth of risk, summed over studies.
struct TenthOfRisk {
  double cases = 0;
  double observed = 0;
  double expected = 0;
};

/// What studies said, in all.
struct ProfileEvidence {
  std::vector<RatioEvidence> ratios;                         // one per hospital
  std::vector<ShrunkenEvidence> shrunken;                    // one per hospital
  std::vector<std::array<TenthOfRisk, kRiskTenths>> tenths;  // one per hospital
  EffectEvidence effects;
  std::vector<std::uint32_t> ranks;  // of each joint draw those of all hospitals, from 1

  explicit ProfileEvidence(std::size_t hospitals)
      : ratios(hospitals), shrunken(hospitals), tenths(hospitals) {}

  /// Adds what other studies said.
  void Add(const ProfileEvidence& other);
};

/// Chooses the grids. `uncertainEvents` has, per hospital, the number of its records with the
/// outcome whose P is missing.
/// Errors: std::bad_alloc.
ProfileLayout MakeProfileLayout(const CompletedStudy& first,
                                std::span<const std::int32_t> uncertainEvents,
                                const ProfileSettings& settings);

/// Judges completed study `number`, counted from 1, and adds it to the evidence.
/// Errors: std::bad_alloc.
void JudgeStudy(ProfileEvidence& evidence, const CompletedStudy& study, std::int32_t number,
                const ProfileLayout& layout, const ProfileSettings& settings);

/// The records with the outcome and without a P, per hospital.
std::vector<std::int32_t> CountUncertainEvents(const DataSet& dataSet);

}  // namespace Hovar
