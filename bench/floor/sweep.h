#pragma once

// One imputation sweep over the missing X cells and the missing P of all records, with two products
// of eight table entries a record and no exponential, division or linear predictor a cell.
//
// With A = e^(x a) for [P|X] and B = e^(x b) for [Y|X,P=0], setting X_j multiplies A and B by
// constants, and with the prior probability q the cell becomes 1 when
//
//     S > u (S + C),   S = q (1 + A0) A1, C = (1 - q) (1 + A1) A0           where P = 1,
//                      S = q (1 + A0) (1 + B0) B1, C = (1 - q) (1 + A1) (1 + B1) B0
//                                                                           where P = 0 and Y = 1,
//                      S = q (1 + A0) (1 + B0), C = (1 - q) (1 + A1) (1 + B1)
//                                                                           where Y = 0,
//
// 0 and 1 standing for the cell's value. The random words are those of a pair of 16-bit
// multiply-with-carry generators, one for each draw.

#include <array>
#include <cstdint>

#include "column_fit.h"
#include "packed_data.h"

namespace Hovar::Floor {

class RandomWords {
 public:
  std::uint32_t Next() noexcept {
    z_ = 36969 * (z_ & 0xFFFF) + (z_ >> 16);
    w_ = 18000 * (w_ & 0xFFFF) + (w_ >> 16);
    return (z_ << 16) ^ (w_ & 0xFFFF);
  }
  double Uniform() noexcept { return Next() * 0x1p-32; }

 private:
  std::uint32_t z_ = 1;
  std::uint32_t w_ = 1;
};

struct SweepModel {
  Coefficients yGivenX{};
  Coefficients pGivenX{};
  std::array<std::array<double, 2>, kMaxColumns> prior{};  // of X_j = 1, given Z_j
};

void Sweep(PackedData& data, const SweepModel& model, RandomWords& random);

/// The same draws, every posterior from logistic functions of linear predictors.
void SweepPlainly(PackedData& data, const SweepModel& model, RandomWords& random);

}  // namespace Hovar::Floor
