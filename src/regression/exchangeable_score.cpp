#include "regression/exchangeable_score.h"

#include <algorithm>
#include <span>

#include "foundation/integer_size.h"

namespace Hovar {

ExchangeableScore::ExchangeableScore(FitState& state, const FitRows& rows)
    : state_(state), rows_(rows), clusterSize_(rows.ClusterSize()) {
  const std::int32_t hospitals = clusterSize_.Size();
  const std::int32_t columns = rows.ColumnCount();
  Vell::CheckedSize(static_cast<std::uint64_t>(hospitals) * static_cast<std::uint64_t>(columns));
  residualSums_ = Vell::Matrix(hospitals, columns);
  deviationSums_ = Vell::Matrix(hospitals, columns);
  pearsonSums_.Resize(hospitals);
}

void ExchangeableScore::SumPass(NormalEquations& equations, RecordBlock& block,
                                const Vell::Vector& beta) {
  BeginPass();
  SumBlocks(equations, block, rows_, beta, [&] { AddBlock(equations, block); });
  Assemble(equations);
}

void ExchangeableScore::BeginPass() noexcept {
  residualSums_.Fill(0);
  deviationSums_.Fill(0);
  std::fill(pearsonSums_.begin(), pearsonSums_.end(), 0.0);
  pearsonSquares_ = 0;
  hospital_ = -1;
  recordsLeft_ = 0;
}

void ExchangeableScore::AddBlock(NormalEquations& equations, RecordBlock& block) noexcept {
  EvaluateExchangeableTerms(block, terms_);
  AddInformation(equations.crossproducts, {}, block, rows_);
  for (std::int32_t begin = 0; begin < block.count;) {
    while (recordsLeft_ == 0) {
      recordsLeft_ = clusterSize_[++hospital_];
    }
    const std::int32_t end = begin + std::min(recordsLeft_, block.count - begin);
    AddColumnSums({residualSums_.Row(hospital_), block.residual},
                  {deviationSums_.Row(hospital_), terms_.deviation}, rows_,
                  {block.index, begin, end});
    for (const double pearson :
         std::span(terms_.pearson)
             .subspan(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin))) {
      pearsonSums_[hospital_] += pearson;
      pearsonSquares_ += pearson * pearson;
    }
    recordsLeft_ -= end - begin;
    begin = end;
  }
}

double ExchangeableScore::EstimateCorrelation() const noexcept {
  double records = 0;       // N
  double orderedPairs = 0;  // M
  double sumsSquared = 0;
  for (std::int32_t h = 0; h < clusterSize_.Size(); ++h) {
    if (clusterSize_[h] > 0) {
      const double size = clusterSize_[h];
      records += size;
      orderedPairs += size * (size - 1);
      sumsSquared += pearsonSums_[h] * pearsonSums_[h];
    }
  }
  const double columns = residualSums_.Columns();
  const double dispersion = pearsonSquares_ / (records - columns);
  return (sumsSquared - pearsonSquares_) / ((orderedPairs - columns) * dispersion);
}

void ExchangeableScore::Assemble(NormalEquations& equations) {
  const double alpha = EstimateCorrelation();
  const std::int32_t columns = residualSums_.Columns();
  state_.alpha = alpha;
  state_.hospitalScores = residualSums_;
  Vell::SymmetricMatrix correction(columns);  // sum of c_h B_h B_h^T
  for (std::int32_t h = 0; h < clusterSize_.Size(); ++h) {
    const double c = clusterSize_[h] > 0 ? alpha / ((clusterSize_[h] - 1) * alpha + 1) : 0.0;
    const std::span<const double> deviations = deviationSums_.Row(h);
    const std::span<double> scores = state_.hospitalScores.Row(h);
    for (std::int32_t j = 0; j < columns; ++j) {
      const double deviation = deviations[static_cast<std::size_t>(j)];
      double& score = scores[static_cast<std::size_t>(j)];
      score -= c * pearsonSums_[h] * deviation;
      equations.score[j] += score;
      double* const row = correction.Row(j);
      // Checked once: a check of every index would keep the loop scalar.
      const double* const others = deviations.first(static_cast<std::size_t>(j) + 1).data();
      for (std::int32_t k = 0; k <= j; ++k) {
        row[k] += c * deviation * others[k];
      }
    }
  }
  for (std::int32_t i = 0; i < correction.Elements().Size(); ++i) {
    equations.information.Elements()[i] -= correction.Elements()[i];
  }
}

}  // namespace Hovar
