#include "tools/chains/chain_definitions.h"

#include <set>
#include <string_view>
#include <utility>

#include "foundation/io/number_text.h"
#include "foundation/io/standard_writers.h"
#include "foundation/random/chain_seeds.h"
#include "messages/error_texts.h"
#include "tools/chains/messages.h"
#include "tools/plan/definition_file.h"
#include "tools/support/files.h"
#include "tools/support/message.h"
#include "tools/support/messages.h"
#include "tools/support/shown_path.h"

namespace Hovar {
namespace {

using Vell::SeedOfChain;
using Vell::SeedWords;

/// The places in a definition that differ from chain to chain.
struct ChangingPlaces {
  const DefinedValue* folder = nullptr;
  std::vector<const DefinedValue*> words;
};

ChangingPlaces FindPlaces(const DefinitionFile& definition) {
  ChangingPlaces places;
  places.folder = &definition.Value("Output/Folder");
  for (const DefinedValue& value : definition.values) {
    if (value.element == "Mcmc/Seed/Seed/Element") {
      places.words.push_back(&value);
    }
  }
  return places;
}

/// A word of a seed as the program reads it: the number behind white space.
std::uint32_t WordOf(const DefinedValue& value) {
  const std::size_t start = value.text.find_first_not_of(" \t\r\n\v\f");
  const std::size_t end = value.text.find_first_not_of("0123456789", start + 1);
  return Vell::IO::ParseUnsigned(std::string_view(value.text).substr(start, end - start));
}

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

/// The seeds of all chains; empty when they do not differ from each other.
std::vector<SeedWords> DistinctSeeds(const SeedWords& own, int count) {
  std::vector<SeedWords> seeds;
  std::set<std::pair<std::uint32_t, std::uint32_t>> known;
  for (int number = 1; number <= count; ++number) {
    seeds.push_back(SeedOfChain(own, static_cast<std::uint32_t>(number)));
    if (!known.emplace(seeds.back().z, seeds.back().w).second) {
      return {};
    }
  }
  return seeds;
}

ChainDefinition MakeChain(const DefinitionFile& definition, std::string_view bytes, int number,
                          const SeedWords& seed) {
  const ChangingPlaces places = FindPlaces(definition);
  ChainDefinition chain;
  chain.number = number;
  chain.name = "chain-" + std::to_string(number);
  chain.folder = JoinPath(definition.folder, chain.name);
  chain.file = JoinPath(chain.folder, chain.name + ".xml");
  chain.chainFile =
      JoinPath(JoinPath(chain.folder, definition.Value("Output/McmcSubFolder").text), "Chain.csv");
  chain.coefficientFile =
      JoinPath(chain.folder, definition.Value("Output/RegressionCoefficients").text);
  chain.text = WithValues(bytes, {{places.folder, chain.folder},
                                  {places.words[0], std::to_string(seed.z)},
                                  {places.words[1], std::to_string(seed.w)}});
  return chain;
}

/// The definition of an Analysis. Otherwise a line on standard error says what is wrong, in the
/// program's words where it would refuse the file.
std::optional<DefinitionFile> ReadAnalysis(const std::string& path) {
  DefinitionReading reading = ReadDefinitionFile(path);
  if (!reading.definition) {
    Vell::IO::StandardError().WriteLine(Messages::kErrorPrefix, Vell::String(reading.error));
  } else if (reading.definition->kind != RunKind::kAnalysis) {
    Say(kChainMessages.needsAnalysis, path);
    reading.definition.reset();
  }
  return std::move(reading.definition);
}

}  // namespace

std::optional<ChainSet> MakeChainSet(const std::string& path, int count) {
  const std::optional<DefinitionFile> definition = ReadAnalysis(path);
  if (!definition) {
    return std::nullopt;
  }
  const std::optional<std::string> bytes = ReadSmallFile(path);
  if (!bytes) {
    Say(kToolMessages.cannotRead, path);
    return std::nullopt;
  }
  const ChangingPlaces places = FindPlaces(*definition);
  if (places.words.size() != 2) {
    Say(kChainMessages.seedFromClock, path);
    return std::nullopt;
  }
  const std::vector<SeedWords> seeds =
      DistinctSeeds({WordOf(*places.words[0]), WordOf(*places.words[1])}, count);
  if (seeds.empty()) {
    Say(kChainMessages.sameNumbers, path);
    return std::nullopt;
  }
  ChainSet set{definition->folder,
               UsesEstimatingEquations(definition->analysis) ? Estimation::kEstimatingEquations
                                                             : Estimation::kIndependent,
               {}};
  for (int number = 1; number <= count; ++number) {
    set.chains.push_back(
        MakeChain(*definition, *bytes, number, seeds[static_cast<std::size_t>(number) - 1]));
  }
  return set;
}

bool WriteChainDefinition(const ChainSet& set, const ChainDefinition& chain) {
  Vell::IO::Platform::CreateFolder(set.folder.c_str());
  Vell::IO::Platform::CreateFolder(chain.folder.c_str());
  if (!WriteWholeFile(chain.file, chain.text)) {
    Say(kToolMessages.cannotWrite, PastablePath(chain.file));
    return false;
  }
  return true;
}

}  // namespace Hovar
