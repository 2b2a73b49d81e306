#include "tools/plan/file_nouns.h"

namespace Hovar {

std::string_view NounOf(FileRole role) noexcept {
  switch (role) {
    case FileRole::kDefinition:
      return "definition file";
    case FileRole::kData:
      return "data file";
    case FileRole::kLog:
      return "log file";
    case FileRole::kChainSummary:
      return "summary of the chain";
    case FileRole::kChain:
      return "chain";
    case FileRole::kCoefficients:
      return "coefficient file";
    case FileRole::kIndividualPredictions:
      return "file of individual predictions";
    case FileRole::kHospitalPredictions:
      return "file of hospital predictions";
    case FileRole::kCStatistics:
      return "file of C-statistics";
    case FileRole::kNone:
    case FileRole::kOutputFolder:
    case FileRole::kChainFolder:
      break;
  }
  return {};
}

}  // namespace Hovar
