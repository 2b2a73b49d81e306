#include "profiling/study_tables.h"

#include "foundation/logarithm.h"
#include "profiling/effect_evidence.h"

namespace Hovar {

HospitalCases GatherCases(std::vector<double>& risks, const CompletedStudy& study,
                          std::int32_t hospital) {
  HospitalCases cases;
  risks.clear();
  for (const double p : study.Probabilities(hospital)) {
    risks.push_back(BoundedRisk(p));
    cases.expected += risks.back();
  }
  for (const std::uint8_t y : study.Outcomes(hospital)) {
    cases.observed += y;
  }
  return cases;
}

void StudyTables::Set(std::size_t hospital, const CumulantTable& table, const EtaGrid& grid,
                      std::span<const double> risks, double observed) {
  const auto patients = static_cast<double>(risks.size());
  curves_[hospital] = CumulantCurve(table, grid, patients);
  outcomes_[hospital] = {&curves_[hospital], observed, 0};
  logCases_[hospital] = risks.empty() ? 0 : Vell::Log(patients);
  double sum = 0;
  for (const double p : risks) {
    sum += Vell::Log(p / (1 - p));
  }
  meanLogOdds_[hospital] = risks.empty() ? 0 : sum / patients;
}

void StudyTables::SetCovariate(MeanModel meanModel) {
  if (meanModel == MeanModel::kPlain) {
    return;
  }
  const std::vector<double> centred = CentredByCases(logCases_, outcomes_);
  for (std::size_t h = 0; h < centred.size(); ++h) {
    outcomes_[h].covariate = centred[h];
  }
}

}  // namespace Hovar
