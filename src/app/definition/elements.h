#pragma once

// What the grammar of definition files is made of. The grammar itself is the table in
// element_table.h, from which follow the reader, the tools that look at definitions, and the
// schema.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Hovar {

/// What the root element of a definition stands for. A batch lists other definitions; the others
/// read a data file and write into an output folder.
enum class RunKind : std::uint8_t { kAnalysis, kPrediction, kValidation, kBatch };

/// The elements below a root. One that stands at one path in several kinds of run is one element.
/// The table says which tag each has and what it holds.
enum class Element : std::uint8_t {
  kInput,
  kData,
  kNumberOfPoaIndicators,
  kInputRegressionCoefficients,
  kInputIndividualPredictions,
  kOutput,
  kFolder,
  kRegressionCoefficients,
  kMcmcSubFolder,
  kIndividualPredictions,
  kHospitalPredictions,
  kCStatistics,
  kLogFile,
  kRegression,
  kUseGeneralizedEstimatingEquations,
  kLinearDependence,
  kLinearDependenceTolerance,
  kParameters,
  kParametersTolerance,
  kParametersMaxIterations,
  kParametersPriorPrecision,
  kParametersMcmc,
  kParametersMcmcTolerance,
  kParametersMcmcMaxIterations,
  kParametersMcmcPriorPrecision,
  kMcmc,
  kSeed,
  kSeedVector,
  kSeedWord,
  kThinning,
  kBurnin,
  kSteps,
  kSimulations,
  kSimulation,
};

/// What may stand between the tags of an element. All groups of one type, kGroup apart, hold the
/// same elements.
///
///   kPath, kName       a path as it is used, or a name within the output folder; text as it stands
///   kFlag              "true" or "false", without white space
///   kSeedWord          a whole number from 0 to 2^32 - 1
///   kCount             a whole number of 0 or more
///   kPositiveCount     a whole number of 1 or more
///   kSmallTolerance    a real number above 0 and below 1
///   kPrecision         a finite real number of 0 or more
///
/// The program reads every number of 32 bits and every real; these ranges are those that make
/// sense, for the schema and the check.
enum class ElementType : std::uint8_t {
  kGroup,
  kFitSettings,
  kSampling,
  kSeedSource,  // one of kSeedForms, named by the attribute xsi:type
  kSeedWords,
  kSeedWord,
  kPath,
  kName,
  kFlag,
  kCount,
  kPositiveCount,
  kSmallTolerance,
  kPrecision,
};

/// How the text of a type is read: as elements of its own, as text, as a flag, or by the number
/// reading of XmlReader.
enum class ValueKind : std::uint8_t { kElements, kText, kFlag, kWholeNumber, kReal };

/// How the text of an element of this type is read; kElements where it holds elements instead.
constexpr ValueKind ValueKindOf(ElementType type) noexcept {
  switch (type) {
    case ElementType::kPath:
    case ElementType::kName:
      return ValueKind::kText;
    case ElementType::kFlag:
      return ValueKind::kFlag;
    case ElementType::kSeedWord:
    case ElementType::kCount:
    case ElementType::kPositiveCount:
      return ValueKind::kWholeNumber;
    case ElementType::kSmallTolerance:
    case ElementType::kPrecision:
      return ValueKind::kReal;
    case ElementType::kGroup:
    case ElementType::kFitSettings:
    case ElementType::kSampling:
    case ElementType::kSeedSource:
    case ElementType::kSeedWords:
      break;
  }
  return ValueKind::kElements;
}

/// What a file or folder is to a run. Files that a run writes come in the order in which it opens
/// them.
enum class FileRole : std::uint8_t {
  kNone,
  kDefinition,
  kData,
  kOutputFolder,
  kLog,
  kChainFolder,  // holds the next two
  kChainSummary,
  kChain,
  kCoefficients,
  kIndividualPredictions,
  kHospitalPredictions,
  kCStatistics,
};

/// How often an element stands in its place.
enum class Occurrence : std::uint8_t { kOnce, kTwice, kAnyNumber };

/// A set of kinds of run, of one at least.
class RunKinds {
 public:
  /// The given kinds.
  template <typename... Kinds>
  explicit constexpr RunKinds(Kinds... kinds) noexcept : bits_((BitOf(kinds) | ...)) {}

  constexpr bool Contains(RunKind kind) const noexcept { return (bits_ & BitOf(kind)) != 0; }

 private:
  static constexpr unsigned BitOf(RunKind kind) noexcept {
    return 1U << static_cast<unsigned>(kind);
  }

  unsigned bits_;
};

/// A row of the table of elements. Its texts live as long as the process.
struct ElementEntry {
  Element element;
  RunKinds kinds;         // of run that have it
  std::string_view path;  // below the root: "Output/LogFile"
  ElementType type;
  FileRole role;                // of the file or folder that it names
  std::string_view example;     // a value that can be used; empty for one that holds elements
  std::string_view annotation;  // what it means, with unit and range, for documents and editors
  Occurrence occurrence = Occurrence::kOnce;

  /// The name in its tags.
  constexpr std::string_view Name() const noexcept { return path.substr(path.rfind('/') + 1); }
  /// How many elements it stands in, the root apart.
  constexpr std::size_t Depth() const noexcept {
    return static_cast<std::size_t>(std::count(path.begin(), path.end(), '/'));
  }
  /// True for an element that stands within another one, at any depth.
  constexpr bool IsWithin(const ElementEntry& outer) const noexcept {
    return path.size() > outer.path.size() && path.starts_with(outer.path) &&
           path[outer.path.size()] == '/';
  }
  /// True for what is written, which lies in the output folder.
  constexpr bool IsOutput() const noexcept { return path.starts_with("Output/"); }
};

}  // namespace Hovar
