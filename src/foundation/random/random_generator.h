#pragma once

// The one source of randomness: a pair of 16-bit multiply-with-carry generators (G. Marsaglia,
// posting to sci.stat.math, 1999), combined in this system's own way: the first word moved up by 16
// bits, exclusive-or the low 16 bits of the second. The state is the process's. It starts at the
// words 1 and 1, and every definition that is read seeds it anew.
//
// Everything random of a run draws from here, in the order in which it is needed, so a seed fixes
// every draw of the process. Drawing is not locked: the system has a single thread.

#include <cstdint>

#include "foundation/xml/xml_reader.h"

namespace Vell {

/// The process's generator; there are no objects of it. No operation but ReadXml raises.
class RandomGenerator {
 public:
  /// A step takes a word x to multiplier * (x mod 2^16) + (x div 2^16).
  static constexpr std::uint32_t kMultiplierZ = 36969;
  static constexpr std::uint32_t kMultiplierW = 18000;

  /// Advances both generators and returns their combination.
  static std::uint32_t NextWord() noexcept {
    state_.z = kMultiplierZ * (state_.z & 0xFFFF) + (state_.z >> 16);
    state_.w = kMultiplierW * (state_.w & 0xFFFF) + (state_.w >> 16);
    return (state_.z << 16) ^ (state_.w & 0xFFFF);
  }

  /// A number in [0, 1): one word times 2^-32.
  static double Uniform() noexcept { return NextWord() * 0x1p-32; }

  /// True with probability p. A p that is not above 0 (a NaN too) or is 1 or more is answered
  /// without a draw; otherwise one word is used.
  static bool Accept(double p) noexcept;

  /// A standard normal deviate by the polar method of G. Marsaglia and T. A. Bray (SIAM Review 6,
  /// 1964, pages 260-264). Deviates come in pairs: the one made from the second word of a pair is
  /// returned first, the other one is kept for the next call. Seeding does not drop it.
  static double Normal() noexcept;

  /// Sets both words; 0 becomes 1, as a zero word would stay zero for ever.
  static void Seed(std::uint32_t z, std::uint32_t w) noexcept;

  /// Reads a `Seed` element and seeds: from the clock for an empty element of the type "Randomize",
  /// from its two words for the type "Vector".
  /// Errors: "Attribute not found in XML tag" without a type; InvalidInputException "Invalid
  ///         RandomGenerator XML input" for anything else than these two forms;
  ///         EndOfStreamException "Unexpected end of stream" for a word that is no number; those of
  ///         the reader.
  static void ReadXml(XmlReader& reader);

  /// Back to the state at the start of the process, the kept normal deviate included. The program
  /// begins with it, and tests that run it more than once in a process need it.
  static void Reset() noexcept;

 private:
  struct State {
    std::uint32_t z = 1;
    std::uint32_t w = 1;
    bool hasCachedNormal = false;
    double cachedNormal = 0;
  };
  static State state_;
};

inline RandomGenerator::State RandomGenerator::state_;

}  // namespace Vell
