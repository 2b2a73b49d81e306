#pragma once

// Studies whose truth is known, made by another model than the program's: patients have correlated
// conditions, hospitals other patients, and an effect on the outcome that the program's reference does not
// have.

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "data/data_set.h"

namespace HospitalStudies {

struct Scenario {
  std::string name;
  double sd = 0;              // of the hospitals' effects, log-odds
  bool hasOutliers = false;   // four hospitals 0.9 higher, four 0.9 lower
  double missingP = 0;        // of records of ordinary hospitals
  double missingPOfSome = 0;  // of every tenth hospital's
  double missingX = 0;
  std::size_t hospitals = 100;
};

/// What is true of a hospital.
struct Truth {
  double effect = 0;
  double cases = 0;     // records with P = 0
  double events = 0;    // among them
  double expected = 0;  // under the reference: the same risks as all patients have on average
  double theta = 0;     // true over reference risk of its cases
  double shrunken = 0;  // true risk over that in hospitals drawn from all
  double missingShare = 0;
};

struct SimulatedStudy {
  Hovar::DataSet data;
  std::vector<Truth> truth;  // one per hospital
};

SimulatedStudy Simulate(const Scenario& scenario, std::mt19937_64& random);

}  // namespace HospitalStudies
