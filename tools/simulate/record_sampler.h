/// Draws the records of a study one after the other.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "options.h"
#include "random_source.h"
#include "study_model.h"

namespace Hovar::Simulate {

/// One record with its true values, and beside them what the file does not show.
///
/// Cells are 0 or 1. A hidden cell keeps its true value here: missing means not shown, not changed.
struct Record {
  std::int32_t index = 0;     ///< Position in the file, from 0.
  std::int32_t hospital = 0;  ///< Position of the hospital in the model, from 0.
  bool outcome = false;       ///< Y.
  bool poa = false;           ///< P, the OR of the indicators.
  bool planted = false;       ///< One of the records with Y = 0 and P = 1.
  std::vector<std::uint8_t> indicators;
  std::vector<std::uint8_t> z;        ///< One per variable.
  std::vector<std::uint8_t> x;        ///< One per variable.
  std::vector<std::uint8_t> xHidden;  ///< 1 where the X cell is left empty.
  bool indicatorHidden = false;       ///< One indicator is left empty.
  std::size_t hiddenIndicator = 0;    ///< Which one.
};

/// A cursor over the records of a model, hospital by hospital.
///
/// Exactly options.warnings records are planted, every set of them being equally likely: record by
/// record, one is taken with the chance (wanted still) / (records still) (selection sampling; D. E.
/// Knuth, The Art of Computer Programming, vol. 2, section 3.4.2, algorithm S). A planted record
/// gets Y = 0, at least one indicator 1 and none hidden.
/// Memory: by the number of variables only, besides the model, which must outlive the sampler.
class RecordSampler {
 public:
  RecordSampler(const StudyModel& model, const Options& options);

  /// Fills the record with the next one, reusing its storage. False, and the record untouched,
  /// after the last.
  bool Next(Record& record);

 private:
  // Probabilities as thresholds of random words: of a variable on its own ...
  struct CellThresholds {
    std::uint64_t z;
    std::uint64_t xGivenZ[2];
  };

  // ... and of the dependent group, in the order d, a, b, c. The pairs' chances are added up: that
  // of the first, of the first two, of all three.
  struct GroupThresholds {
    std::uint64_t pairs[3];
    std::array<std::array<std::uint64_t, 2>, DependentGroup::kSize> zGivenX;
  };

  static GroupThresholds ThresholdsOf(const StudyModel& model, const DependentGroup& group);

  void StartRecord(Record& record);
  void DrawIndependentCells(Record& record);
  void DrawDependentCells(Record& record);
  void DrawResponses(Record& record);
  void SetIndicators(Record& record, RandomSource& random) const;
  void Plant(Record& record);
  void Hide(Record& record);

  const StudyModel& model_;
  std::size_t indicatorCount_;
  std::vector<CellThresholds> cells_;  // One per variable before the dependent group.
  GroupThresholds group_{};
  std::uint64_t missingX_;
  std::uint64_t missingP_;
  RandomSource records_;
  RandomSource hiding_;
  RandomSource warnings_;
  std::int32_t index_ = 0;
  std::int32_t recordsLeft_;
  std::int32_t warningsLeft_;
  std::int32_t hospital_ = 0;
  std::int32_t hospitalLeft_;  // Records of the current hospital still to come.
};

}  // namespace Hovar::Simulate
