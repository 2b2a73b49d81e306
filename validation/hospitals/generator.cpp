#include "hospitals/generator.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace HospitalStudies {
namespace {

constexpr std::size_t kVariables = 6;
constexpr double kIntercept = -2.3;
constexpr std::array<double, kVariables> kOutcome = {0.8, 0.5, -0.4, 1.1, 0.3, 0.6};
constexpr double kPresent = -3.2;
constexpr std::array<double, kVariables> kPresence = {0.6, 0, 0.5, 0.4, 0, 0.3};
constexpr std::array<double, kVariables> kCut = {0.5, 0.0, 0.3, 1.2, -0.5, 0.9};

double Logistic(double t) { return 1 / (1 + std::exp(-t)); }

struct Patient {
  std::size_t hospital = 0;
  std::array<bool, kVariables> x{};
  std::array<bool, kVariables> z{};
  std::array<bool, kVariables> isXMissing{};
  bool p = false;
  bool isPMissing = false;
  bool y = false;
  double logOdds = 0;  // of Y without P, the hospital's effect left out
};

class Generator {
 public:
  Generator(const Scenario& scenario, std::mt19937_64& random)
      : scenario_(scenario), random_(random) {}

  std::vector<Patient> Patients(std::vector<Truth>& truth) {
    std::vector<Patient> patients;
    truth.resize(scenario_.hospitals);
    for (std::size_t h = 0; h < truth.size(); ++h) {
      truth[h].effect = scenario_.sd * Normal();
      if (scenario_.hasOutliers && h % 25 < 2) {
        truth[h].effect += h % 25 == 0 ? 0.9 : -0.9;
      }
      truth[h].missingShare = h % 10 == 9 ? scenario_.missingPOfSome : scenario_.missingP;
      const double size = std::clamp(std::exp(4.7 + 1.1 * Normal()), 5.0, 1000.0);
      const double caseMix = 0.4 * Normal();
      for (int i = 0; i < static_cast<int>(size); ++i) {
        patients.push_back(OnePatient(h, caseMix, truth[h]));
      }
    }
    return patients;
  }

 private:
  double Normal() { return normal_(random_); }
  bool Chance(double p) { return uniform_(random_) < p; }

  Patient OnePatient(std::size_t hospital, double caseMix, const Truth& truth) {
    Patient patient;
    patient.hospital = hospital;
    const double frailty = 0.6 * Normal() + caseMix;
    double presence = kPresent;
    patient.logOdds = kIntercept;
    for (std::size_t j = 0; j < kVariables; ++j) {
      patient.x[j] = frailty + 0.8 * Normal() > kCut[j];
      patient.z[j] = patient.x[j] != Chance(0.08);
      patient.isXMissing[j] = Chance(scenario_.missingX);
      presence += patient.x[j] ? kPresence[j] : 0;
      patient.logOdds += patient.x[j] ? kOutcome[j] : 0;
    }
    patient.p = Chance(Logistic(presence));
    patient.y = patient.p || Chance(Logistic(patient.logOdds + truth.effect));
    patient.isPMissing = Chance(truth.missingShare);
    return patient;
  }

  const Scenario& scenario_;
  std::mt19937_64& random_;
  std::normal_distribution<double> normal_;
  std::uniform_real_distribution<double> uniform_;
};

/// Sums over the cases: true risks, reference risks (a shift of all log-odds that gives as many events), and
/// those in hospitals drawn from all.
void FillTruth(std::vector<Truth>& truth, const std::vector<Patient>& patients, double sd) {
  double lower = -3;
  double upper = 3;
  for (int step = 0; step < 50; ++step) {
    const double shift = (lower + upper) / 2;
    double excess = 0;
    for (const Patient& patient : patients) {
      if (!patient.p) {
        excess += Logistic(patient.logOdds + shift) -
                  Logistic(patient.logOdds + truth[patient.hospital].effect);
      }
    }
    (excess < 0 ? lower : upper) = shift;
  }
  std::vector<double> risk(truth.size());
  std::vector<double> drawn(truth.size());
  for (const Patient& patient : patients) {
    if (patient.p) {
      continue;
    }
    Truth& own = truth[patient.hospital];
    own.cases += 1;
    own.events += patient.y ? 1 : 0;
    own.expected += Logistic(patient.logOdds + lower);
    risk[patient.hospital] += Logistic(patient.logOdds + own.effect);
    double sum = 0;
    double weights = 0;
    for (int k = -20; k <= 20; ++k) {
      const double z = k * 0.2;
      const double weight = std::exp(-z * z / 2);
      sum += weight * Logistic(patient.logOdds + sd * z);
      weights += weight;
    }
    drawn[patient.hospital] += sum / weights;
  }
  for (std::size_t h = 0; h < truth.size(); ++h) {
    truth[h].theta = risk[h] / truth[h].expected;
    truth[h].shrunken = risk[h] / drawn[h];
  }
}

Hovar::DataSet DataOf(const std::vector<Patient>& patients) {
  Hovar::DataSet data;
  data.recordCount = static_cast<std::int32_t>(patients.size());
  data.variableCount = kVariables + 1;
  data.y.Resize(data.recordCount);
  data.p.Resize(data.recordCount);
  data.z = Vell::BitMatrix(data.recordCount, data.variableCount);
  data.x = Vell::TernaryMatrix(data.recordCount, data.variableCount);
  data.recordHospital.Resize(data.recordCount);
  for (std::int32_t i = 0; i < data.recordCount; ++i) {
    const Patient& patient = patients[static_cast<std::size_t>(i)];
    if (i == 0 || patient.hospital != patients[static_cast<std::size_t>(i) - 1].hospital) {
      data.hospitalIds.Append(Vell::String(std::to_string(patient.hospital)));
      data.hospitalStart.Append(i);
      ++data.hospitalCount;
    }
    data.recordHospital[i] = data.hospitalCount - 1;
    data.y.Set(i, patient.y);
    data.p.SetValue(i, patient.p && !patient.isPMissing);
    data.p.SetMissing(i, patient.isPMissing);
    data.z.Set(i, 0, true);
    data.x.SetValue(i, 0, true);
    for (std::int32_t j = 1; j < data.variableCount; ++j) {
      const auto k = static_cast<std::size_t>(j - 1);
      data.z.Set(i, j, patient.z[k]);
      data.x.SetValue(i, j, patient.x[k] && !patient.isXMissing[k]);
      data.x.SetMissing(i, j, patient.isXMissing[k]);
    }
  }
  data.hospitalStart.Append(data.recordCount);
  data.hospitalSize.Resize(data.hospitalCount);
  for (std::int32_t h = 0; h < data.hospitalCount; ++h) {
    data.hospitalSize[h] = data.hospitalStart[h + 1] - data.hospitalStart[h];
  }
  CountNonMissing(data);
  return data;
}

}  // namespace

SimulatedStudy Simulate(const Scenario& scenario, std::mt19937_64& random) {
  SimulatedStudy study;
  const std::vector<Patient> patients = Generator(scenario, random).Patients(study.truth);
  FillTruth(study.truth, patients, scenario.sd);
  study.data = DataOf(patients);
  return study;
}

}  // namespace HospitalStudies
