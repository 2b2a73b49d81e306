#pragma once

// Data sets written as a few lines of text. Used by tests that link the data layer.

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "data/column_elimination.h"
#include "data/data_set.h"

namespace Testing {

inline Vell::String NumberedName(std::string_view stem, std::int32_t number) {
  return Vell::String(std::string(stem) + std::to_string(number));
}

/// Makes a data set from lines "hospital y p z x", where z and x hold one character for each cell
/// after the intercept ("-" where there is none). Cells are 0 or 1; in p and x a "." is a missing
/// cell and a "*" a missing one whose value bit is set. Variables are named Z1, X1, Z2, X2, ...
inline Hovar::DataSet MakeDataSet(std::string_view text) {
  struct Line {
    std::string hospital, y, p, z, x;
  };
  std::vector<Line> lines;
  std::istringstream stream{std::string(text)};
  for (Line line; stream >> line.hospital >> line.y >> line.p >> line.z >> line.x;) {
    lines.push_back(line);
  }
  EXPECT_TRUE(stream.eof()) << "a line with fewer than five words in:\n" << text;

  Hovar::DataSet data;
  data.recordCount = static_cast<std::int32_t>(lines.size());
  data.variableCount = 1;
  if (!lines.empty() && lines[0].x != "-") {
    data.variableCount += static_cast<std::int32_t>(lines[0].x.size());
  }
  data.y.Resize(data.recordCount);
  data.p.Resize(data.recordCount);
  data.z = Vell::BitMatrix(data.recordCount, data.variableCount);
  data.x = Vell::TernaryMatrix(data.recordCount, data.variableCount);
  data.recordHospital.Resize(data.recordCount);
  const auto isOne = [](char cell) { return cell == '1' || cell == '*'; };
  const auto isMissing = [](char cell) { return cell == '.' || cell == '*'; };
  for (std::int32_t i = 0; i < data.recordCount; ++i) {
    const Line& line = lines[static_cast<std::size_t>(i)];
    if (data.hospitalCount == 0 ||
        data.hospitalIds[data.hospitalCount - 1].View() != line.hospital) {
      data.hospitalIds.Append(Vell::String(line.hospital));
      data.hospitalStart.Append(i);
      ++data.hospitalCount;
    }
    data.recordHospital[i] = data.hospitalCount - 1;
    data.y.Set(i, isOne(line.y[0]));
    data.p.SetValue(i, isOne(line.p[0]));
    data.p.SetMissing(i, isMissing(line.p[0]));
    data.z.Set(i, 0, true);
    data.x.SetValue(i, 0, true);
    for (std::int32_t j = 1; j < data.variableCount; ++j) {
      const char z = line.z.at(static_cast<std::size_t>(j - 1));
      const char x = line.x.at(static_cast<std::size_t>(j - 1));
      data.z.Set(i, j, isOne(z));
      data.x.SetValue(i, j, isOne(x));
      data.x.SetMissing(i, j, isMissing(x));
    }
  }
  data.hospitalStart.Append(data.recordCount);
  data.hospitalSize.Resize(data.hospitalCount);
  for (std::int32_t h = 0; h < data.hospitalCount; ++h) {
    data.hospitalSize[h] = data.hospitalStart[h + 1] - data.hospitalStart[h];
  }
  data.hospitalComplete.Resize(data.hospitalCount);
  data.hospitalCompleteP0.Resize(data.hospitalCount);
  data.hospitalHasMissing.Resize(data.hospitalCount);
  data.recordHasMissing.Resize(data.recordCount);
  data.zNames = Vell::StringArray(data.variableCount);
  data.xNames = Vell::StringArray(data.variableCount);
  data.zNames[0] = Vell::String("ZIntercept");
  data.xNames[0] = Vell::String("XIntercept");
  for (std::int32_t j = 1; j < data.variableCount; ++j) {
    data.zNames[j] = NumberedName("Z", j);
    data.xNames[j] = NumberedName("X", j);
  }
  CountNonMissing(data);
  return data;
}

/// A data set that lost its intercept, as it does to a coefficient file without the intercept's
/// row: the first variable is column 0.
inline Hovar::DataSet MakeDataSetWithoutIntercept(std::string_view text) {
  Hovar::DataSet data = MakeDataSet(text);
  Vell::IndexVector intercept;
  intercept.Append(0);
  RemoveColumns(data, intercept);
  return data;
}

/// The cells of a data set as the text that makes it; those from column `first` on.
inline std::string Describe(const Hovar::DataSet& data, std::int32_t first = 1) {
  const auto cell = [](bool value, bool isMissing) {
    return isMissing ? (value ? '*' : '.') : (value ? '1' : '0');
  };
  std::string text;
  for (std::int32_t i = 0; i < data.recordCount; ++i) {
    text += data.hospitalIds[data.recordHospital[i]].View();
    text += data.y.Get(i) ? " 1 " : " 0 ";
    text += cell(data.p.Value(i), data.p.IsMissing(i));
    std::string z;
    std::string x;
    for (std::int32_t j = first; j < data.variableCount; ++j) {
      z += data.z.Get(i, j) ? '1' : '0';
      x += cell(data.x.Value(i, j), data.x.IsMissing(i, j));
    }
    text += " " + (z.empty() ? "-" : z) + " " + (x.empty() ? "-" : x) + "\n";
  }
  return text;
}

/// The elements of an array of texts.
inline std::vector<std::string> Texts(const Vell::StringArray& array) {
  std::vector<std::string> result;
  for (std::int32_t i = 0; i < array.Count(); ++i) {
    result.emplace_back(array[i].View());
  }
  return result;
}

}  // namespace Testing
