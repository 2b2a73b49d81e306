#pragma once

// Completed studies written down as hospitals.

#include "model_studies.h"
#include "profiling/completed_study.h"

namespace Testing {

/// The first `events` cases of each hospital have the event: what is computed does not depend on which.
inline Hovar::CompletedStudy MakeCompletedStudy(const std::vector<ModelHospital>& hospitals) {
  Hovar::CompletedStudy study;
  for (const ModelHospital& hospital : hospitals) {
    study.hospitalStart.Append(study.probability.Size());
    for (std::size_t i = 0; i < hospital.risks.size(); ++i) {
      study.probability.Append(hospital.risks[i]);
      study.outcome.Append(static_cast<double>(i) < hospital.events ? 1 : 0);
    }
  }
  study.hospitalStart.Append(study.probability.Size());
  return study;
}

}  // namespace Testing
