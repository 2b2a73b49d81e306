#include "tools/chains/chain_outputs.h"

#include <algorithm>
#include <vector>

#include "tools/chains/messages.h"
#include "tools/plan/run_plan.h"
#include "tools/support/chain_list.h"
#include "tools/support/message.h"
#include "tools/support/shown_path.h"

namespace Hovar {

std::string ReportOf(const ChainSet& set) { return set.folder + "/report.html"; }

bool MayWriteChainFiles(const std::string& path, const ChainSet& set) {
  ProtectedFiles files = FilesOf(MakeRunPlan(path));
  std::vector<std::string> own{ReportOf(set), set.folder + '/' + std::string(kChainListName)};
  const auto isTaken = [&files](const std::string& file) {
    if (files.Find(file) == nullptr) {
      return false;
    }
    Say(kChainMessages.fileOfRun, PastablePath(file));
    return true;
  };
  for (const ChainDefinition& chain : set.chains) {
    own.push_back(chain.file);
    own.push_back(chain.captureFile);
    const DefinitionReading reading = ReadDefinition({chain.file, chain.text});
    std::vector<std::string> results;
    if (reading.definition) {
      for (const PlannedFile& output : reading.definition->outputs) {
        results.push_back(output.path);
      }
    }
    // Inputs, and what a chain before this one writes, where a folder is a link to another one's.
    if (std::any_of(results.begin(), results.end(), isTaken)) {
      return false;
    }
    for (const std::string& result : results) {
      files.Add(result);
    }
  }
  return std::none_of(own.begin(), own.end(), isTaken);
}

}  // namespace Hovar
