#include "mcmc/variable_statistics.h"

namespace Vell::Mcmc {

void VariableStatistics::AllocateChain(std::int32_t rows) {
  chain.Resize(rows);
  hasChain = true;
}

void VariableStatistics::Reset() noexcept {
  sum = 0;
  sumOfSquares = 0;
  accepted = 0;
}

void VariableStatistics::Record(double value, std::int32_t row) noexcept {
  sum += value;
  sumOfSquares += value * value;
  if (hasChain) {
    chain[row] = value;
  }
}

double VariableStatistics::Mean(std::int32_t kept) const noexcept {
  return kept >= 1 ? sum / kept : 0.0;
}

double VariableStatistics::Variance(std::int32_t kept) const noexcept {
  return kept >= 2 ? (sumOfSquares - sum / kept * sum) / (kept - 1) : 0.0;
}

double VariableStatistics::Acceptance(std::int32_t kept, std::int32_t thinning) const noexcept {
  const std::int64_t iterations = std::int64_t{kept} * thinning;
  return iterations >= 1 ? accepted / static_cast<double>(iterations) : 0.0;
}

void VariableStatistics::WriteChainName(IO::TextWriter& writer, std::string_view name) const {
  if (hasChain) {
    writer.Write(',');
    writer.Write(name);
  }
}

void VariableStatistics::WriteChainValue(IO::TextWriter& writer, std::int32_t row) const {
  if (hasChain) {
    writer.Write(',');
    writer.Write(chain[row]);
  }
}

void VariableStatistics::WriteSummaryLine(IO::TextWriter& writer, std::string_view name,
                                          std::int32_t kept, std::int32_t thinning) const {
  writer.WriteLine(name, ',', Mean(kept), ',', Variance(kept), ',', Acceptance(kept, thinning));
}

}  // namespace Vell::Mcmc
