// Prints all messages of the program and of its tools, one a line: the section of docs/messages.md
// that describes it, a tab and the text. messages_test.py compares the two.

#include <array>
#include <cstddef>
#include <iostream>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "launcher/messages.h"
#include "messages/error_texts.h"
#include "messages/output_lines.h"
#include "regression/regression_results.h"
#include "tools/chains/messages.h"
#include "tools/check/data_messages.h"
#include "tools/check/definition_messages.h"
#include "tools/check/description_messages.h"
#include "tools/check/finding_messages.h"
#include "tools/check/model_messages.h"
#include "tools/check/output_messages.h"
#include "tools/check/proxy_messages.h"
#include "tools/plan/messages.h"
#include "tools/report/messages.h"
#include "tools/run/messages.h"
#include "tools/support/messages.h"

namespace {

using Messages::Pattern;

/// The members of a table, all of which are patterns.
template <typename Table>
std::span<const Pattern> PatternsOf(const Table& table) {
  static_assert(std::is_standard_layout_v<Table> && sizeof(Table) % sizeof(Pattern) == 0);
  return {reinterpret_cast<const Pattern*>(&table), sizeof(Table) / sizeof(Pattern)};
}

/// Prints a text without the blanks and line feeds at its ends.
void PrintText(std::string_view section, std::string text) {
  text.erase(0, text.find_first_not_of(" \n"));
  text.erase(text.find_last_not_of(" \n") + 1);
  std::cout << section << '\t' << text << '\n';
}

template <typename... Tables>
void PrintTables(std::string_view section, const Tables&... tables) {
  const auto print = [section](std::span<const Pattern> patterns) {
    for (const Pattern& pattern : patterns) {
      PrintText(section, std::string(pattern.Text()));
    }
  };
  (print(PatternsOf(tables)), ...);
}

}  // namespace

int main() {
  for (const Pattern& error : PatternsOf(Messages::kErrors)) {
    PrintText("Errors", std::string(Messages::kErrorPrefix) + std::string(error.Text()));
  }
  PrintTables("Warnings", Messages::kWarnings);
  PrintTables("Other lines", Messages::kLines);
  // The label of the fifth block only heads a column.
  for (const std::string_view label : std::span(Hovar::kModelLabels).first<4>()) {
    PrintText("Other lines", std::string(label));
  }
  PrintTables("Lines of the command hovar", Hovar::kToolMessages, Hovar::kWriteReasons,
              Hovar::kRunMessages, Hovar::kReportMessages, Hovar::kChainMessages,
              Hovar::kVerdictLines, Hovar::kEquations, Hovar::kLauncherMessages,
              Hovar::kFindingLines);
  PrintTables("Findings of hovar --check", Hovar::kGrammarMessages, Hovar::kValueMessages,
              Hovar::kInputMessages, Hovar::kTableMessages, Hovar::kDataMessages,
              Hovar::kColumnMessages, Hovar::kModelMessages, Hovar::kOutputMessages,
              Hovar::kProxyMessages);
  PrintTables("Parts of findings", Hovar::kFieldParts, Hovar::kFindingParts, Hovar::kUnfitColumns);
  PrintTables("Description by hovar --check --data", Hovar::kDescriptionLines);
  return 0;
}
