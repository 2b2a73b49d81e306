#include "support/files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>

namespace Testing {

ScratchFolder::ScratchFolder() {
  std::random_device random;
  do {
    path_ = std::filesystem::temp_directory_path() / ("hovar-test-" + std::to_string(random()));
  } while (!std::filesystem::create_directory(path_));
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string ScratchFolder::Write(std::string_view name, std::string_view content) const {
  const std::filesystem::path file = path_ / name;
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << content;
  return file.string();
}

std::string ScratchFolder::Read(std::string_view name) const { return ReadFile(path_ / name); }

bool HasTemporaryFile(const ScratchFolder& folder) {
  const std::filesystem::recursive_directory_iterator all(folder.Path());
  return std::any_of(begin(all), end(all),
                     [](const auto& entry) { return entry.path().extension() == ".part"; });
}

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << path;
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::vector<std::string>> ReadCsv(const std::filesystem::path& path) {
  std::vector<std::vector<std::string>> rows;
  std::istringstream lines(ReadFile(path));
  for (std::string line; std::getline(lines, line);) {
    std::vector<std::string>& row = rows.emplace_back();
    std::istringstream cells(line);
    for (std::string cell; std::getline(cells, cell, ',');) {
      row.push_back(cell);
    }
    if (line.ends_with(',')) {
      row.emplace_back();
    }
  }
  return rows;
}

std::filesystem::path ReferenceFile(std::string_view name) {
  return std::filesystem::path(HOVAR_REFERENCE_FOLDER) / name;
}

}  // namespace Testing
