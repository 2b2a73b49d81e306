#pragma once

// The imputation sweep in its plain form, which evaluates every likelihood as the model defines it;
// the program's own takes short cuts that must not change a single draw.

#include <cmath>
#include <cstdint>

#include "foundation/random/random_generator.h"
#include "mcmc/imputation_sweep.h"

namespace Testing {

inline double PlainLogistic(double t) { return 1 / (std::exp(-t) + 1); }

inline double PlainPredictor(const Hovar::DataSet& data, std::int32_t record,
                             const Vell::Vector& beta) {
  double sum = 0;
  for (std::int32_t j = 0; j < data.variableCount; ++j) {
    sum += data.x.Value(record, j) ? beta[j] : 0;
  }
  return sum;
}

inline double PlainLikelihood(const Hovar::DataSet& data, std::int32_t record,
                              const Hovar::ImputationModel& model) {
  const double a = PlainPredictor(data, record, model.pGivenX);
  const double b = PlainPredictor(data, record, model.yGivenXWithoutP);
  const double likY = data.p.Value(record) ? 1
                      : data.y.Get(record) ? PlainLogistic(b)
                                           : 1 / (std::exp(b) + 1);
  const double likP = data.p.Value(record) ? PlainLogistic(a) : 1 / (std::exp(a) + 1);
  return likY * likP;
}

/// Draws every missing cell of columns 1 and up, then P, record by record.
inline void PlainSweep(Hovar::DataSet& data, const Hovar::ImputationModel& model) {
  for (std::int32_t i = 0; i < data.recordCount; ++i) {
    for (std::int32_t j = 1; j < data.variableCount; ++j) {
      if (!data.x.IsMissing(i, j)) {
        continue;
      }
      const double q = model.priorTable[2 * (j - 1) + (data.z.Get(i, j) ? 1 : 0)];
      if (q == 0 || q == 1) {
        data.x.SetValue(i, j, q == 1);
        continue;
      }
      data.x.SetValue(i, j, true);
      const double set = PlainLikelihood(data, i, model);
      data.x.SetValue(i, j, false);
      const double clear = PlainLikelihood(data, i, model);
      const double posterior = set * q / (clear * (1 - q) + set * q);
      data.x.SetValue(i, j, posterior > Vell::RandomGenerator::Uniform());
    }
    if (data.y.Get(i) && data.p.IsMissing(i)) {
      const double p1 = PlainLogistic(PlainPredictor(data, i, model.pGivenX));
      const double p0 = PlainLogistic(PlainPredictor(data, i, model.yGivenXWithoutP));
      data.p.SetValue(i, p1 / (p0 * (1 - p1) + p1) > Vell::RandomGenerator::Uniform());
    }
  }
}

}  // namespace Testing
