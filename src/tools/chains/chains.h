#pragma once

// Several chains of one Analysis: definitions with seeds of their own, runs side by side, verdict
// and report. docs/chains.md describes the folders and the seeds.

#include <string>

namespace Hovar {

/// Which chains of an Analysis to run.
struct ChainSettings {
  std::string definition;
  int chainCount = 0;
  int jobs = 0;       // chains at the same time; 0: as many as there are processors
  int onlyChain = 0;  // counted from 1; 0: all chains
  bool collectOnly = false;
};

/// Runs the chains, or the one that is asked for, or only collects what has been run. Returns the
/// exit status: 0 when every chain was run to its end and the report was written, whatever the
/// verdict says.
int RunChains(const ChainSettings& settings);

}  // namespace Hovar
