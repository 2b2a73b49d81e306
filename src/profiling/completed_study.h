#pragma once

// Completed studies: copies of a study in which the missing P and X are drawn and the coefficients
// of [Y|X,P=0] are one draw of the chain, so that together they carry what the data leave unknown
// of both (multiple imputation; D. B. Rubin, Multiple Imputation for Nonresponse in Surveys, 1987).
//
// Study m has the seed of chain m of the definition's seed, begins with all missing bits cleared
// and makes its own sweeps: it is the same whichever studies were drawn before, in this process or
// in another one. Study 1 is what a Prediction of the definition draws with the same coefficients,
// as many burn-in sweeps and one step.

#include <cstdint>
#include <span>

#include "data/data_set.h"
#include "foundation/random/chain_seeds.h"
#include "linalg/vector.h"
#include "regression/regression_results.h"

namespace Hovar {

/// The records with P = 0 of a completed study, the cases, in the order of the data file.
struct CompletedStudy {
  Vell::Vector probability;                   // of Y = 1 given X and P = 0, one per case
  Vell::GrowableArray<std::uint8_t> outcome;  // Y, 0 or 1, one per case
  Vell::IndexVector hospitalStart;  // h + 1: first case of each hospital, then their number

  std::int32_t HospitalCount() const noexcept { return hospitalStart.Size() - 1; }
  std::int32_t Cases(std::int32_t hospital) const noexcept {
    return hospitalStart[hospital + 1] - hospitalStart[hospital];
  }
  std::span<const double> Probabilities(std::int32_t hospital) const noexcept {
    return probability.Span().subspan(static_cast<std::size_t>(hospitalStart[hospital]),
                                      static_cast<std::size_t>(Cases(hospital)));
  }
  std::span<const std::uint8_t> Outcomes(std::int32_t hospital) const noexcept {
    return outcome.Span().subspan(static_cast<std::size_t>(hospitalStart[hospital]),
                                  static_cast<std::size_t>(Cases(hospital)));
  }
};

struct CompletedStudySettings {
  Vell::SeedWords seed;     // the definition's; neither word may stand still
  std::int32_t sweeps = 0;  // imputation sweeps of each study, at least 0
  /// Added to the intercept of [P|X] where P and X are imputed, in log-odds: what the ratios would
  /// be if missing P were 1 more or less often than the complete records suggest.
  double shiftOfP = 0;
};

class CompletedStudies {
 public:
  /// Takes [P|X] and the [X|Z] tables from the results. The data set must outlive this, have the
  /// variables of the results and no record with P = 1 and Y = 0.
  /// Errors: "Out of memory".
  CompletedStudies(DataSet& dataSet, const RegressionResults& results,
                   const CompletedStudySettings& settings);

  /// Fills `study` with completed study `number`, counted from 1, for one draw of the coefficients
  /// of [Y|X,P=0], one per variable. Seeds the process's random generator. The data set keeps the
  /// imputed values.
  /// Errors: "Out of memory".
  void Draw(CompletedStudy& study, std::int32_t number, std::span<const double> coefficients);

 private:
  DataSet& dataSet_;
  CompletedStudySettings settings_;
  Vell::Vector pGivenX_;
  Vell::Vector priorTable_;
  Vell::Vector coefficients_;
  Vell::IndexVector scratch_;
};

/// The kept draw, counted from 0 over all chains one after the other, that completed study `study`
/// of `studies`, counted from 1, takes of `draws` kept ones: the middle of its share, so that the
/// studies are evenly spaced and none stands at either end. Where there are more studies than
/// draws, a draw serves several of them.
/// Requires 1 <= study <= studies and draws >= 1.
std::int64_t EvenlySpacedDraw(std::int32_t study, std::int32_t studies,
                              std::int64_t draws) noexcept;

}  // namespace Hovar
