#pragma once

// Hospitals for tests of the model: outcomes with their risks, and the functions of their shifts.

#include <algorithm>
#include <cstddef>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "foundation/exponential.h"
#include "profiling/eta_layout.h"
#include "profiling/hospital_likelihood.h"
#include "support/files.h"

namespace Testing {

struct ModelHospital {
  std::vector<double> risks;
  double events = 0;
  double covariate = 0;
};

/// Hospitals with their curves, which they point to.
class ModelStudy {
 public:
  explicit ModelStudy(const std::vector<ModelHospital>& hospitals)
      : curves_(std::make_unique<Hovar::CumulantCurve[]>(hospitals.size())) {
    for (std::size_t h = 0; h < hospitals.size(); ++h) {
      const ModelHospital& hospital = hospitals[h];
      const Hovar::EtaGrid grid = Hovar::MakeEtaGrid(hospital.risks, hospital.events, {});
      Hovar::CumulantTable table;
      Hovar::TabulateCumulants(table, grid, hospital.risks);
      curves_[h] = Hovar::CumulantCurve(table, grid, static_cast<double>(hospital.risks.size()));
      outcomes_.push_back({&curves_[h], hospital.events, hospital.covariate});
    }
  }

  const std::vector<Hovar::HospitalOutcomes>& Outcomes() const { return outcomes_; }

 private:
  std::unique_ptr<Hovar::CumulantCurve[]> curves_;
  std::vector<Hovar::HospitalOutcomes> outcomes_;
};

/// A set of tests/reference/hospital_model.R; `useCovariate` or 0 for all.
inline std::vector<ModelHospital> ReferenceHospitals(const std::string& set, bool useCovariate) {
  std::vector<ModelHospital> hospitals;
  for (const auto& row : ReadCsv(ReferenceFile("hospital_model_data.csv"))) {
    if (row[0] == set) {
      hospitals.resize(std::max<std::size_t>(hospitals.size(), std::stoul(row[1])));
      ModelHospital& hospital = hospitals[std::stoul(row[1]) - 1];
      hospital.covariate = useCovariate ? std::stod(row[2]) : 0;
      hospital.risks.insert(hospital.risks.end(), std::stoul(row[4]),
                            1 / (1 + Vell::Exp(-std::stod(row[3]))));
      hospital.events += std::stod(row[5]);
    }
  }
  return hospitals;
}

}  // namespace Testing
