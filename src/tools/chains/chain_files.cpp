#include "tools/chains/chain_files.h"

#include <array>
#include <cstdint>
#include <string_view>

#include "foundation/io/file_stream.h"
#include "foundation/io/number_text.h"
#include "regression/coefficient_file.h"
#include "tools/support/files.h"
#include "tools/support/inputs.h"

namespace Hovar {
namespace {

/// Takes the text up to the next comma off a line.
std::string_view TakeField(std::string_view& line) {
  const std::size_t comma = line.find(',');
  const std::string_view field = line.substr(0, comma);
  line.remove_prefix(comma == std::string_view::npos ? line.size() : comma + 1);
  return field;
}

/// Takes the lines of a chain file, header first.
class ChainReader {
 public:
  /// False when the line does not fit.
  bool Take(std::string_view line) {
    const std::string_view first = TakeField(line);
    if (!hasHeader_) {
      hasHeader_ = true;
      while (!line.empty()) {
        draws_.names.emplace_back(TakeField(line));
      }
      draws_.columns.resize(draws_.names.size());
      return first == "Step";
    }
    for (std::vector<double>& column : draws_.columns) {
      std::size_t used = 0;
      const std::string_view field = TakeField(line);
      column.push_back(Vell::IO::ParseReal(field, &used));
      if (used == 0 || used != field.size()) {
        return false;
      }
    }
    return line.empty();
  }

  std::optional<ChainDraws> Finish() {
    return hasHeader_ ? std::optional<ChainDraws>(std::move(draws_)) : std::nullopt;
  }

 private:
  bool hasHeader_ = false;
  ChainDraws draws_;
};

}  // namespace

std::optional<ChainDraws> ReadChainFile(const std::string& path) {
  const InputFile file(path);
  if (!file.IsOpen()) {
    return std::nullopt;
  }
  ChainReader reader;
  std::string rest;
  std::vector<char> block(std::size_t{1} << 20);
  std::int64_t count = 0;
  while ((count = file.Read(block)) > 0) {
    rest.append(block.data(), static_cast<std::size_t>(count));
    std::size_t begin = 0;
    for (std::size_t end = rest.find('\n'); end != std::string::npos;
         end = rest.find('\n', begin)) {
      if (!reader.Take(std::string_view(rest).substr(begin, end - begin))) {
        return std::nullopt;
      }
      begin = end + 1;
    }
    rest.erase(0, begin);
  }
  return count == 0 && rest.empty() ? reader.Finish() : std::nullopt;
}

std::vector<std::string> ReadCoefficientNames(const std::string& path) {
  Vell::IO::FileStream stream(Vell::String(path), kReadInput);
  RegressionResults results;
  ReadCoefficientFile(results, stream);
  std::vector<std::string> names;
  names.reserve(static_cast<std::size_t>(results.xNames.Count()));
  for (std::int32_t i = 0; i < results.xNames.Count(); ++i) {
    names.emplace_back(results.xNames[i].View());
  }
  return names;
}

}  // namespace Hovar
