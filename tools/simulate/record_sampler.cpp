#include "record_sampler.h"

#include <algorithm>

namespace Hovar::Simulate {
namespace {

// With P = 1 one indicator is 1 for certain and every other one with this chance.
constexpr double kFurtherIndicator = 0.25;

}  // namespace

RecordSampler::RecordSampler(const StudyModel& model, const Options& options)
    : model_(model),
      indicatorCount_(static_cast<std::size_t>(options.indicators)),
      missingX_(Threshold(options.missingX)),
      missingP_(Threshold(options.missingP)),
      records_(options.seed, Purpose::kRecords),
      hiding_(options.seed, Purpose::kHiding),
      warnings_(options.seed, Purpose::kWarnings),
      recordsLeft_(options.records),
      warningsLeft_(options.warnings),
      hospitalLeft_(model.hospitals.front().size) {
  const std::size_t single = model.dependent ? model.dependent->first : model.variables.size();
  for (std::size_t j = 0; j < single; ++j) {
    const Variable& variable = model.variables[j];
    cells_.push_back({.z = Threshold(variable.zPrevalence),
                      .xGivenZ = {Threshold(variable.xGivenZ0), Threshold(variable.xGivenZ1)}});
  }
  if (model.dependent) {
    group_ = ThresholdsOf(model, *model.dependent);
  }
}

RecordSampler::GroupThresholds RecordSampler::ThresholdsOf(const StudyModel& model,
                                                           const DependentGroup& group) {
  const auto& [ab, ac, bc] = group.pairs;
  GroupThresholds thresholds{.pairs = {Threshold(ab), Threshold(ab + ac), Threshold(ab + ac + bc)},
                             .zGivenX = {}};
  for (std::size_t i = 0; i < DependentGroup::kSize; ++i) {
    const Variable& variable = model.variables[group.first + i];
    thresholds.zGivenX[i] = {Threshold(variable.ZGivenX0()), Threshold(variable.ZGivenX1())};
  }
  return thresholds;
}

bool RecordSampler::Next(Record& record) {
  if (recordsLeft_ == 0) {
    return false;
  }
  StartRecord(record);
  DrawIndependentCells(record);
  if (model_.dependent) {
    DrawDependentCells(record);
  }
  DrawResponses(record);
  Plant(record);
  Hide(record);
  ++index_;
  --recordsLeft_;
  --hospitalLeft_;
  return true;
}

void RecordSampler::StartRecord(Record& record) {
  if (hospitalLeft_ == 0) {
    ++hospital_;
    hospitalLeft_ = model_.hospitals[static_cast<std::size_t>(hospital_)].size;
  }
  record.index = index_;
  record.hospital = hospital_;
  record.indicators.resize(indicatorCount_);
  record.z.resize(model_.variables.size());
  record.x.resize(model_.variables.size());
  record.xHidden.resize(model_.variables.size());
}

void RecordSampler::DrawIndependentCells(Record& record) {
  for (std::size_t j = 0; j < cells_.size(); ++j) {
    const bool z = records_.Event(cells_[j].z);
    record.z[j] = z ? 1 : 0;
    record.x[j] = records_.Event(cells_[j].xGivenZ[z ? 1 : 0]) ? 1 : 0;
  }
}

void RecordSampler::DrawDependentCells(Record& record) {
  const std::uint64_t word = records_.Word();
  const bool ab = word < group_.pairs[0];
  const bool ac = !ab && word < group_.pairs[1];
  const bool bc = !ab && !ac && word < group_.pairs[2];
  const std::array<bool, DependentGroup::kSize> values = {ab || ac || bc, ab || ac, ab || bc,
                                                          ac || bc};
  for (std::size_t i = 0; i < values.size(); ++i) {
    const std::size_t j = model_.dependent->first + i;
    record.x[j] = values[i] ? 1 : 0;
    record.z[j] = records_.Event(group_.zGivenX[i][record.x[j]]) ? 1 : 0;
  }
}

void RecordSampler::DrawResponses(Record& record) {
  double outcomeLogOdds =
      model_.outcomeIntercept + model_.hospitals[static_cast<std::size_t>(hospital_)].effect;
  double poaLogOdds = model_.poaIntercept;
  for (std::size_t j = 0; j < record.x.size(); ++j) {
    if (record.x[j] != 0) {
      outcomeLogOdds += model_.variables[j].outcomeCoefficient;
      poaLogOdds += model_.variables[j].poaCoefficient;
    }
  }
  // Both words are drawn in any case: the sequence stays in step whatever the effects are.
  const bool poa = records_.Event(Threshold(Logistic(poaLogOdds)));
  const bool outcome = records_.Event(Threshold(Logistic(outcomeLogOdds)));
  record.poa = poa && indicatorCount_ > 0;
  record.outcome = outcome || record.poa;
  record.planted = false;
  SetIndicators(record, records_);
}

void RecordSampler::SetIndicators(Record& record, RandomSource& random) const {
  std::fill(record.indicators.begin(), record.indicators.end(), std::uint8_t{0});
  if (!record.poa) {
    return;
  }
  for (std::uint8_t& indicator : record.indicators) {
    indicator = random.Event(Threshold(kFurtherIndicator)) ? 1 : 0;
  }
  record.indicators[static_cast<std::size_t>(random.Below(indicatorCount_))] = 1;
}

void RecordSampler::Plant(Record& record) {
  if (warningsLeft_ == 0 || warnings_.Below(static_cast<std::uint64_t>(recordsLeft_)) >=
                                static_cast<std::uint64_t>(warningsLeft_)) {
    return;
  }
  --warningsLeft_;
  record.planted = true;
  record.outcome = false;
  record.poa = true;
  SetIndicators(record, warnings_);
}

void RecordSampler::Hide(Record& record) {
  for (std::uint8_t& hidden : record.xHidden) {
    hidden = hiding_.Event(missingX_) ? 1 : 0;
  }
  record.indicatorHidden = hiding_.Event(missingP_) && !record.planted;
  record.hiddenIndicator = record.indicatorHidden
                               ? static_cast<std::size_t>(hiding_.Below(indicatorCount_))
                               : std::size_t{0};
}

}  // namespace Hovar::Simulate
