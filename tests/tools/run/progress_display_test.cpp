#include "tools/run/progress_display.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "support/terminal_session.h"

namespace Hovar {
namespace {

/// What appears on a terminal of a kind, line ends as plain line feeds.
std::string ShownOn(const char* terminal, const std::function<void()>& body) {
  Testing::TerminalSession session(Testing::TerminalSession::Place::kForeground, [&] {
    setenv("TERM", terminal, 1);
    Testing::ReplaceHandle(2, 0);
    body();
    return 0;
  });
  EXPECT_EQ(session.NextEvent(), Testing::TerminalSession::Exited(0));
  std::string shown = session.Shown();
  std::erase(shown, '\r');
  return shown;
}

void ShowTwoChains() {
  ProgressDisplay display;
  display.Show({{"a", "a 1", 0.01}, {"b", "b 1", 0.01}}, 0);
  display.Show({{"a", "a 2", 0.5}, {"b", "b 2", 0.02}}, 1);
  display.Print("a: done");
  display.Show({{"b", "b 3", 0.03}}, 40);
  display.Clear();
}

TEST(ProgressDisplayTest, OnATerminalLinesChangeInPlace) {
  EXPECT_EQ(ShownOn("xterm", ShowTwoChains),
            "a 1\nb 1\n"
            "\x1b[2A\x1b[Ja 2\nb 2\n"
            "\x1b[2A\x1b[Ja: done\n"
            "b 3\n"
            "\x1b[1A\x1b[J");
}

TEST(ProgressDisplayTest, WithoutEscapesALineComesNowAndThen) {
  // A tenth of the work has been done by a; b has waited for more than half a minute.
  EXPECT_EQ(ShownOn("dumb", ShowTwoChains), "a 2\na: done\nb 3\n");
}

TEST(ProgressDisplayTest, TheEndIsTold) {
  EXPECT_EQ(ShownOn("dumb",
                    [] {
                      ProgressDisplay display;
                      display.Show({{"a", "95", 0.95}}, 0);
                      display.Show({{"a", "97", 0.97}}, 1);
                      display.Show({{"a", "100", 1}}, 2);
                      display.Show({{"a", "again", 1}}, 3);
                    }),
            "95\n100\n");
}

}  // namespace
}  // namespace Hovar
