// Counts near 2^31, in process, where the memory that they would need can be refused.

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "faults/fault_study.h"
#include "faults/forked_run.h"
#include "faults/sample.h"
#include "foundation/io/csv_reader.h"
#include "foundation/memory.h"
#include "support/raised.h"

namespace Testing {
namespace {

/// A machine whose largest block is 256 MiB.
void* AllocateLittle(std::size_t bytes) noexcept {
  constexpr std::size_t kLargest = std::size_t{1} << 28;
  return bytes <= kLargest ? std::calloc(1, bytes) : nullptr;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t place = text.find(from);
  EXPECT_NE(place, std::string::npos) << from;
  return text.replace(place, from.size(), to);
}

// The chain's buffer has a row for every kept step: 2^31 - 1 rows of 8 bytes for each column.
TEST(IntegerLimitTest, AChainThatDoesNotFitIntoMemoryIsOutOfMemory) {
  for (const char* element : {"Burnin>3", "Steps>12"}) {
    SCOPED_TRACE(element);
    const FaultStudy study;
    const std::string from(element);
    std::string text = Replaced(study.Read("analysis.xml"), "Thinning>2<", "Thinning>1<");
    text = Replaced(text, from + "<", from.substr(0, from.find('>')) + ">2147483647<");
    study.Write("d.xml", text);
    ForkedRuns runs;
    const RunResult result =
        runs.Run(study.Path(), "d.xml", [] { Vell::SetAllocationFunction(AllocateLittle); });
    ExpectFailed(result, "Out of memory");
    EXPECT_FALSE(study.Has("out/mcmc"));
    EXPECT_FALSE(study.Has("out/fitted.csv"));
  }
}

/// So many line feeds, made as they are read.
class LineFeeds final : public Vell::IO::Stream {
 public:
  explicit LineFeeds(std::uint64_t count)
      : Stream(Vell::IO::Mode::kReadText, Vell::String()), block_(65536, '\n'), left_(count) {}

  void Flush() override {}
  void Close() override {}
  int Peek() override { return '\n'; }
  void Unget(int) override { --next_; }
  void WriteByte(char) override {}
  std::size_t Read(void*, std::size_t) override { return 0; }
  void Write(const void*, std::size_t) override {}
  int Scan(const char*, void*, std::size_t) override { return -1; }
  int Print(const char*, const void*, std::size_t) override { return 0; }
  bool IsEof() const noexcept override { return left_ == 0; }
  std::int64_t Length() override { return 0; }
  std::int64_t Tell() override { return 0; }
  void Seek(std::int64_t, int) override {}

 protected:
  int ReadByteOfNextBlock() override {
    if (left_ == 0) {
      return Vell::IO::kEndOfStream;
    }
    const std::uint64_t count = std::min<std::uint64_t>(left_, block_.size());
    left_ -= count;
    next_ = reinterpret_cast<unsigned char*>(block_.data());
    end_ = next_ + count;
    return *next_++;
  }

 private:
  std::string block_;
  std::uint64_t left_;
};

// Takes a minute, so it runs with all faults only.
TEST(IntegerLimitTest, AFileOfTwoToThe31LinesIsAnIntegerOverflow) {
  if (!Sample::IsAll()) {
    GTEST_SKIP() << "runs with HOVAR_FAULTS=all";
  }
  constexpr std::uint64_t kLimit = std::uint64_t{1} << 31;
  LineFeeds most(kLimit - 1);
  EXPECT_EQ(Vell::IO::MeasureCsv(most).lineCount, 2147483647);
  LineFeeds tooMany(kLimit);
  ExpectRaises<Vell::Exceptions::IntegerOverflowException>("Integer overflow",
                                                           [&] { Vell::IO::MeasureCsv(tooMany); });
}

}  // namespace
}  // namespace Testing
