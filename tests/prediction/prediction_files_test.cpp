#include "prediction/prediction_files.h"

#include <gtest/gtest.h>

#include <limits>

#include "models.h"
#include "support/data_sets.h"
#include "support/files.h"
#include "support/raised.h"
#include "support/streams.h"

namespace {

using Hovar::IndividualPredictions;
using Testing::InputStream;
using Testing::MakeDataSet;
using Testing::OutputStream;
using Testing::ScratchFolder;
using Testing::VectorOf;

const std::string kIndividualHeader =
    "Key,Hospital ID,Y,E[Y|Z],E[Y|X],E[Y|P=0],\"E[Y|X,P=0]\",\"E[Y|X,P=0]-MCMC\",P,E[P|X],"
    "E[P|YPXZ]\n";
const std::string kHospitalHeader =
    "Hospital ID,Nr. records,Nr. non missing records,Nr. non missing records P=0,Y,E[Y|Z],E[Y|X],"
    "E[Y|P=0],\"E[Y|X,P=0]\",\"E[Y|X,P=0]-MCMC\",P,E[P|X],E[P|YPXZ]\n";

/// The same prediction of every kind for all records but for E[P|YPXZ].
IndividualPredictions Uniform(std::int32_t records, double pGivenAll) {
  IndividualPredictions predictions;
  predictions.Resize(records);
  for (std::int32_t i = 0; i < records; ++i) {
    predictions.yGivenZ[i] = 0.1;
    predictions.yGivenX[i] = 0.2;
    predictions.yGivenXWithoutP[i] = 0.3;
    predictions.yGivenXWithoutPMcmc[i] = 0.4;
    predictions.pGivenX[i] = 0.5;
    predictions.pGivenAll[i] = pGivenAll;
  }
  return predictions;
}

std::string WriteWithKeysOf(const std::string& dataFile, const Hovar::DataSet& dataSet,
                            const IndividualPredictions& predictions) {
  const ScratchFolder folder;
  OutputStream output;
  Hovar::WriteIndividualPredictions(
      predictions, dataSet, Vell::String(folder.Write("data.csv", dataFile)), output.Writer());
  return output.Content();
}

TEST(PredictionNamesTest, StandInTheOrderOfTheFiles) {
  std::string names;
  for (const std::string_view name : Hovar::kPredictionNames) {
    names += std::string(name) + " ";
  }
  EXPECT_EQ(names, "Y E[Y|Z] E[Y|X] E[Y|P=0] E[Y|X,P=0] E[Y|X,P=0]-MCMC P E[P|X] E[P|YPXZ] ");
}

TEST(IndividualFileTest, HoldsOneLineForEachRecord) {
  const Hovar::DataSet dataSet = MakeDataSet("A 1 1 - -\nA 0 0 - -\nB 1 . - -\nB 1 * - -\n");
  IndividualPredictions predictions = Uniform(4, 0.25);
  predictions.pGivenAll[0] = 1;
  predictions.yGivenX[1] = 1.0 / 3;
  predictions.yGivenZ[1] = 1e-10;
  predictions.yGivenXWithoutP[1] = 0;
  predictions.pGivenX[1] = 0.12345678;
  EXPECT_EQ(WriteWithKeysOf("Key,Hospital,Y,P\nk1,A,1,1\nk2,A,0,0\nk3,B,1,\nk4,B,1,\n", dataSet,
                            predictions),
            kIndividualHeader +
                "k1,A,1,0.1,0.2,0,0.3,0.4,1,0.5,1\n"
                // Without the outcome E[Y|P=0] is 0, whatever P may be.
                "k2,A,0,1e-10,0.333333,0,0,0.4,0,0.123457,0.25\n"
                // A missing P is empty; E[Y|P=0] = 1 * (1 - 0.25).
                "k3,B,1,0.1,0.2,0.75,0.3,0.4,,0.5,0.25\n"
                "k4,B,1,0.1,0.2,0.75,0.3,0.4,,0.5,0.25\n");
}

TEST(IndividualFileTest, NumbersThatAreNoneAreWrittenToo) {
  IndividualPredictions predictions = Uniform(1, 0);
  predictions.yGivenX[0] = std::numeric_limits<double>::quiet_NaN();
  predictions.yGivenZ[0] = -std::numeric_limits<double>::quiet_NaN();
  predictions.pGivenX[0] = std::numeric_limits<double>::infinity();
  predictions.yGivenXWithoutP[0] = -0.0;
  EXPECT_EQ(WriteWithKeysOf("k\nx\n", MakeDataSet("A 1 0 - -\n"), predictions),
            kIndividualHeader + "x,A,1,nan,nan,1,-0,0.4,0,inf,0\n");
}

TEST(IndividualFileTest, KeysAreReadAsCsvFields) {
  const std::string data =
      "Key,Hospital,Y,P\n"
      "\"a \"\"b\"\"\",A,1,0\n"
      "\"c,d\",A,1,0\n"
      "\"e\nf\",A,1,0\n"
      ",A,1,0\n"
      " g \t,A,1,0\n"
      "\"h\",A,1,0\n"
      "\"\",A,1,0\n";
  std::string lines;
  for (int i = 0; i < 7; ++i) {
    lines += "A 1 0 - -\n";
  }
  const std::string rest = ",A,1,0.1,0.2,1,0.3,0.4,0,0.5,0\n";
  EXPECT_EQ(WriteWithKeysOf(data, MakeDataSet(lines), Uniform(7, 0)),
            kIndividualHeader + "\"a \"\"b\"\"\"" + rest + "\"c,d\"" + rest + "\"e\nf\"" + rest +
                rest + " g \t" + rest + "h" + rest + rest);
}

TEST(IndividualFileTest, LineFeedsInQuotedFieldsBehindTheKeyDoNotEndARecord) {
  const std::string data =
      "Key,Hospital,Y,P,Z,\"X\nof the \"\"record\"\", any\"\n"
      "a,\"A\nx\",1,0,0,0\n"
      "b,\"A\nx\",1,0,0,\"1\n2\n\"\n"
      "c,\"B\",1,0,\"1,\n\",0\n";
  const Hovar::DataSet dataSet = MakeDataSet("A 1 0 - -\nA 1 0 - -\nB 1 0 - -\n");
  const std::string rest = ",1,0.1,0.2,1,0.3,0.4,0,0.5,0\n";
  EXPECT_EQ(WriteWithKeysOf(data, dataSet, Uniform(3, 0)),
            kIndividualHeader + "a,A" + rest + "b,A" + rest + "c,B" + rest);
}

TEST(IndividualFileTest, HospitalIdsAreQuotedWhereTheyMustBe) {
  Hovar::DataSet dataSet = MakeDataSet("A 1 0 - -\nB 1 0 - -\nC 1 0 - -\n");
  dataSet.hospitalIds[0] = Vell::String("St. \"Mary\"");
  dataSet.hospitalIds[1] = Vell::String("B, north");
  dataSet.hospitalIds[2] = Vell::String("");
  const std::string rest = ",1,0.1,0.2,1,0.3,0.4,0,0.5,0\n";
  EXPECT_EQ(
      WriteWithKeysOf("Key\na\nb\nc\n", dataSet, Uniform(3, 0)),
      kIndividualHeader + "a,\"St. \"\"Mary\"\"\"" + rest + "b,\"B, north\"" + rest + "c," + rest);
}

TEST(IndividualFileTest, ADataFileThatIsGoneIsNamed) {
  const ScratchFolder folder;
  const std::string path = folder.File("gone.csv");
  OutputStream output;
  Testing::ExpectRaises<Vell::Exceptions::FileOpenException>(
      "File \"" + path + "\" can not be opened", [&] {
        Hovar::WriteIndividualPredictions(Uniform(1, 0), MakeDataSet("A 1 0 - -\n"),
                                          Vell::String(path), output.Writer());
      });
}

IndividualPredictions ReadBack(const std::string& text) {
  const InputStream stream(text);
  IndividualPredictions predictions;
  Hovar::ReadIndividualPredictions(predictions, *stream);
  return predictions;
}

void ExpectColumn(const Vell::Vector& column, const std::vector<double>& expected) {
  EXPECT_EQ(std::vector<double>(column.begin(), column.end()), expected);
}

TEST(ReadPredictionsTest, TheStoredColumnsAreReadBackFromTheirPlaces) {
  const IndividualPredictions read = ReadBack(kIndividualHeader +
                                              "k,A,1,0.1,0.2,9,0.3,0.4,8,0.5,0.6\n"
                                              "\"k \"\"2\"\"\",A,1, 1e-3,-2,x,.5,4. ,,inf,0x10\n");
  ExpectColumn(read.yGivenZ, {0.1, 0.001});
  ExpectColumn(read.yGivenX, {0.2, -2});
  ExpectColumn(read.yGivenXWithoutP, {0.3, 0.5});
  ExpectColumn(read.yGivenXWithoutPMcmc, {0.4, 4});
  ExpectColumn(read.pGivenX, {0.5, std::numeric_limits<double>::infinity()});
  ExpectColumn(read.pGivenAll, {0.6, 16});
}

TEST(ReadPredictionsTest, WhatWasWrittenIsReadBack) {
  const Hovar::DataSet dataSet = MakeDataSet("A 1 1 - -\nA 0 . - -\n");
  IndividualPredictions written = Uniform(2, 0.75);
  written.yGivenX[1] = 0.015625;
  written.pGivenAll[0] = 1;
  const IndividualPredictions read =
      ReadBack(WriteWithKeysOf("Key\nk1\n\"k\"\"2\"\n", dataSet, written));
  EXPECT_TRUE(std::equal(written.yGivenZ.begin(), written.yGivenZ.end(), read.yGivenZ.begin()));
  EXPECT_TRUE(std::equal(written.yGivenX.begin(), written.yGivenX.end(), read.yGivenX.begin()));
  EXPECT_TRUE(std::equal(written.yGivenXWithoutP.begin(), written.yGivenXWithoutP.end(),
                         read.yGivenXWithoutP.begin()));
  EXPECT_TRUE(std::equal(written.yGivenXWithoutPMcmc.begin(), written.yGivenXWithoutPMcmc.end(),
                         read.yGivenXWithoutPMcmc.begin()));
  EXPECT_TRUE(std::equal(written.pGivenX.begin(), written.pGivenX.end(), read.pGivenX.begin()));
  EXPECT_TRUE(
      std::equal(written.pGivenAll.begin(), written.pGivenAll.end(), read.pGivenAll.begin()));
}

TEST(ReadPredictionsTest, AHeaderAloneGivesNoPredictions) {
  EXPECT_EQ(ReadBack(kIndividualHeader).yGivenZ.Size(), 0);
  EXPECT_EQ(ReadBack("\n").yGivenZ.Size(), 0);
}

TEST(ReadPredictionsTest, ALastLineWithoutItsEndIsNotRead) {
  const std::string row = "k,A,1,0.1,0.2,9,0.3,0.4,8,0.5,0.6";
  EXPECT_EQ(ReadBack(kIndividualHeader + row + "\n" + row).yGivenZ.Size(), 1);
}

TEST(ReadPredictionsTest, AFileWithoutALineIsRejected) {
  for (const char* text : {"", "Key"}) {
    Testing::ExpectRaises<Vell::Exceptions::InvalidArgumentException>("Invalid argument",
                                                                      [&] { ReadBack(text); });
  }
}

TEST(ReadPredictionsTest, AValueThatIsNoNumberEndsTooEarly) {
  const std::vector<std::string> cells = {"k",   "A",   "1", "0.1", "0.2", "9",
                                          "0.3", "0.4", "8", "0.5", "0.6"};
  const std::vector<std::size_t> stored = {3, 4, 6, 7, 9, 10};
  for (const std::size_t wrong : stored) {
    for (const char* text : {"x", "", "-", ".", "NA", "+e1"}) {
      std::string row;
      for (std::size_t i = 0; i < cells.size(); ++i) {
        row += (i == 0 ? "" : ",") + (i == wrong ? text : cells[i]);
      }
      SCOPED_TRACE(row);
      Testing::ExpectRaises<Vell::Exceptions::EndOfStreamException>(
          "Unexpected end of stream", [&] { ReadBack(kIndividualHeader + row + "\n"); });
    }
  }
  for (const char* row : {"\n", "k\n", "k,A,1,0.1\n", "k,A,1,0.1,0.2,9,0.3,0.4,8,0.5\n"}) {
    SCOPED_TRACE(row);
    Testing::ExpectRaises<Vell::Exceptions::EndOfStreamException>(
        "Unexpected end of stream", [&] { ReadBack(kIndividualHeader + row); });
  }
}

TEST(ReadPredictionsTest, ColumnsBetweenThemArePassedOverWithoutRegardToQuotes) {
  // The comma in the key ends the first of the columns that are skipped, so all move by one.
  Testing::ExpectRaises<Vell::Exceptions::EndOfStreamException>("Unexpected end of stream", [] {
    ReadBack(kIndividualHeader + "\"k,k\",A,x,0.1,0.2,9,0.3,0.4,8,0.5,0.6\n");
  });
}

TEST(ReadPredictionsTest, AFileThatIsNoCsvIsRejected) {
  Testing::ExpectRaises<Vell::Exceptions::InvalidCsvFormatException>(
      "Invalid CSV format", [] { ReadBack(kIndividualHeader + "k\"k,A,1\n"); });
}

TEST(HospitalFileTest, HoldsOneLineForEachHospital) {
  Hovar::DataSet dataSet = MakeDataSet("A 1 1 - -\nA 0 0 - -\nA 1 . - -\nB 1 . - -\n");
  dataSet.hospitalIds[1] = Vell::String("B, north");
  Hovar::HospitalPredictions hospitals(2);
  // Means 0.01, 0.02, ... in the order in which they are added up: Y, E[Y|P=0], E[Y|Z], ...
  for (std::size_t column = 0; column < Hovar::HospitalMeans::kColumnCount; ++column) {
    const double mean = 0.01 * static_cast<double>(column + 1);
    hospitals[0].columns[column] = {mean, 3};
    hospitals[1].columns[column] = {10 * mean, 1};
  }
  hospitals[1].columns[Hovar::HospitalMeans::kP] = {0, 0};
  OutputStream output;
  Hovar::WriteHospitalPredictions(hospitals, dataSet, output.Writer());
  EXPECT_EQ(output.Content(), kHospitalHeader +
                                  "A,3,2,1,0.01,0.03,0.04,0.02,0.05,0.06,0.07,0.08,0.09\n"
                                  "\"B, north\",1,0,0,0.1,0.3,0.4,0.2,0.5,0.6,,0.8,0.9\n");
}

TEST(HospitalFileTest, EveryMeanWithoutACountIsEmpty) {
  const Hovar::DataSet dataSet = MakeDataSet("A 1 1 - -\n");
  OutputStream output;
  Hovar::WriteHospitalPredictions(Hovar::HospitalPredictions(1), dataSet, output.Writer());
  EXPECT_EQ(output.Content(), kHospitalHeader + "A,1,1,0,,,,,,,,,\n");
}

}  // namespace
