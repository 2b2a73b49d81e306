#pragma once

// What the fuzzers share. Each fuzzer reads an arbitrary input with the program's own reader and
// checks what must hold whatever the input is: that every way of reading it ends alike, and that
// the result is that of a second, simpler reader. Errors are ordinary results here, so the lines
// that the program writes on standard error and standard output are thrown away.

#include <cxxabi.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <typeinfo>

#include "foundation/exceptions/exceptions.h"
#include "foundation/io/file_stream.h"

namespace Fuzzing {

/// Ends the process with a message, so that the input is kept as a finding.
[[noreturn]] void Fail(std::string_view message);

/// A property that must hold for every input.
inline void Require(bool holds, std::string_view message) {
  if (!holds) {
    Fail(message);
  }
}

/// The class of the error that `call` raises, or nullptr. Anything that is none of the program's
/// errors passes, which ends the process.
template <typename Call>
const std::type_info* ErrorOf(Call call) {
  try {
    call();
    return nullptr;
  } catch (const Vell::Exceptions::Exception&) {
    return abi::__cxa_current_exception_type();
  }
}

/// True for both none and for two errors of one class.
inline bool AreSameError(const std::type_info* a, const std::type_info* b) {
  return a == nullptr || b == nullptr ? a == b : *a == *b;
}

/// True when the bytes of both numbers are equal, or both are NaNs.
bool AreSameNumber(double a, double b) noexcept;

/// The input as text.
inline std::string_view TextOf(const std::uint8_t* data, std::size_t size) noexcept {
  return {reinterpret_cast<const char*>(data), size};
}

/// Takes the first byte of an input that begins with settings; 0 when there is none.
std::uint8_t TakeByte(std::string_view& input) noexcept;

/// The custom mutator of a fuzzer of tables: in one of four cases it drops, repeats or swaps whole
/// lines after the first one, or leaves one alone with it; otherwise it changes bytes as the
/// engine does. The arguments and the result are those of LLVMFuzzerCustomMutator.
std::size_t MutateLines(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed);

/// A stream of the program over a file in memory, with a block of a chosen size: the bytes reach
/// the reader in pieces, as those of a long file do.
class BlockStream {
 public:
  /// The size is brought into 1 .. kLargestBlock.
  BlockStream(std::string_view content, std::size_t blockSize);

  Vell::IO::Stream& operator*() noexcept { return stream_; }

  static constexpr std::size_t kLargestBlock = 512;

 private:
  Vell::IO::FileStream stream_;
};

}  // namespace Fuzzing
