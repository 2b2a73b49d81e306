// A data file that goes while a run stands still on a named pipe, and the byte that Windows takes
// for a part of the end of a line.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <thread>

#include "progress.h"
#include "runs.h"
#include "support/running_process.h"
#include "tiny_study.h"

namespace Testing {
namespace {

/// Reads what a process writes into a named pipe, but only once it is asked to.
class HeldPipe {
 public:
  explicit HeldPipe(const std::string& path) {
    EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
    // Open before the process is, so that neither waits for the other.
    descriptor_ = ::open(path.c_str(), O_RDONLY | O_NONBLOCK);
    EXPECT_GE(descriptor_, 0);
  }
  ~HeldPipe() {
    if (reader_.joinable()) {
      reader_.join();
    }
    ::close(descriptor_);
  }
  HeldPipe(const HeldPipe&) = delete;
  HeldPipe& operator=(const HeldPipe&) = delete;

  void Drain() {
    reader_ = std::thread([this] {
      ::fcntl(descriptor_, F_SETFL, 0);
      std::array<char, 4096> block{};
      while (::read(descriptor_, block.data(), block.size()) > 0) {
      }
    });
  }

 private:
  int descriptor_ = -1;
  std::thread reader_;
};

// Keys in a file with quotes are read again when they are written. The log is a pipe that is full
// of warnings, so that the run stands still between the two readings.
TEST(KeyRunTest, ADataFileThatIsGoneWhenItsKeysAreDueIsNamed) {
  constexpr int kRecords = 2000;
  const TinyStudy study;
  std::string data = "\"Key\",Hospital,Y,POA\n";
  std::string warnings;
  for (int i = 0; i < kRecords; ++i) {
    data += "k,A,0,1\n";
    warnings += "Warning: Y == 0 && P == 1 data in record: " + std::to_string(i) +
                " - setting P equal to 0\n";
  }
  study.Write("data.csv", data);
  study.Write("out/other", "");
  HeldPipe log(study.File("out/prediction.log"));
  Process process(HovarIn(study, {"prediction.xml"}));
  EXPECT_TRUE(process.WaitForOutput("Number of hospitals: 1\n"));
  std::filesystem::remove(study.Path() / "data.csv");
  log.Drain();
  ExpectError(process.Wait(), CannotOpen("data.csv"),
              Replaced(OneHospital(kRecords, 1, kRecords, kRecords), "Number of hospitals: 1\n",
                       "Number of hospitals: 1\n" + warnings) +
                  "Calculating individual predictions\n");
}

// On Windows the carriage return belongs to the end of the line.
TEST(PredictionEdgeTest, ACarriageReturnStaysInTheLastNameOfALine) {
  const TinyStudy study;
  study.Write("data.csv", "Key,Hospital,Y,POA,Z1,X1\r\na,A,1,0,1,1\r\nb,A,0,0,0,0\r\n");
  study.Write("coefficients.csv", std::string(kCoefficientHeader) + kModelRow +
                                      "X1,Z1,0.5,0.5,0.5,0.5,0,,,0,,,0,,,0,,,0,,\n");
  ExpectError(RunHovar(study, {"prediction.xml"}), "Variables mismatch",
              OneHospital(2, 2, 2, 2) + RemovalLines("Z1, X1\r\n", 1, 2, 2));
  EXPECT_EQ(study.Read("out/prediction.log").empty(), false);
  EXPECT_FALSE(study.Has("out/predicted.csv"));
}

}  // namespace
}  // namespace Testing
