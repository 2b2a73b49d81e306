#include "tools/support/replacement.h"

#include <gtest/gtest.h>

#include "support/files.h"

namespace Hovar {
namespace {

using Testing::ScratchFolder;

TEST(ReplacementTest, OnlyWhatIsNotLostIsReplaced) {
  const std::string record = "{\n  \"format\": \"hovar run record\",\n";
  const std::string page = "<!DOCTYPE html>\n<html>\n<title>Hovar report</title>\n";
  const std::string foreign = "<!DOCTYPE html>\n<html>\n<title>Sales</title>\n";
  struct Row {
    const char* name;
    std::string content;
    bool forRecord;
    bool forPage;
  };
  for (const Row& row : {Row{"a.csv", "a,b\n", false, false}, Row{"notes", "", true, false},
                         Row{"a.csv", record, true, false}, Row{"a.csv", page, false, true},
                         Row{"a.csv", foreign, false, false}, Row{"a.json", "{}", true, false},
                         Row{"A.JSON", "x", true, false}, Row{"a.html", foreign, false, true},
                         Row{"a.HTM", "x", false, true}, Row{"html", "x", false, false}}) {
    const ScratchFolder folder;
    const std::string file = folder.Write(row.name, row.content);
    EXPECT_EQ(MayReplace(file, OwnOutput::kRecord), row.forRecord) << row.name << row.content;
    EXPECT_EQ(MayReplace(file, OwnOutput::kReportPage), row.forPage) << row.name << row.content;
    EXPECT_TRUE(MayReplace(folder.File("none"), OwnOutput::kRecord));
  }
}

TEST(ReplacementTest, TheTitleOfAPageIsSoughtAtItsBeginning) {
  const std::string page = "<!DOCTYPE html>" + std::string(kOwnOutputHead, ' ');
  EXPECT_FALSE(BeginsOwnOutput(page + "<title>Hovar report</title>", OwnOutput::kReportPage));
}

}  // namespace
}  // namespace Hovar
