#pragma once

#include <cstddef>
#include <string>

#include "support/seeded_random.h"

namespace Testing {

/// Chooses which cases of a suite run: about `count` of `total`, at random, or every one when the
/// environment says HOVAR_FAULTS=all. HOVAR_FAULT_SEED chooses another sample.
class Sample {
 public:
  Sample(std::size_t count, std::size_t total);

  /// True when the next case is to run.
  bool Takes();

  /// The seed, and how many cases were taken so far, for traces.
  std::string Text() const;

  /// True when every case runs.
  static bool IsAll();

  /// A source of other choices, with the seed of the samples.
  static SeededRandom Random();

 private:
  SeededRandom random_;
  double share_;
  std::size_t total_;
  std::size_t taken_ = 0;
};

}  // namespace Testing
