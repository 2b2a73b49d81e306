#include "tools/support/files.h"

#include <gtest/gtest.h>

#include "support/child_process.h"
#include "support/files.h"
#include "tools/run/run_record.h"
#include "tools/support/sha256.h"

namespace Hovar {
namespace {

using Testing::ScratchFolder;

TEST(ReadSmallFileTest, RegularFilesOnly) {
  const ScratchFolder folder;
  const std::string text(150'000, 'z');
  EXPECT_EQ(ReadSmallFile(folder.Write("a", text)), text);
  EXPECT_EQ(ReadSmallFile(folder.Write("b", "")), "");
  EXPECT_EQ(ReadSmallFile(folder.Write("c", std::string(65'536, 'q'))), std::string(65'536, 'q'));
  EXPECT_EQ(ReadSmallFile(folder.File("none")), std::nullopt);
  EXPECT_EQ(ReadSmallFile(folder.Path().string()), std::nullopt);
  EXPECT_EQ(ReadSmallFile("/dev/zero"), std::nullopt);
  EXPECT_EQ(ReadSmallFile(folder.Write("large", std::string(17 << 20, 'x'))), std::nullopt);
}

// The memory of this process is a regular file whose first page nobody can read.
TEST(InputFileTest, AFileThatCannotBeReadIsNoFile) {
  constexpr const char* kUnreadable = "/proc/self/mem";
  EXPECT_EQ(ReadSmallFile(kUnreadable), std::nullopt);
  EXPECT_EQ(Sha256OfFile(kUnreadable), std::nullopt);
}

TEST(InputFileTest, WithoutAFreeDescriptorNothingIsRead) {
  const ScratchFolder folder;
  const std::string file = folder.Write("a", "text");
  const Testing::NoFreeDescriptors none;
  EXPECT_EQ(ReadSmallFile(file), std::nullopt);
  EXPECT_EQ(Sha256OfFile(file), std::nullopt);
}

// coreutils: date -u -d @SECONDS +%FT%TZ
TEST(UtcTextTest, DatesAndTimes) {
  EXPECT_EQ(UtcText(0), "1970-01-01T00:00:00Z");
  EXPECT_EQ(UtcText(1'709'210'096), "2024-02-29T12:34:56Z");
  EXPECT_EQ(UtcText(4'102'444'799), "2099-12-31T23:59:59Z");
}

}  // namespace
}  // namespace Hovar
