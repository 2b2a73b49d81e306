#pragma once

// Runs of `hovar --check` beside the program: tables of changes of the tiny study, for which both
// must come to the same verdict.

#include <string>
#include <utility>
#include <vector>

#include "runs.h"
#include "tiny_study.h"

namespace Testing {

/// `hovar --check` in a folder, with further arguments.
Command CheckIn(const ScratchFolder& folder, const std::vector<std::string>& arguments);

/// Checks d.xml, which must change nothing and leave nothing on standard error, and returns what
/// stands on standard output.
ProcessResult CheckDefinition(const ScratchFolder& folder,
                              const std::vector<std::string>& arguments = {"d.xml"});

/// Runs the check and then the program; both must end alike. Returns what the check printed.
std::string ExpectAgreement(const ScratchFolder& folder);

/// The program in a folder, started by a program that hands its path on: by a link, to be made in
/// `links`, whose name holds the backslash that the program looks for in its own. POSIX only.
Command HovarByLink(const ScratchFolder& links, const ScratchFolder& folder,
                    const std::vector<std::string>& arguments);

bool HasError(const std::string& output);

/// A change of the tiny study.
struct Row {
  std::string what;
  std::string definition;
  std::vector<std::pair<std::string, std::string>> files;
  /// The place of the first error, or its whole line; nothing for a run that is good.
  std::string error;
};

/// Check and program must agree on each row, and the first error must stand at its place.
void ExpectRows(const std::vector<Row>& rows);

Row Changed(const std::string& text, const std::string& from, const std::string& to,
            const std::string& error = "");

/// The header of a data file with one variable.
inline const std::string kHeader = "Key,Hospital,Y,POA,Z,X\n";

/// A prediction of a data file with one variable.
Row Data(const std::string& what, const std::string& indicators, const std::string& data,
         const std::string& error = "");

/// An analysis of a data file with one variable.
Row Fit(const std::string& what, const std::string& records, const std::string& error = "");

std::string WithChain(const std::string& definition, const char* thinning, const char* burnin,
                      const char* steps);

/// An analysis that leaves nothing to say.
std::string QuietAnalysis();

struct Warning {
  std::string definition;
  std::vector<std::pair<std::string, std::string>> files;
  /// How the line of the warning begins, and what it says.
  std::string place;
  std::string words;
};

void WriteFiles(const TinyStudy& study, const Warning& row);

/// Each definition must give this one warning and nothing else, run, and fail under --strict.
void ExpectWarnings(const std::vector<Warning>& rows);

/// A quiet analysis with one change.
Warning Surprising(const std::string& from, const std::string& to, const std::string& place,
                   const std::string& words);

/// A Prediction of records with one variable.
Warning Records(const std::string& records, const std::string& place, const std::string& words);

}  // namespace Testing
