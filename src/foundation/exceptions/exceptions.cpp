#include "foundation/exceptions/exceptions.h"

#include <cstdlib>
#include <string_view>

#include "foundation/io/standard_writers.h"
#include "foundation/io/stream.h"
#include "foundation/string.h"

namespace Vell::Exceptions {
namespace {

/// Writes one line on standard error. Writing it can raise an error itself, which would come back
/// here; that second entry ends the process, as there is no place left for a message.
template <typename... Parts>
void WriteErrorLine(const Parts&... parts) {
  static bool writing = false;
  if (writing) {
    std::_Exit(EXIT_FAILURE);
  }
  writing = true;
  IO::TryFlushStandardOutput();
  IO::StandardError().WriteLine("Error: ", parts...);
  writing = false;
}

std::string_view TextOrNothing(const char* text) { return text != nullptr ? text : ""; }

}  // namespace

Exception::Exception(const char* message) { WriteErrorLine(TextOrNothing(message)); }

FileOpenException::FileOpenException(const char* path) {
  WriteErrorLine("File \"", TextOrNothing(path), "\" can not be opened");
}

template <typename T>
MatchException<T>::MatchException(const T& expected, const T& current, const IO::Stream& stream) {
  WriteErrorLine("Invalid input in file \"", stream.Name(), "\": expected \"", expected,
                 "\", current \"", current, "\"");
}

template class MatchException<char>;
template class MatchException<String>;

}  // namespace Vell::Exceptions
