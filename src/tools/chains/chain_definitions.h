#pragma once

#include <optional>
#include <string>
#include <vector>

#include "diagnostics/chain_verdict.h"

namespace Hovar {

/// One chain of a definition.
struct ChainDefinition {
  int number = 0;         // from 1
  std::string name;       // "chain-1"
  std::string folder;     // its output folder, inside that of the definition
  std::string file;       // the definition to be written, in this folder
  std::string text;       // what it holds
  std::string chainFile;  // paths of what the run writes
  std::string coefficientFile;
  std::string captureFile;  // for the program's lines
};

struct ChainSet {
  std::string folder;  // the definition's output folder
  Estimation estimation = Estimation::kIndependent;
  std::vector<ChainDefinition> chains;
};

/// Makes the definitions of several chains of an Analysis. Nothing, and a line on standard error,
/// when the file is no valid definition of an Analysis, its seed serves no several chains, or a
/// definition of a chain would be larger than those that tools read.
std::optional<ChainSet> MakeChainSet(const std::string& path, int count);

/// Makes the folder of the set and writes the list of its chains there (tools/support/chain_list.h).
/// Something else of its name stays, and a line says so. False, with a line on standard error, when the
/// list cannot be written.
bool WriteChainList(const ChainSet& set);

/// Makes the folder of a chain, in that of the set, and writes its definition there, into a regular
/// file. False, with a line on standard error, when that fails.
bool WriteChainDefinition(const ChainSet& set, const ChainDefinition& chain);

}  // namespace Hovar
