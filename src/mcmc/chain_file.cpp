#include "mcmc/chain_file.h"

#include "foundation/io/platform/platform.h"

namespace Vell::Mcmc {
namespace {

const String& CreateFolder(const String& folder) {
  IO::Platform::CreateFolder(folder.CStr());
  return folder;
}

}  // namespace

ChainFile::ChainFile(const String& folder)
    : summary_(IO::CreateTextFile(JoinPath(CreateFolder(folder), "Summary.csv"))),
      chain_(IO::CreateTextFile(JoinPath(folder, "Chain.csv"))) {}

void ChainFile::WriteChainHeader(Variables variables) {
  chain_.Write("Step");
  for (const McmcVariable* variable : variables) {
    variable->WriteChainHeader(chain_);
  }
  chain_.EndLine();
}

void ChainFile::WriteChainRow(Variables variables, std::int32_t row, std::int32_t step) {
  chain_.Write(step);
  for (const McmcVariable* variable : variables) {
    variable->WriteChainValues(chain_, row);
  }
  chain_.EndLine();
}

void ChainFile::WriteSummary(Variables variables) {
  summary_.WriteLine("Variable,Mean,Variance,Acceptance");
  for (const McmcVariable* variable : variables) {
    variable->WriteSummary(summary_);
  }
}

void ChainFile::Close() {
  summary_.Target().Close();
  chain_.Target().Close();
}

}  // namespace Vell::Mcmc
