// Writing numbers against snprintf. A NaN is always written "nan".

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "foundation/io/number_text.h"
#include "fuzz_support.h"
#include "support/memory_stream.h"

namespace {

using Fuzzing::Require;
using Vell::IO::NumberText;

template <typename T>
std::string PrintByLibrary(const char* format, T value) {
  std::array<char, 400> text{};
  const int length = std::snprintf(text.data(), text.size(), format, value);
  Require(length > 0 && static_cast<std::size_t>(length) < text.size(), "no room for a number");
  return {text.data(), static_cast<std::size_t>(length)};
}

std::string RealByLibrary(const char* format, double value) {
  return std::isnan(value) ? "nan" : PrintByLibrary(format, value);
}

/// Prints on a stream, with text around the number.
template <typename T>
std::string Print(const std::string& conversion, T value) {
  Testing::MemoryStream stream;
  const int length = stream.Print(("<" + conversion + ">").c_str(), &value, sizeof value);
  Require(static_cast<std::size_t>(length) == stream.Content().size(), "another printed length");
  return stream.Content();
}

void CheckReal(double value) {
  const std::string shortest = RealByLibrary("%g", value);
  Require(NumberText::OfReal(value).View() == shortest, "another short real");
  std::array<char, Vell::IO::kRealRoom> room{};
  const char* const end = Vell::IO::WriteReal(room.data(), value);
  Require(std::string_view(room.data(), static_cast<std::size_t>(end - room.data())) == shortest,
          "another real in place");
  const std::string fixed = RealByLibrary("%f", value);
  Require(NumberText::OfFixed(value).View() == fixed, "another fixed real");
  Require(Print("%lg", value) == "<" + shortest + ">", "another printed short real");
  Require(Print("%lf", value) == "<" + fixed + ">", "another printed fixed real");
}

void CheckSmallReal(float value) {
  Require(Print("%g", value) == "<" + RealByLibrary("%g", double{value}) + ">",
          "another printed float");
}

void CheckInteger(std::uint32_t word) {
  const auto integer = static_cast<std::int32_t>(word);
  const std::string signedText = PrintByLibrary("%d", integer);
  Require(NumberText::OfInteger(integer).View() == signedText, "another integer");
  Require(NumberText::OfUnsigned(word).View() == PrintByLibrary("%u", word), "another word");
  std::array<char, Vell::IO::kIntegerRoom> room{};
  const char* const end = Vell::IO::WriteInteger(room.data(), integer);
  Require(std::string_view(room.data(), static_cast<std::size_t>(end - room.data())) == signedText,
          "another integer in place");
  Require(Print("%d", integer) == "<" + signedText + ">", "another printed integer");
}

/// Where rounding to six digits is close: a decimal number of seven digits that ends in 5, and its
/// neighbours.
void CheckNearTie(std::uint64_t bits) {
  const auto digits = static_cast<std::int32_t>(bits % 1'000'000);
  const auto exponent = static_cast<std::int32_t>(bits >> 32U) % 330;
  const std::string text = std::to_string(digits) + "5e" + std::to_string(exponent);
  const double tie = std::strtod(text.c_str(), nullptr);
  for (const double value :
       {tie, std::nextafter(tie, 0.0), std::nextafter(tie, HUGE_VAL), -tie, tie / 4096}) {
    CheckReal(value);
  }
}

}  // namespace

// Input: eight bytes for each number.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kMost = 256;
  for (std::size_t place = 0; place < size && place < kMost; place += sizeof(std::uint64_t)) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, data + place, std::min(sizeof bits, size - place));
    double real = 0;
    std::memcpy(&real, &bits, sizeof real);
    float small = 0;
    std::memcpy(&small, &bits, sizeof small);
    CheckReal(real);
    CheckSmallReal(small);
    CheckInteger(static_cast<std::uint32_t>(bits));
    CheckNearTie(bits);
  }
  return 0;
}
