// Counts near 2^31, in process, where the memory that they would need can be refused.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "faults/fault_study.h"
#include "faults/forked_run.h"
#include "foundation/io/csv_reader.h"
#include "foundation/io/file_stream.h"
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

/// One byte again and again and a line feed after them, made as they are read.
class RepeatedByte final : public Vell::IO::Stream {
 public:
  RepeatedByte(char byte, std::uint64_t count)
      : Stream(Vell::IO::Mode::kReadText, Vell::String()), block_(65536, byte), left_(count) {}

  void Flush() override {}
  void Close() override {}
  void Unget(int /*byte*/) override { --next_; }
  void Write(const void* /*buffer*/, std::size_t /*count*/) override {}
  bool IsEof() const noexcept override { return isEnded_; }
  std::int64_t Length() override { return 0; }
  std::int64_t Tell() override { return 0; }
  void Seek(std::int64_t /*offset*/, int /*origin*/) override {}

 protected:
  int ReadByteOfNextBlock() override { return FillWindow() ? *next_++ : Vell::IO::kEndOfStream; }

 private:
  bool FillWindow() {
    if (isEnded_) {
      return false;
    }
    isEnded_ = left_ == 0;
    std::string& source = isEnded_ ? last_ : block_;
    const std::uint64_t count = isEnded_ ? 1 : std::min<std::uint64_t>(left_, block_.size());
    left_ -= isEnded_ ? 0 : count;
    next_ = reinterpret_cast<unsigned char*>(source.data());
    end_ = next_ + count;
    return true;
  }

  std::string block_;
  std::string last_ = "\n";
  std::uint64_t left_;
  bool isEnded_ = false;
};

constexpr std::uint64_t kLimit = std::uint64_t{1} << 31;

Vell::IO::CsvShape ShapeOf(char byte, std::uint64_t count) {
  RepeatedByte stream(byte, count);
  return Vell::IO::MeasureCsv(stream);
}

void ExpectTooMany(char byte, std::uint64_t count) {
  ExpectRaises<Vell::Exceptions::IntegerOverflowException>("Integer overflow",
                                                           [&] { ShapeOf(byte, count); });
}

// The next two take a minute, so CTest does not run them.
TEST(LargeCountTest, TwoToThe31LinesAreAnIntegerOverflow) {
  EXPECT_EQ(ShapeOf('\n', kLimit - 2).lineCount, 2147483647);
  ExpectTooMany('\n', kLimit - 1);
}

TEST(LargeCountTest, TwoToThe31FieldsAreAnIntegerOverflow) {
  const Vell::IO::CsvShape shape = ShapeOf(',', kLimit - 2);
  EXPECT_EQ(shape.lineCount, 1);
  EXPECT_EQ(shape.maximumFields, 2147483647);
  ExpectTooMany(',', kLimit - 1);
}

// Positions in files are no counts of the system's own: they may be larger.
TEST(IntegerLimitTest, AFileMayBeLargerThanTwoToThe32Bytes) {
  const ScratchFolder folder;
  const std::string path = folder.Write("large", "");
  constexpr std::int64_t kPlace = (std::int64_t{1} << 32) + 5;
  std::filesystem::resize_file(path, kPlace);  // a hole, which takes no room
  Vell::IO::FileStream stream(Vell::String(std::string_view(path)),
                              Vell::IO::Mode::kReadWriteExisting | Vell::IO::Mode::kBinary);
  stream.Seek(kPlace);
  stream.Write("end", 3);
  EXPECT_EQ(stream.Tell(), kPlace + 3);
  EXPECT_EQ(stream.Length(), kPlace + 3);
  stream.Seek(-3, 2);
  EXPECT_EQ(stream.ReadByte(), 'e');
  EXPECT_EQ(stream.Tell(), kPlace + 1);
}

}  // namespace
}  // namespace Testing
