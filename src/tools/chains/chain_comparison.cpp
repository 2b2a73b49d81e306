#include "tools/chains/chain_comparison.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/definition/element_table.h"
#include "foundation/io/platform/open_folders.h"
#include "regression/regression_results.h"
#include "tools/chains/messages.h"
#include "tools/plan/definition_file.h"
#include "tools/plan/result_file.h"
#include "tools/support/chain_list.h"
#include "tools/support/files.h"
#include "tools/support/message.h"
#include "tools/support/messages.h"
#include "tools/support/shown_path.h"
#include "tools/support/text.h"

namespace Hovar {
namespace {

namespace Platform = Vell::IO::Platform;

/// What an element holds, without the blanks that the reader of numbers passes over.
std::string_view ValueOf(const DefinedValue& value) {
  return ValueKindOf(EntryOf(value.element).type) == ValueKind::kText
             ? std::string_view(value.text)
             : Trimmed(value.text, kBlanksBeforeNumbers);
}

/// True when a chain's definition file has the values that it would be written with now.
bool HasDefinitionOfNow(const ChainDefinition& chain) {
  std::optional<std::string> bytes = ReadSmallFile(chain.file);
  if (!bytes) {
    Say(kToolMessages.cannotRead, PastablePath(chain.file));
    return false;
  }
  if (*bytes == chain.text) {
    return true;
  }
  const DefinitionReading was = ReadDefinition(TextSource(chain.file, std::move(bytes)));
  const DefinitionReading now = ReadDefinition(TextSource(chain.file, chain.text));
  if (!was.definition || !now.definition ||
      was.definition->values.size() != now.definition->values.size()) {
    Say(kChainMessages.otherDefinition, chain.name);
    return false;
  }
  const auto isSame = [](const DefinedValue& one, const DefinedValue& other) {
    return one.element == other.element && one.type == other.type && ValueOf(one) == ValueOf(other);
  };
  const auto [old, current] =
      std::mismatch(was.definition->values.begin(), was.definition->values.end(),
                    now.definition->values.begin(), isSame);
  if (old == was.definition->values.end()) {
    return true;
  }
  if (old->element != current->element) {
    Say(kChainMessages.otherDefinition, chain.name);
  } else {
    Say(kChainMessages.otherValue, chain.name, EntryOf(old->element).path, Quoted(ValueOf(*old)),
        Quoted(ValueOf(*current)));
  }
  return false;
}

/// True for the same numbers, of which neither is missing in one of the two alone.
bool AreEqual(const CoefficientEstimate& one, const CoefficientEstimate& other) noexcept {
  return one.estimate == other.estimate && one.modelStandardError == other.modelStandardError &&
         one.empiricalStandardError == other.empiricalStandardError;
}

/// True for results with the same variables and the same first four blocks.
bool HaveSameFits(const RegressionResults& one, const RegressionResults& other) {
  const auto haveSameNames = [](const Vell::StringArray& a, const Vell::StringArray& b) {
    bool isSame = a.Count() == b.Count();
    for (std::int32_t i = 0; isSame && i < a.Count(); ++i) {
      isSame = a[i].View() == b[i].View();
    }
    return isSame;
  };
  constexpr std::size_t kFits = 4;
  bool isSame = haveSameNames(one.xNames, other.xNames) && haveSameNames(one.zNames, other.zNames);
  for (std::size_t b = 0; isSame && b < kFits; ++b) {
    isSame = std::equal(one.blocks[b].begin(), one.blocks[b].end(), other.blocks[b].begin(),
                        other.blocks[b].end(), AreEqual);
  }
  return isSame;
}

bool HaveSameFits(const ChainSet& set) {
  std::optional<RegressionResults> first;
  std::string firstName;
  for (const ChainDefinition& chain : set.chains) {
    std::optional<RegressionResults> results = ReadResultFile(chain.coefficientFile);
    if (first && results && !HaveSameFits(*first, *results)) {
      Say(kChainMessages.otherFits, chain.name, firstName);
      return false;
    }
    if (!first && results) {
      first = std::move(results);
      firstName = chain.name;
    }
  }
  return true;
}

}  // namespace

bool BelongTogether(const ChainSet& set) {
  return std::all_of(set.chains.begin(), set.chains.end(), HasDefinitionOfNow) && HaveSameFits(set);
}

void NameEarlierChains(const ChainSet& set) {
  const Platform::FolderHandle folder = Platform::OpenFolder(set.folder.c_str());
  if (folder == Platform::kNoFolder) {
    return;
  }
  std::vector<int> numbers;
  const auto add = [](void* context, const char* name) {
    if (const std::optional<int> number = ChainNumberOf(name)) {
      static_cast<std::vector<int>*>(context)->push_back(*number);
    }
  };
  Platform::VisitFolder(folder, add, &numbers);
  Platform::CloseFolder(folder);
  std::sort(numbers.begin(), numbers.end());
  for (const int number : numbers) {
    if (number > static_cast<int>(set.chains.size())) {
      Say(kChainMessages.earlierChain,
          PastablePath(JoinPath(set.folder, "chain-" + std::to_string(number))));
    }
  }
}

}  // namespace Hovar
