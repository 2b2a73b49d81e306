#include "tools/report/report.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "foundation/exit_status.h"
#include "tools/report/messages.h"
#include "tools/report/report_files.h"
#include "tools/support/files.h"
#include "tools/support/installation.h"
#include "tools/support/message.h"
#include "tools/support/messages.h"
#include "tools/support/output_file.h"
#include "tools/support/sentence_parts.h"
#include "tools/support/shown_path.h"

namespace Hovar {
namespace {

constexpr std::string_view kPlaceForFiles = "<!-- hovar:files -->";
constexpr std::string_view kReportName = "report.html";

/// The page of the installation, or of the build tree to which the launcher belongs. Otherwise a
/// line on standard error says why it cannot be had.
std::optional<std::string> PageFile() {
  const std::optional<Installation> installation = FindInstallation();
  if (!installation) {
    return std::nullopt;
  }
  std::string page = std::string(installation->root.View()) + "/share/hovar/report.html";
  if (page.find('\\') != std::string::npos) {
    Say(kReportMessages.pageBehindBackslash, page);
    return std::nullopt;
  }
  return page;
}

/// The place of the line that holds nothing but the mark for the files.
std::size_t FindPlace(std::string_view page) {
  std::size_t place = page.find(kPlaceForFiles);
  while (place != std::string_view::npos) {
    const std::size_t begin = page.rfind('\n', place) + 1;  // npos + 1 is 0
    const std::size_t end = std::min(page.find('\n', place), page.size());
    const std::string_view line = page.substr(begin, end - begin);
    if (line.find_first_not_of(" \t") == place - begin &&
        line.find_last_not_of(" \t\r") == place - begin + kPlaceForFiles.size() - 1) {
      break;
    }
    place = page.find(kPlaceForFiles, place + 1);
  }
  return place;
}

}  // namespace

bool WriteReport(const std::string& reportFile, const std::vector<std::string>& folders) {
  const std::optional<std::string> pageFile = PageFile();
  if (!pageFile) {
    return false;
  }
  const std::optional<std::string> page = ReadSmallFile(*pageFile);
  const std::size_t place = page ? FindPlace(*page) : std::string::npos;
  if (place == std::string::npos) {
    SayLine(page ? Filled(kReportMessages.notThePage, *pageFile)
                 : Filled(kReportMessages.cannotReadPage, *pageFile));
    return false;
  }
  if (!MayReplace(reportFile, OwnOutput::kReportPage)) {
    return false;
  }
  OutputFile report(reportFile, OwnOutput::kReportPage);
  if (!report.Open()) {
    Say(kToolMessages.cannotWrite, reportFile);
    return false;
  }
  const std::string_view text(*page);
  report.Write(text.substr(0, place));
  if (!AddReportFiles(report, folders)) {
    return false;
  }
  report.Write(text.substr(place + kPlaceForFiles.size()));
  if (!report.Complete()) {
    Say(kToolMessages.cannotWrite, reportFile);
    return false;
  }
  return true;
}

int RunReport(const ReportSettings& settings) {
  const std::string file = settings.reportFile.empty()
                               ? settings.folders.front() + "/" + std::string(kReportName)
                               : settings.reportFile;
  if (!WriteReport(file, settings.folders)) {
    return kFailure;
  }
  // Scripts take the path as it is; one that a terminal would obey is of no use to them.
  return Print((IsPrintable(file) ? file : ShellWord(file)) + "\n") ? kSuccess : kFailure;
}

}  // namespace Hovar
