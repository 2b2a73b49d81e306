#pragma once

// The family of errors. An exception carries no data: its text goes to standard error, as one line
// that begins with "Error: ", at the moment the exception is constructed; the object only unwinds
// the stack to the one handler at the program's entry, which distinguishes errors by class at most.
//
// Hence the rule for everyone who raises: construct only to throw, in one statement, at the place
// that knows the cause. An exception that is built and dropped leaves a line that nobody meant.
//
// What it says is one of the texts of messages/error_texts.h, which is the list of all errors.
//
// Standard output is flushed before the line is written, so that both stand in their order when
// they share a terminal or a pipe. When standard error itself cannot be written nobody is left to
// report to: the process ends at once with exit status 1.
//
// Messages are constants that docs/messages.md explains one by one; a contract elsewhere quotes the
// message where several errors share a class, and gives it alone where the class follows from it.
// "Out of memory" in the list of errors of a declaration is an OutOfMemoryException, "IO Exception"
// an IOException, "Integer overflow" an IntegerOverflowException, and "Invalid argument" and "Index
// out of range" are InvalidArgumentExceptions.

#include "messages/pattern.h"

namespace Vell {
class String;
namespace IO {
class Stream;
}
}  // namespace Vell

namespace Vell::Exceptions {

/// The base of all errors. Nothing derives from std::exception: there is no text to ask for.
class Exception {
 public:
  /// Prints "Error: ", the text of the message and a line feed.
  explicit Exception(const Messages::Pattern& message);

 protected:
  /// For the classes that print a line of their own.
  Exception() = default;
};

/// A negative size, a null pointer, an index out of range, a bad or missing attribute.
class InvalidArgumentException : public Exception {
 public:
  using Exception::Exception;
};

/// Text that is not what its place demands, such as a cell other than 0 or 1.
class InvalidInputException : public Exception {
 public:
  using Exception::Exception;
};

/// "Out of memory": the allocation function of memory.h had no block to give.
class OutOfMemoryException : public Exception {
 public:
  using Exception::Exception;
};

/// A number format that a stream cannot print or scan.
class InvalidFormatException : public Exception {
 public:
  using Exception::Exception;
};

/// A violation of the quoting rules of CSV. Not an InvalidFormatException.
class InvalidCsvFormatException : public Exception {
 public:
  using Exception::Exception;
};

/// A computation that cannot go on, such as a Cholesky factor of a matrix without one.
class NumericException : public Exception {
 public:
  using Exception::Exception;
};

/// "Integer overflow": a length or count of 2^31 or more, which the 32-bit sizes cannot hold.
class IntegerOverflowException : public NumericException {
 public:
  using NumericException::NumericException;
};

/// A stream primitive failed.
class IOException : public Exception {
 public:
  using Exception::Exception;

 protected:
  IOException() = default;
};

/// The input ended where more was required.
class EndOfStreamException : public IOException {
 public:
  using IOException::IOException;
};

/// Prints: Error: File "<path>" can not be opened
class FileOpenException : public IOException {
 public:
  /// A null path prints as nothing.
  explicit FileOpenException(const char* path);
};

/// Something else stood where a certain T was required. Prints:
/// Error: Invalid input in file "<file name>": expected "<expected>", current "<current>"
template <typename T>
class MatchException : public IOException {
 public:
  /// The file's name is the stream's, which is empty for the standard streams.
  MatchException(const T& expected, const T& current, const IO::Stream& stream);
};

extern template class MatchException<char>;
extern template class MatchException<String>;

}  // namespace Vell::Exceptions
