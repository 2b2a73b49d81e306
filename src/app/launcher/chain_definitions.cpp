#include "app/launcher/chain_definitions.h"

#include <set>
#include <utility>

#include "app/definitions.h"
#include "app/launcher/chain_seeds.h"
#include "app/launcher/definition_text.h"
#include "app/launcher/files.h"
#include "app/launcher/message.h"
#include "foundation/io/file_stream.h"
#include "foundation/io/number_text.h"

namespace Hovar {
namespace {

/// Reads the definition as the program does, so that its faults are found, and told in the
/// program's words, before anything is written. False when it is no Analysis.
bool IsValidAnalysis(const std::string& path) {
  Vell::XmlReader reader(
      Vell::MakeShared<Vell::IO::FileStream>(Vell::String(path), Vell::IO::Mode::kReadText));
  Vell::XmlTag root = reader.ReadTag();
  while (root.kind == Vell::XmlTag::Kind::kDeclaration) {
    root = reader.ReadTag();
  }
  if (root.name.View() != "Analysis") {
    return false;
  }
  ReadAnalysisDefinition(reader);
  reader.ReadEndTag(root.name);
  return true;
}

/// The places in a definition that differ from chain to chain.
struct ChangingPlaces {
  const DefinitionElement* folder = nullptr;
  std::vector<const DefinitionElement*> words;
};

ChangingPlaces FindPlaces(const DefinitionText& definition) {
  ChangingPlaces places;
  places.folder = definition.Find("Output/Folder");
  for (const DefinitionElement& element : definition.Elements()) {
    if (element.path == "Mcmc/Seed/Seed/Element") {
      places.words.push_back(&element);
    }
  }
  return places;
}

std::uint32_t WordOf(const DefinitionElement& element) {
  return Vell::IO::ParseUnsigned(LeadingInteger(element.value));
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

ChainDefinition MakeChain(const DefinitionText& definition, const ChangingPlaces& places,
                          int number, const SeedWords& seed) {
  ChainDefinition chain;
  chain.number = number;
  chain.name = "chain-" + std::to_string(number);
  chain.folder = JoinPath(places.folder->value, chain.name);
  chain.file = JoinPath(chain.folder, chain.name + ".xml");
  chain.chainFile =
      JoinPath(JoinPath(chain.folder, definition.Value("Output/McmcSubFolder")), "Chain.csv");
  chain.coefficientFile = JoinPath(chain.folder, definition.Value("Output/RegressionCoefficients"));
  chain.text = WithValues(definition, {{places.folder, chain.folder},
                                       {places.words[0], std::to_string(seed.z)},
                                       {places.words[1], std::to_string(seed.w)}});
  return chain;
}

}  // namespace

std::optional<ChainSet> MakeChainSet(const std::string& definition, int count) {
  if (!IsValidAnalysis(definition)) {
    Say("--chains needs the definition of an Analysis, which " + definition + " is not");
    return std::nullopt;
  }
  std::optional<std::string> bytes = ReadSmallFile(definition);
  const DefinitionText text(bytes ? std::move(*bytes) : std::string());
  const ChangingPlaces places = FindPlaces(text);
  const DefinitionElement* const seed = text.Find("Mcmc/Seed");
  if (places.folder == nullptr || seed == nullptr) {
    Say("cannot read " + definition);
    return std::nullopt;
  }
  if (places.words.size() != 2) {
    Say("the seed of " + definition +
        " is taken from the clock, so the chains could not be repeated; give it two fixed words "
        "(a Seed of the type Vector)");
    return std::nullopt;
  }
  const std::vector<SeedWords> seeds =
      DistinctSeeds({WordOf(*places.words[0]), WordOf(*places.words[1])}, count);
  if (seeds.empty()) {
    Say("with the seed of " + definition +
        " every chain would have the same random numbers; give it other words");
    return std::nullopt;
  }
  ChainSet set{places.folder->value, {}};
  for (int number = 1; number <= count; ++number) {
    set.chains.push_back(
        MakeChain(text, places, number, seeds[static_cast<std::size_t>(number) - 1]));
  }
  return set;
}

bool WriteChainDefinition(const ChainSet& set, const ChainDefinition& chain) {
  Vell::IO::Platform::CreateFolder(set.folder.c_str());
  Vell::IO::Platform::CreateFolder(chain.folder.c_str());
  if (!WriteWholeFile(chain.file, chain.text)) {
    Say("cannot write " + chain.file);
    return false;
  }
  return true;
}

}  // namespace Hovar
