#pragma once

// SHA-256, as published in FIPS 180-4, Secure Hash Standard (NIST, 2015), sections 4.1.2, 4.2.2, 5
// and 6.2. A run record names its inputs by it.

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Hovar {

/// The digest of bytes that come in pieces. One object serves one message, of less than 2^61 bytes.
class Sha256 {
 public:
  void Add(std::string_view bytes);
  /// Ends the message and returns the digest as 64 hexadecimal digits in lower case.
  std::string Finish();

 private:
  static constexpr std::size_t kBlock = 64;

  void AddBlock(const unsigned char* block);

  std::array<std::uint32_t, 8> state_{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                      0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
  std::array<unsigned char, kBlock> pending_{};
  std::size_t pendingSize_ = 0;
  std::uint64_t length_ = 0;  // bytes
};

/// The digest of a whole text.
std::string Sha256Of(std::string_view bytes);

/// The digest of a regular file; nothing when it cannot be read, and when a request to end comes
/// that is remembered.
std::optional<std::string> Sha256OfFile(const std::string& path);

}  // namespace Hovar
