// The files that the data generator writes.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <ostream>
#include <sstream>
#include <streambuf>

#include "studies.h"

namespace Hovar::Simulate {
namespace {

TEST(DataFileTest, LinesHaveTheFieldsOfTheHeader) {
  const Options options = Everything();
  const std::string text = File(options);
  EXPECT_EQ(text.back(), '\n');
  EXPECT_EQ(text.find_first_of("\r\" \t"), std::string::npos);
  const std::vector<Row> rows = Rows(text);
  ASSERT_EQ(rows.size(), 20001u);
  const Row& header = rows[0];
  ASSERT_EQ(header.size(), 3u + 3u + 2u * 15u);
  EXPECT_EQ(Row(header.begin(), header.begin() + 6),
            (Row{"Key", "HospitalID", "Y", "POA1", "POA2", "POA3"}));
  for (std::size_t j = 6; j < 21; ++j) {
    EXPECT_EQ(header[j][0], 'Z');
    EXPECT_EQ(header[j + 15][0], 'X');
    EXPECT_EQ(header[j + 15].substr(1), header[j].substr(1));
  }
  for (std::size_t i = 1; i < rows.size(); ++i) {
    ASSERT_EQ(rows[i].size(), header.size()) << "line " << i;
    for (std::size_t j = 2; j < header.size(); ++j) {
      const bool mayBeMissing = (j >= 3 && j < 6) || j >= 21;
      const std::string& cell = rows[i][j];
      ASSERT_TRUE(cell == "0" || cell == "1" || (cell.empty() && mayBeMissing))
          << "line " << i << ", " << header[j];
    }
  }
}

TEST(DataFileTest, KeysAndHospitalsAreNumbered) {
  Options options = Everything();
  options.hospitals = 12000;
  const StudyModel model = DrawStudyModel(options);
  const std::vector<Row> rows = Rows(File(options));
  EXPECT_EQ(rows[1][0], "R0000001");
  EXPECT_EQ(rows[20000][0], "R0020000");
  EXPECT_EQ(rows[1][1], "H0001");
  EXPECT_EQ(rows[20000][1], "H12000");
  std::size_t line = 1;
  for (std::size_t h = 0; h < model.hospitals.size(); ++h) {
    std::string id = std::to_string(h + 1);
    id.insert(0, id.size() < 4 ? 4 - id.size() : 0, '0').insert(0, 1, 'H');
    for (std::int32_t i = 0; i < model.hospitals[h].size; ++i, ++line) {
      ASSERT_EQ(rows[line][1], id) << "line " << line;
    }
  }
  EXPECT_EQ(line, rows.size());
}

TEST(DataFileTest, KeysBeyondSevenDigitsGrow) {
  Options options;
  options.variables = 0;
  options.indicators = 0;
  options.records = 1;
  options.hospitals = 1;
  const StudyModel model = DrawStudyModel(options);
  std::ostringstream stream;
  DataFileWriter writer(stream, model, options);
  Record record;
  record.index = 2147483645;
  record.hospital = 2147483645;
  EXPECT_TRUE(writer.Write(record));
  EXPECT_TRUE(writer.Finish());
  EXPECT_EQ(stream.str(), "R2147483646,H2147483646,0\n");
}

TEST(DataFileTest, EqualSeedsGiveEqualBytes) {
  Options options = Everything();
  const std::string text = File(options);
  EXPECT_EQ(File(options), text);
  options.seed = 2;
  EXPECT_NE(File(options), text);
}

TEST(DataFileTest, MissingCellsHideValuesAndChangeNothingElse) {
  Options options = Everything();
  const std::vector<Row> shown = Rows(File(options));
  options.missingX = 0.0;
  options.missingP = 0.0;
  const std::vector<Row> whole = Rows(File(options));
  ASSERT_EQ(shown.size(), whole.size());
  std::int64_t hiddenX = 0;
  std::int64_t hiddenP = 0;
  for (std::size_t i = 0; i < shown.size(); ++i) {
    for (std::size_t j = 0; j < shown[i].size(); ++j) {
      if (shown[i][j].empty()) {
        ++(j < 6 ? hiddenP : hiddenX);
        ASSERT_FALSE(whole[i][j].empty());
      } else {
        ASSERT_EQ(shown[i][j], whole[i][j]);
      }
    }
  }
  ExpectShare(hiddenX, 20000 * 15, 0.06, "hidden X cells");
  ExpectShare(hiddenP, 20000 - 7, 0.05,
              "hidden indicators, one a record at most, none in a planted one");
}

TEST(DataFileTest, HospitalEffectsChangeOutcomesOnly) {
  Options options = Everything();
  const std::vector<Row> weak = Rows(File(options));
  options.hospitalEffect = 2.0;
  std::vector<Row> strong = Rows(File(options));
  int changed = 0;
  for (std::size_t i = 1; i < weak.size(); ++i) {
    changed += strong[i][2] != weak[i][2] ? 1 : 0;
    strong[i][2] = weak[i][2];
  }
  EXPECT_GT(changed, 100);
  EXPECT_EQ(strong, weak);
}

TEST(DataFileTest, EveryVariableHasBothClassesInSmallFiles) {
  // At least 10 records are expected in the rarer class, so one of the 12 * 20 is empty with a
  // chance below 240 * exp(-10) = 0.011; the seeds are fixed, so this fails always or never.
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    Options options;
    options.records = 300;
    options.missingX = 0.05;
    options.dependentColumn = true;
    options.seed = seed;
    const std::vector<Row> rows = Rows(File(options));
    for (std::size_t j = 0; j < 12; ++j) {
      std::array<int, 2> counts{};
      for (std::size_t i = 1; i < rows.size(); ++i) {
        if (!rows[i][17 + j].empty()) {
          ++counts[rows[i][5 + j] == "1" ? 1 : 0];
        }
      }
      EXPECT_GT(counts[0], 0) << rows[0][5 + j] << ", seed " << seed;
      EXPECT_GT(counts[1], 0) << rows[0][5 + j] << ", seed " << seed;
    }
  }
}

// Takes `capacity` bytes and then fails; remembers what it was given.
class LimitedBuffer : public std::streambuf {
 public:
  explicit LimitedBuffer(std::int64_t capacity) : left_(capacity) {}
  std::int64_t total = 0;
  std::int64_t largest = 0;
  int refusals = 0;

 protected:
  std::streamsize xsputn(const char*, std::streamsize count) override {
    largest = std::max<std::int64_t>(largest, count);
    if (count > left_) {
      ++refusals;
      return 0;
    }
    left_ -= count;
    total += count;
    return count;
  }

 private:
  std::int64_t left_;
};

TEST(DataFileTest, LinesLeaveInSmallBlocks) {
  Options options = Everything();
  options.records = 200000;
  LimitedBuffer buffer(std::int64_t{1} << 40);
  std::ostream stream(&buffer);
  EXPECT_TRUE(WriteDataFile(stream, options));
  EXPECT_GT(buffer.total, 10000000);
  EXPECT_LT(buffer.largest, 70000);
}

TEST(DataFileTest, RefusedBytesEndTheFile) {
  const Options options = Everything();
  const std::int64_t size = static_cast<std::int64_t>(File(options).size());
  for (const std::int64_t capacity : {std::int64_t{0}, std::int64_t{100000}, size - 1}) {
    LimitedBuffer buffer(capacity);
    std::ostream stream(&buffer);
    EXPECT_FALSE(WriteDataFile(stream, options)) << capacity;
    EXPECT_EQ(buffer.refusals, 1) << capacity;
  }
  LimitedBuffer enough(size);
  std::ostream stream(&enough);
  EXPECT_TRUE(WriteDataFile(stream, options));
}

// The examples' data files can be made again by the command lines that the tool's main file states.
TEST(ExamplesTest, DataFilesAreWhatTheirCommandLinesGive) {
  struct Case {
    std::string file;
    std::vector<std::string_view> arguments;
  };
  const std::vector<Case> cases = {
      {"quickstart/data.csv",
       {"--records",
        "5000",
        "--hospitals",
        "25",
        "--variables",
        "12",
        "--indicators",
        "2",
        "--missing-x",
        "0.04",
        "--missing-p",
        "0.05",
        "--hospital-effect",
        "0.3",
        "--warnings",
        "4",
        "--zero-column",
        "--dependent-column",
        "--seed",
        "2"}},
      {"gee/data.csv",
       {"--records", "3000", "--hospitals", "40", "--variables", "6", "--indicators", "1",
        "--missing-x", "0.01", "--missing-p", "0.01", "--hospital-effect", "1.5", "--seed", "3"}},
  };
  for (const Case& c : cases) {
    std::ifstream stream(HOVAR_EXAMPLES_DIR "/" + c.file, std::ios::binary);
    ASSERT_TRUE(stream.is_open()) << c.file;
    const std::string text{std::istreambuf_iterator<char>(stream),
                           std::istreambuf_iterator<char>()};
    EXPECT_TRUE(text == File(Parse(c.arguments).options)) << c.file;
  }
}

}  // namespace
}  // namespace Hovar::Simulate
