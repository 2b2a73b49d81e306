#pragma once

// What is expected and observed in each hospital, from the predictions of its records.

#include <array>
#include <cstdint>

#include "data/data_set.h"
#include "foundation/growable_array.h"
#include "prediction/individual_predictions.h"

namespace Hovar {

/// A mean over the records of a hospital; without a count there is none.
struct HospitalMean {
  double mean = 0;
  double count = 0;
};

/// The means of one hospital, in the order in which they are added up: observed Y, E[Y|P=0],
/// E[Y|Z], E[Y|X], E[Y|X,P=0], E[Y|X,P=0]-MCMC, observed P (over the records whose P is not
/// missing), E[P|X], E[P|YPXZ].
struct HospitalMeans {
  enum Column {
    kY,
    kYWithoutP,
    kYGivenZ,
    kYGivenX,
    kYGivenXWithoutP,
    kYGivenXWithoutPMcmc,
    kP,
    kPGivenX,
    kPGivenAll,
    kColumnCount
  };
  /// By Column; the file has another order.
  std::array<HospitalMean, kColumnCount> columns;
};

/// One entry per hospital, in the order of the data set.
using HospitalPredictions = Vell::GrowableArray<HospitalMeans>;

/// Aggregates the individual predictions, which have one entry per record of the data set; each
/// mean is the sum in record order over the count. What was in the result is replaced. Standard
/// output receives one line.
/// Errors: "Out of memory"; "IO Exception".
void ComputeHospitalPredictions(HospitalPredictions& hospitalPredictions, const DataSet& dataSet,
                                const IndividualPredictions& predictions);

}  // namespace Hovar
