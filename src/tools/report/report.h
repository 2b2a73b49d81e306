#pragma once

// The report: the page of the installation with the files of finished runs inlined, so that it can
// be mailed and opened anywhere. docs/chains.md describes how it holds the files.

#include <string>
#include <vector>

namespace Hovar {

/// Writes the report of these folders to a file. False, with a line on standard error, when a
/// folder, the page or a file cannot be read or the report cannot be written, or when it would take the
/// place of a file that is no report (MayReplace); an earlier report stays then.
///
/// Each folder is followed four levels deep. Regular files *.csv, *.log, *.xml, *.json and *.txt go
/// in, in the order of their names, but neither reports themselves, whatever their names, nor the program's lines
/// (*.output.txt), which hold the seconds that a run took: equal results give equal reports.
bool WriteReport(const std::string& reportFile, const std::vector<std::string>& folders);

struct ReportSettings {
  std::vector<std::string> folders;  // at least one
  std::string reportFile;            // empty: report.html in the first folder
};

/// Writes a report and prints its path on standard output. Returns the exit status.
int RunReport(const ReportSettings& settings);

}  // namespace Hovar
