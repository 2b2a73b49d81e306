#include "foundation/random/random_generator.h"

#include <algorithm>
#include <cmath>

#include "foundation/exceptions/exceptions.h"
#include "foundation/io/number_scanner.h"
#include "foundation/io/platform/platform.h"
#include "foundation/logarithm.h"
#include "messages/error_texts.h"

namespace Vell {
namespace {

std::uint32_t ReadWordElement(XmlReader& reader) {
  std::uint32_t word = 0;
  reader.ReadStartTag("Element");
  if (IO::ScanUnsigned(reader.Source(), word) != IO::ScanResult::kNumber) {
    throw Exceptions::EndOfStreamException(Messages::kErrors.unexpectedEnd);
  }
  reader.ReadEndTag("Element");
  return word;
}

/// Maps a word to the open interval (-1, 1).
double ToSymmetricUnit(std::uint32_t word) noexcept {
  constexpr double kTwoTo32Plus1 = 4294967297.0;
  return (word + 1.0) / kTwoTo32Plus1 * 2.0 - 1.0;
}

}  // namespace

bool RandomGenerator::Accept(double p) noexcept {
  if (!(p > 0)) {
    return false;
  }
  return p >= 1 || p > Uniform();
}

double RandomGenerator::Normal() noexcept {
  if (state_.hasCachedNormal) {
    state_.hasCachedNormal = false;
    return state_.cachedNormal;
  }
  double r1 = 0;
  double r2 = 0;
  double s = 0;
  do {
    r1 = ToSymmetricUnit(NextWord());
    r2 = ToSymmetricUnit(NextWord());
    s = r1 * r1 + r2 * r2;
  } while (!(s < 1 && s != 0));
  const double f = std::sqrt(-2 * Log(s) / s);
  state_.cachedNormal = f * r1;
  state_.hasCachedNormal = true;
  return f * r2;
}

void RandomGenerator::Seed(std::uint32_t z, std::uint32_t w) noexcept {
  state_.z = std::max(z, 1U);
  state_.w = std::max(w, 1U);
}

void RandomGenerator::ReadXml(XmlReader& reader) {
  const XmlTag tag = reader.ReadTag();
  if (tag.IsStart("Seed")) {
    const std::string_view type = tag.Attribute("xsi:type");
    if (type == "Randomize" && tag.isEmpty) {
      const auto seconds = static_cast<std::uint32_t>(IO::Platform::CalendarSeconds());
      Seed(seconds, seconds);
      return;
    }
    if (type == "Vector" && !tag.isEmpty) {
      reader.ReadStartTag("Seed");
      const std::uint32_t z = ReadWordElement(reader);
      const std::uint32_t w = ReadWordElement(reader);
      reader.ReadEndTag("Seed");
      reader.ReadEndTag("Seed");
      Seed(z, w);
      return;
    }
  }
  throw Exceptions::InvalidInputException(Messages::kErrors.invalidSeed);
}

void RandomGenerator::Reset() noexcept { state_ = State(); }

}  // namespace Vell
