#pragma once

// What a check has found, and the text that reports it: one line for each finding, in the form of
// compilers, so that editors find the place.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tools/support/sentence_parts.h"
#include "tools/support/text_places.h"

namespace Hovar {

/// Errors are what the program would end in; warnings are what would surprise.
enum class Severity { kError, kWarning };

/// How much a warning weighs; the heavier ones are printed first.
enum class Weight {
  kResults,   // results are, or may be, others than those that are meant
  kFiles,     // files are lost, or are not where they are expected
  kHarmless,  // surprising; the results are right and complete
};

struct Finding {
  Severity severity = Severity::kError;
  std::string file;  // as the user wrote it
  Place place;
  std::string text;                  // one plain sentence, and what to do
  Weight weight = Weight::kResults;  // of a warning
};

class Findings {
 public:
  /// Adds a finding unless it has been added before.
  void Add(Finding finding);
  void AddError(std::string_view file, Place place, std::string text);
  void AddWarning(std::string_view file, Place place, std::string text,
                  Weight weight = Weight::kResults);

  /// Gives a file its place in the order of the files, for a finding that is added later.
  void NoteFile(std::string_view file);

  int Errors() const noexcept { return errors_; }
  int Warnings() const noexcept { return warnings_; }

  /// All findings: errors first, then warnings by their weight. Among those of one kind files come
  /// in the order in which the first finding of each was added, the findings of a file by place.
  std::string Lines() const;
  /// "2 errors, 1 warning" and a line feed.
  std::string Summary() const;

 private:
  std::vector<Finding> findings_;
  std::vector<std::string> files_;
  int errors_ = 0;
  int warnings_ = 0;
};

}  // namespace Hovar
