#pragma once

// A completed study as the judgement sees it: per hospital its bounded risks, events and the functions of its
// shift.

#include <cstdint>
#include <span>
#include <vector>

#include "profiling/completed_study.h"
#include "profiling/cumulants.h"
#include "profiling/effect_model.h"
#include "profiling/hospital_likelihood.h"

namespace Hovar {

/// The bounded risks, and the events, of the cases of one hospital; the risks are copied into `risks`.
struct HospitalCases {
  double observed = 0;
  double expected = 0;
};
HospitalCases GatherCases(std::vector<double>& risks, const CompletedStudy& study,
                          std::int32_t hospital);

/// The curves of all hospitals and outcomes that point to them.
class StudyTables {
 public:
  explicit StudyTables(std::size_t hospitals)
      : curves_(hospitals), outcomes_(hospitals), logCases_(hospitals), meanLogOdds_(hospitals) {}
  StudyTables(const StudyTables&) = delete;
  StudyTables& operator=(const StudyTables&) = delete;

  /// Tabulates a hospital.
  void Set(std::size_t hospital, const CumulantTable& table, const EtaGrid& grid,
           std::span<const double> risks, double observed);

  /// Takes log cases as the covariate where the model has it. To be called when all are set.
  void SetCovariate(MeanModel meanModel);

  std::span<const HospitalOutcomes> Outcomes() const noexcept { return outcomes_; }
  /// 0 for a hospital without cases.
  std::span<const double> LogCases() const noexcept { return logCases_; }
  std::span<const double> MeanLogOdds() const noexcept { return meanLogOdds_; }

 private:
  std::vector<CumulantCurve> curves_;
  std::vector<HospitalOutcomes> outcomes_;
  std::vector<double> logCases_;
  std::vector<double> meanLogOdds_;
};

}  // namespace Hovar
