#pragma once

// What a call did to the outside: its lines on standard output, in the log and on standard error,
// and how it ended.

#include <gtest/gtest.h>

#include <string>

#include "foundation/exceptions/exceptions.h"
#include "foundation/io/log.h"
#include "foundation/io/standard_writers.h"
#include "support/files.h"
#include "support/raised.h"

namespace Testing {

struct Outcome {
  std::string output;  // standard output, log lines included
  std::string log;     // a log file
  std::string error;   // standard error
  std::string raised;  // the class of the exception, or nothing

  /// The exception's class and its line on standard error without "Error: ", such as
  /// `IOException: IO Exception`; nothing when nothing was raised and no error line written.
  std::string Failure() const {
    if (raised.empty() && error.empty()) {
      return "";
    }
    const std::string prefix = "Error: ";
    const bool isOneLine = error.starts_with(prefix) && error.find('\n') == error.size() - 1;
    return raised + ": " +
           (isOneLine ? error.substr(prefix.size(), error.size() - prefix.size() - 1)
                      : "not one error line but <" + error + ">");
  }
};

/// The name of the class of the exception that `call` raises, or nothing.
template <typename Call>
std::string ClassRaisedBy(Call call) {
  namespace Raised = Vell::Exceptions;
  try {
    call();
    return "";
  } catch (const Raised::EndOfStreamException&) {
    return "EndOfStreamException";
  } catch (const Raised::FileOpenException&) {
    return "FileOpenException";
  } catch (const Raised::IOException&) {
    return "IOException";
  } catch (const Raised::IntegerOverflowException&) {
    return "IntegerOverflowException";
  } catch (const Raised::NumericException&) {
    return "NumericException";
  } catch (const Raised::InvalidCsvFormatException&) {
    return "InvalidCsvFormatException";
  } catch (const Raised::InvalidFormatException&) {
    return "InvalidFormatException";
  } catch (const Raised::OutOfMemoryException&) {
    return "OutOfMemoryException";
  } catch (const Raised::InvalidInputException&) {
    return "InvalidInputException";
  } catch (const Raised::InvalidArgumentException&) {
    return "InvalidArgumentException";
  } catch (const Raised::Exception&) {
    return "Exception";
  }
}

/// Runs `call` with a log that goes, as in the program, to standard output and to a file.
template <typename Call>
Outcome Observe(Call call) {
  const ScratchFolder folder;
  OutputCapture capture;
  Outcome outcome;
  Vell::IO::Log().Attach(Vell::IO::StandardOutputHandle());
  Vell::IO::Log().AttachFile(Vell::String(folder.File("log")));
  outcome.raised = ClassRaisedBy(call);
  Vell::IO::Log().Clear();
  outcome.output = capture.TakeOutput();
  outcome.error = capture.TakeError();
  outcome.log = folder.Read("log");
  return outcome;
}

}  // namespace Testing
