// `hovar --chains` crashed when it could not read back the definition of a chain that it had just
// written: where a link led to a device, or where the copy was larger than what is read.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "blackbox/launcher_runs.h"
#include "blackbox/watched_run.h"

namespace Testing {
namespace {

namespace fs = std::filesystem;

/// Expects all results, or exit status 1 with a line.
void ExpectOrderlyEnd(const TinyStudy& study, const WatchedEnd& end) {
  EXPECT_FALSE(end.wasAsked);
  EXPECT_EQ(end.result.signal, 0);
  const bool isComplete = end.result.exitStatus == 0 && study.Has("out/chain-1/fitted.csv");
  const bool isRefused = end.result.exitStatus == 1 && !end.result.error.empty();
  EXPECT_TRUE(isComplete || isRefused) << end.result.exitStatus << end.result.error;
}

void ExpectOrderly(const TinyStudy& study, const std::string& definition) {
  const ScratchFolder place;
  const std::string launcher = CopyTreeWithPageTo(place.Path());
  const std::chrono::seconds patience(20);
  std::vector<std::string> arguments{"--chains", "1", definition};
  ExpectOrderlyEnd(study, Watch(LauncherIn(study, arguments, launcher), patience));
  arguments.insert(arguments.end(), {"--only", "1"});
  ExpectOrderlyEnd(study, Watch(LauncherIn(study, arguments, launcher), patience));
}

TEST(ChainDefinitionTest, ThatIsALinkToADevice) {
  for (const char* device : {"/dev/null", "/dev/zero", "/dev/full", "/dev/tty"}) {
    SCOPED_TRACE(device);
    const TinyStudy study;
    fs::create_directories(study.Path() / "out/chain-1");
    fs::create_symlink(device, study.Path() / "out/chain-1/chain-1.xml");
    ExpectOrderly(study, "analysis.xml");
  }
}

TEST(ChainDefinitionTest, ThatIsNoRegularFile) {
  const TinyStudy pipe;
  fs::create_directories(pipe.Path() / "out/chain-1");
  EXPECT_EQ(::mkfifo(pipe.File("out/chain-1/chain-1.xml").c_str(), 0600), 0);
  ExpectOrderly(pipe, "analysis.xml");
  const TinyStudy folder;
  fs::create_directories(folder.Path() / "out/chain-1/chain-1.xml");
  ExpectOrderly(folder, "analysis.xml");
}

// A chain's definition names a longer folder than the one that it is made from.
TEST(ChainDefinitionTest, ThatIsLongerThanWhatIsRead) {
  constexpr std::size_t kLimit = std::size_t{16} << 20;
  constexpr std::size_t kBlock = std::size_t{64} << 10;
  for (const std::size_t size : {kLimit - 1, kLimit, kLimit + kBlock - 9, kLimit + kBlock - 1}) {
    SCOPED_TRACE(size);
    const TinyStudy study;
    std::string text = AnalysisText();
    const std::string comment = "<!---->\n";
    text.insert(0, comment);
    text.insert(comment.find("-->"), size - text.size(), 'x');
    study.Write("d.xml", text);
    ExpectOrderly(study, "d.xml");
  }
}

}  // namespace
}  // namespace Testing
