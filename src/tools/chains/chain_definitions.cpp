#include "tools/chains/chain_definitions.h"

#include <string_view>
#include <utility>

#include "foundation/io/platform/folders.h"
#include "foundation/random/chain_seeds.h"
#include "foundation/random/random_generator.h"
#include "messages/error_texts.h"
#include "tools/chains/messages.h"
#include "tools/plan/definition_file.h"
#include "tools/plan/seed_values.h"
#include "tools/support/chain_list.h"
#include "tools/support/files.h"
#include "tools/support/inputs.h"
#include "tools/support/message.h"
#include "tools/support/messages.h"
#include "tools/support/output_file.h"
#include "tools/support/shown_path.h"

namespace Hovar {
namespace {

using Vell::SeedOfChain;
using Vell::SeedWords;

/// A new text for a value of a definition.
struct Replacement {
  const DefinedValue* value = nullptr;
  std::string text;
};

/// The bytes of a definition with other texts for some values, given in the order of the file.
std::string WithValues(std::string_view bytes, const std::vector<Replacement>& replacements) {
  std::string changed;
  std::size_t next = 0;
  for (const Replacement& replacement : replacements) {
    const auto offset = static_cast<std::size_t>(replacement.value->offset);
    changed.append(bytes.substr(next, offset - next));
    changed.append(replacement.text);
    next = bytes.find('<', offset);
  }
  return changed.append(bytes.substr(next));
}

ChainDefinition MakeChain(const DefinitionFile& definition, std::string_view bytes, int number,
                          const SeedWords& seed) {
  const auto words = SeedValuesOf(definition).value();
  ChainDefinition chain;
  chain.number = number;
  chain.name = "chain-" + std::to_string(number);
  chain.folder = JoinPath(definition.folder, chain.name);
  chain.file = JoinPath(chain.folder, chain.name + ".xml");
  chain.chainFile =
      JoinPath(JoinPath(chain.folder, definition.TextOf(Element::kMcmcSubFolder)), "Chain.csv");
  chain.coefficientFile =
      JoinPath(chain.folder, definition.TextOf(Element::kRegressionCoefficients));
  chain.captureFile = JoinPath(chain.folder, definition.TextOf(Element::kLogFile)) + ".output.txt";
  chain.text = WithValues(bytes, {{definition.Find(Element::kFolder), chain.folder},
                                  {words[0], std::to_string(seed.z)},
                                  {words[1], std::to_string(seed.w)}});
  return chain;
}

/// The definition of an Analysis. Otherwise a line on standard error says what is wrong, in the
/// program's words where it would refuse the file.
std::optional<DefinitionFile> ReadAnalysis(const std::string& path) {
  if (RefuseIrregular(path)) {
    return std::nullopt;
  }
  DefinitionReading reading = ReadDefinitionFile(path);
  if (!reading.definition) {
    SayLine(std::string(Messages::kErrorPrefix) + reading.error);
  } else if (reading.definition->kind != RunKind::kAnalysis) {
    Say(kChainMessages.needsAnalysis, path);
    reading.definition.reset();
  }
  return std::move(reading.definition);
}

/// The words of the definition's seed. Otherwise a line on standard error says why several chains
/// cannot be made from it.
std::optional<SeedWords> UsableSeed(const DefinitionFile& definition) {
  const auto values = SeedValuesOf(definition);
  if (!values) {
    Say(kChainMessages.seedFromClock, definition.path);
    return std::nullopt;
  }
  const SeedWords seed{SeedWordOf(*(*values)[0]), SeedWordOf(*(*values)[1])};
  if (Vell::StandsStill(seed.z, Vell::RandomGenerator::kMultiplierZ)) {
    Say(kChainMessages.firstWordStandsStill, definition.path);
    return std::nullopt;
  }
  if (Vell::StandsStill(seed.w, Vell::RandomGenerator::kMultiplierW)) {
    Say(kChainMessages.secondWordStandsStill, definition.path);
    return std::nullopt;
  }
  return seed;
}

}  // namespace

std::optional<ChainSet> MakeChainSet(const std::string& path, int count) {
  const std::optional<DefinitionFile> definition = ReadAnalysis(path);
  if (!definition) {
    return std::nullopt;
  }
  const std::optional<std::string>& bytes = definition->text.Bytes();
  if (!bytes) {
    Say(kToolMessages.cannotRead, path);
    return std::nullopt;
  }
  const std::optional<SeedWords> seed = UsableSeed(*definition);
  if (!seed) {
    return std::nullopt;
  }
  ChainSet set{definition->folder,
               UsesEstimatingEquations(definition->analysis) ? Estimation::kEstimatingEquations
                                                             : Estimation::kIndependent,
               {}};
  for (int number = 1; number <= count; ++number) {
    set.chains.push_back(MakeChain(*definition, *bytes, number,
                                   SeedOfChain(*seed, static_cast<std::uint32_t>(number))));
    if (set.chains.back().text.size() > kLargestSmallFile) {
      Say(kChainMessages.copyTooLarge, PastablePath(path), set.chains.back().name);
      return std::nullopt;
    }
  }
  return set;
}

bool WriteChainList(const ChainSet& set) {
  namespace Platform = Vell::IO::Platform;
  Platform::CreateFolder(set.folder.c_str());
  const std::string file = JoinPath(set.folder, kChainListName);
  const std::string text = ChainListText(static_cast<int>(set.chains.size()));
  if (Platform::KindOf(file.c_str()) != Platform::PathKind::kMissing) {
    const std::optional<std::string> earlier = ReadSmallFile(file);
    if (earlier == text) {
      return true;
    }
    if (!earlier || !ChainCountOf(*earlier)) {
      Say(kChainMessages.noChainList, PastablePath(file));
      return true;
    }
  }
  // Another command that runs a chain of this set may have written it in the meantime.
  if (!WriteWholeFile(file, text) && ReadSmallFile(file) != text) {
    Say(kToolMessages.cannotWrite, PastablePath(file));
    return false;
  }
  return true;
}

bool WriteChainDefinition(const ChainSet& set, const ChainDefinition& chain) {
  Vell::IO::Platform::CreateFolder(set.folder.c_str());
  Vell::IO::Platform::CreateFolder(chain.folder.c_str());
  if (RefuseIrregular(chain.file)) {
    return false;
  }
  if (!WriteWholeFile(chain.file, chain.text)) {
    Say(kToolMessages.cannotWrite, PastablePath(chain.file));
    return false;
  }
  return true;
}

}  // namespace Hovar
