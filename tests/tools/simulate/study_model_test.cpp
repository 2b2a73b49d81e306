// What the data generator draws first: the sizes of hospitals and the models of a study.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <set>

#include "hospital_sizes.h"
#include "studies.h"

namespace Hovar::Simulate {
namespace {

TEST(HospitalSizesTest, SizesArePositiveAndAddUp) {
  struct Case {
    std::int32_t records;
    std::int32_t hospitals;
  };
  for (const Case c :
       {Case{1, 1}, Case{7, 7}, Case{8, 7}, Case{5000, 1}, Case{5000, 25}, Case{5000, 4999},
        Case{100000, 30000}, Case{2147483646, 3}, Case{2147483646, 100000}}) {
    for (std::uint64_t seed = 1; seed <= 5; ++seed) {
      RandomSource random(seed, Purpose::kHospitals);
      const std::vector<std::int32_t> sizes = DrawHospitalSizes(c.records, c.hospitals, random);
      ASSERT_EQ(sizes.size(), static_cast<std::size_t>(c.hospitals));
      EXPECT_GE(*std::min_element(sizes.begin(), sizes.end()), 1);
      EXPECT_EQ(std::accumulate(sizes.begin(), sizes.end(), std::int64_t{0}), c.records)
          << c.records << " records, " << c.hospitals << " hospitals, seed " << seed;
    }
  }
}

TEST(HospitalSizesTest, SizesAreLognormal) {
  // ln((size - 1) / median) is normal with deviation 0.8: a share of Phi(1) - Phi(-1) = 0.6827 of
  // the hospitals lies within a factor e^0.8 of the weights' median. 20000 hospitals put the median
  // within 5 % (chance 1e-9), which moves that share by less than 0.001.
  RandomSource random(3, Purpose::kHospitals);
  std::vector<std::int32_t> sizes = DrawHospitalSizes(2000000000, 20000, random);
  std::sort(sizes.begin(), sizes.end());
  const double median = sizes[10000];
  const auto inside = std::count_if(sizes.begin(), sizes.end(), [median](std::int32_t size) {
    return std::abs(std::log(size / median)) < 0.8;
  });
  EXPECT_NEAR(static_cast<double>(inside), 20000 * 0.6827, Bound(20000 * 0.6827 * 0.3173) + 20);
}

TEST(StudyModelTest, ProbabilitiesLieInTheirRanges) {
  Options options = Everything();
  options.variables = 65;
  for (options.seed = 1; options.seed <= 50; ++options.seed) {
    const StudyModel model = DrawStudyModel(options);
    ASSERT_EQ(model.variables.size(), 65u);
    int frequent = 0;
    for (std::size_t j = 0; j < model.variables.size(); ++j) {
      const Variable& variable = model.variables[j];
      SCOPED_TRACE(variable.name + ", seed " + std::to_string(options.seed));
      EXPECT_GE(variable.zPrevalence, 0.01);
      if (variable.zPrevalence >= 0.2) {
        EXPECT_LE(variable.zPrevalence, 0.5);
        ++frequent;
      } else {
        EXPECT_LE(variable.zPrevalence, 0.15);
      }
      if (j != model.neverSeen) {
        EXPECT_GE(variable.xGivenZ0, 0.002);
        EXPECT_LE(variable.xGivenZ0, 0.02);
        EXPECT_GE(variable.xGivenZ1, 0.6);
        EXPECT_LE(variable.xGivenZ1, 0.95);
      }
    }
    EXPECT_EQ(frequent, 6);  // One in ten of the 60 ordinary variables.
  }
}

TEST(StudyModelTest, NamesAreDistinct) {
  Options options = Everything();
  options.variables = 40;
  std::set<std::string> names;
  for (const Variable& variable : DrawStudyModel(options).variables) {
    EXPECT_TRUE(names.insert(variable.name).second) << variable.name;
  }
}

TEST(StudyModelTest, SmallFilesExpectTenRecordsInEveryClass) {
  for (const std::int32_t records : {20, 50, 100, 500, 2000}) {
    for (const double missing : {0.0, 0.05}) {
      Options options;
      options.records = records;
      options.hospitals = 2;
      options.missingX = records == 20 ? 0.0 : missing;
      for (const Variable& variable : DrawStudyModel(options).variables) {
        const double known = records * (1.0 - options.missingX);
        EXPECT_GE(variable.zPrevalence * known, 10.0 - 1e-9) << variable.name << ", " << records;
        EXPECT_GE((1.0 - variable.zPrevalence) * known, 10.0 - 1e-9)
            << variable.name << ", " << records;
      }
    }
  }
}

TEST(StudyModelTest, SmallestStudiesCanBeDrawn) {
  for (const std::int32_t variables : {0, 1, 2, 3, 4, 5}) {
    Options options;
    options.records = 1;
    options.hospitals = 1;
    options.indicators = 0;
    options.variables = variables;
    options.dependentColumn = variables >= 4;
    options.zeroColumn = variables == 1 || variables == 5;
    const std::vector<Row> rows = Rows(File(options));
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[1].size(), 3u + 2u * static_cast<std::size_t>(variables));
  }
}

}  // namespace
}  // namespace Hovar::Simulate
