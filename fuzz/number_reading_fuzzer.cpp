// Reading numbers against the C library: the result, the value and the place where reading stops.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "foundation/io/number_scanner.h"
#include "foundation/io/number_text.h"
#include "fuzz_support.h"
#include "support/memory_stream.h"

namespace {

using Fuzzing::Require;
using Testing::MemoryStream;

template <typename T>
struct Scan {
  int result = 0;
  T value{};
  std::string rest;  // what the stream still holds
};

template <typename T>
Scan<T> ScanOurs(std::string_view text, std::size_t windowSize, const char* format) {
  Scan<T> scan;
  MemoryStream stream(text, windowSize);
  scan.result = Vell::IO::ScanNumber(stream, format, &scan.value, sizeof scan.value);
  for (int c = stream.ReadByte(); c != Vell::IO::kEndOfStream; c = stream.ReadByte()) {
    scan.rest += static_cast<char>(c);
  }
  return scan;
}

template <typename T>
Scan<T> ScanByLibrary(std::string text, const char* format) {
  Scan<T> scan;
  std::FILE* const file = fmemopen(text.data(), text.size(), "r");
  Require(file != nullptr, "no file in memory");
  // What the library makes of a number is the very question.
  scan.result = std::fscanf(file, format, &scan.value);  // NOLINT(cert-err34-c)
  for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) {
    scan.rest += static_cast<char>(c);
  }
  static_cast<void>(std::fclose(file));
  return scan;
}

bool AreSame(double a, double b) { return Fuzzing::AreSameNumber(a, b); }
bool AreSame(std::int32_t a, std::int32_t b) { return a == b; }
bool AreSame(std::uint32_t a, std::uint32_t b) { return a == b; }

template <typename T>
void CheckScanning(std::string_view text, const char* format) {
  const Scan<T> expected = ScanByLibrary<T>(std::string(text), format);
  for (const std::size_t windowSize : {std::size_t{1}, MemoryStream::kWhole}) {
    const Scan<T> scan = ScanOurs<T>(text, windowSize, format);
    Require(scan.result == expected.result, "another result of scanning");
    Require(AreSame(scan.value, expected.value), "another value of scanning");
    Require(scan.rest == expected.rest, "scanning stops elsewhere");
  }
}

void CheckParsing(const std::string& text) {
  char* end = nullptr;
  const double expected = std::strtod(text.c_str(), &end);
  std::size_t used = 0;
  const double value = Vell::IO::ParseReal(text, &used);
  Require(AreSame(value, expected), "another value of parsing");
  Require(used == static_cast<std::size_t>(end - text.c_str()), "parsing stops elsewhere");
}

/// The sign and digits that the text begins with, which is all that the integer forms are for.
void CheckIntegers(const std::string& text) {
  const std::size_t signs = text.starts_with('-') || text.starts_with('+') ? 1 : 0;
  const std::string number = text.substr(0, text.find_first_not_of("0123456789", signs));
  if (number.size() == signs) {
    return;
  }
  std::int32_t integer = 0;
  std::uint32_t word = 0;
  // NOLINTNEXTLINE(cert-err34-c)
  Require(std::sscanf(number.c_str(), "%d", &integer) == 1, "no integer for the library");
  // NOLINTNEXTLINE(cert-err34-c)
  Require(std::sscanf(number.c_str(), "%u", &word) == 1, "no word for the library");
  Require(Vell::IO::ParseInteger(number) == integer, "another integer");
  Require(Vell::IO::ParseUnsigned(number) == word, "another word");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  const std::string text(Fuzzing::TextOf(data, size));
  CheckScanning<double>(text, "%lg");
  CheckScanning<std::int32_t>(text, "%d");
  CheckScanning<std::uint32_t>(text, "%u");
  CheckParsing(text);
  CheckIntegers(text);
  return 0;
}
