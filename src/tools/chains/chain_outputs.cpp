#include "tools/chains/chain_outputs.h"

#include <algorithm>
#include <vector>

#include "tools/chains/messages.h"
#include "tools/plan/run_plan.h"
#include "tools/run/capture.h"
#include "tools/support/chain_list.h"
#include "tools/support/message.h"
#include "tools/support/shown_path.h"

namespace Hovar {

std::string ReportOf(const ChainSet& set) { return set.folder + "/report.html"; }

bool MayWriteChainFiles(const std::string& path, const ChainSet& set) {
  ProtectedFiles files = FilesOf(MakeRunPlan(path));
  std::vector<std::string> own{ReportOf(set), set.folder + '/' + std::string(kChainListName)};
  for (const ChainDefinition& chain : set.chains) {
    own.push_back(chain.file);
    const DefinitionReading reading = ReadDefinition({chain.file, chain.text});
    if (reading.definition) {
      const std::vector<PlannedFile>& outputs = reading.definition->outputs;
      own.push_back(CaptureOf(outputs.front().path));
      std::for_each(outputs.begin(), outputs.end(),
                    [&files](const PlannedFile& output) { files.Add(output.path); });
    }
  }
  return std::none_of(own.begin(), own.end(), [&files](const std::string& file) {
    const bool isTaken = files.Find(file) != nullptr;
    if (isTaken) {
      Say(kChainMessages.fileOfRun, PastablePath(file));
    }
    return isTaken;
  });
}

}  // namespace Hovar
