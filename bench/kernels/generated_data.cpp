#include "generated_data.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include "app/run_files.h"
#include "data_file.h"
#include "quiet_output.h"

namespace Hovar::Bench {

namespace {

constexpr std::int64_t kRecordsPerHospital = 250;
constexpr double kMissingP = 0.05;
constexpr double kMissingX = 0.03;
// At most, so that wide files have complete records too.
constexpr double kMissingCellsPerRecord = 1.8;

/// The folder of this process, which is made at the first call and was not there before.
const std::filesystem::path& ScratchPath() {
  static const std::filesystem::path path = [] {
    std::string name = (std::filesystem::temp_directory_path() / "hovar_bench_XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
      static_cast<void>(std::fprintf(stderr, "hovar_bench: cannot make %s\n", name.c_str()));
      std::exit(2);
    }
    return std::filesystem::path(name);
  }();
  return path;
}

void WriteFile(const std::filesystem::path& path, std::int64_t records, std::int64_t variables) {
  Simulate::Options options;
  options.records = static_cast<std::int32_t>(records);
  options.hospitals = static_cast<std::int32_t>(records / kRecordsPerHospital);
  options.variables = static_cast<std::int32_t>(variables);
  options.indicators = kIndicators;
  options.missingX = std::min(kMissingX, kMissingCellsPerRecord / static_cast<double>(variables));
  options.missingP = kMissingP;
  std::ofstream file(path, std::ios::binary);
  if (!Simulate::WriteDataFile(file, options)) {
    static_cast<void>(std::fprintf(stderr, "hovar_bench: cannot write %s\n", path.c_str()));
    std::exit(2);
  }
}

}  // namespace

std::filesystem::path ScratchFolder() { return ScratchPath(); }

void RemoveScratchFolder() noexcept {
  std::error_code ignored;
  std::filesystem::remove_all(ScratchPath(), ignored);
}

void ReadQuietly(DataSet& data, const std::filesystem::path& file) {
  const QuietOutput quiet;
  ReadDataFileAt(data, Vell::String(file.c_str()), kIndicators);
}

const GeneratedData& DataOfSize(std::int64_t records, std::int64_t variables) {
  static std::map<std::pair<std::int64_t, std::int64_t>, std::unique_ptr<GeneratedData>> kept;
  std::unique_ptr<GeneratedData>& entry = kept[{records, variables}];
  if (entry == nullptr) {
    entry = std::make_unique<GeneratedData>();
    entry->file =
        ScratchFolder() / (std::to_string(records) + "x" + std::to_string(variables) + ".csv");
    WriteFile(entry->file, records, variables);
    ReadQuietly(entry->data, entry->file);
  }
  return *entry;
}

}  // namespace Hovar::Bench
