#include "tools/support/sha256.h"

#include <algorithm>
#include <bit>
#include <vector>

#include "foundation/io/platform/processes.h"
#include "tools/support/files.h"

namespace Hovar {
namespace {

// The first 32 bits of the fractional parts of the cube roots of the first 64 primes.
constexpr std::array<std::uint32_t, 64> kRoundConstants{
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

/// The message schedule W of a block.
std::array<std::uint32_t, 64> Schedule(const unsigned char* block) {
  std::array<std::uint32_t, 64> w{};
  for (std::size_t t = 0; t < 16; ++t) {
    for (std::size_t byte = 0; byte < 4; ++byte) {
      w[t] = w[t] << 8 | block[4 * t + byte];
    }
  }
  for (std::size_t t = 16; t < w.size(); ++t) {
    const std::uint32_t a = w[t - 15];
    const std::uint32_t b = w[t - 2];
    w[t] = w[t - 16] + (std::rotr(a, 7) ^ std::rotr(a, 18) ^ a >> 3) + w[t - 7] +
           (std::rotr(b, 17) ^ std::rotr(b, 19) ^ b >> 10);
  }
  return w;
}

}  // namespace

void Sha256::AddBlock(const unsigned char* block) {
  const std::array<std::uint32_t, 64> w = Schedule(block);
  auto [a, b, c, d, e, f, g, h] = state_;
  for (std::size_t t = 0; t < w.size(); ++t) {
    const std::uint32_t first = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                                ((e & f) ^ (~e & g)) + kRoundConstants[t] + w[t];
    const std::uint32_t second =
        (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
    h = g;
    g = f;
    f = e;
    e = d + first;
    d = c;
    c = b;
    b = a;
    a = first + second;
  }
  const std::array<std::uint32_t, 8> worked{a, b, c, d, e, f, g, h};
  for (std::size_t i = 0; i < state_.size(); ++i) {
    state_[i] += worked[i];
  }
}

void Sha256::Add(std::string_view bytes) {
  length_ += bytes.size();
  while (!bytes.empty()) {
    const std::size_t count = std::min(bytes.size(), kBlock - pendingSize_);
    std::copy_n(bytes.begin(), count, pending_.begin() + static_cast<std::ptrdiff_t>(pendingSize_));
    pendingSize_ += count;
    bytes.remove_prefix(count);
    if (pendingSize_ == kBlock) {
      AddBlock(pending_.data());
      pendingSize_ = 0;
    }
  }
}

std::string Sha256::Finish() {
  // A bit 1, zeros up to 8 bytes before the end of a block, the length in bits.
  constexpr std::size_t kLengthPlace = kBlock - 8;
  const std::uint64_t bits = length_ * 8;
  std::string padding(1, '\x80');
  padding.append((kBlock + kLengthPlace - pendingSize_ - 1) % kBlock, '\0');
  for (int shift = 56; shift >= 0; shift -= 8) {
    padding.push_back(static_cast<char>(bits >> shift & 0xFF));
  }
  Add(padding);
  std::string digest;
  for (const std::uint32_t word : state_) {
    for (int shift = 28; shift >= 0; shift -= 4) {
      digest.push_back("0123456789abcdef"[word >> shift & 0xF]);
    }
  }
  return digest;
}

std::string Sha256Of(std::string_view bytes) {
  Sha256 hash;
  hash.Add(bytes);
  return hash.Finish();
}

std::optional<std::string> Sha256OfFile(const std::string& path) {
  constexpr std::size_t kRead = std::size_t{1} << 20;
  const InputFile file(path);
  if (!file.IsOpen()) {
    return std::nullopt;
  }
  Sha256 hash;
  std::vector<char> buffer(kRead);
  std::int64_t count = 0;
  while ((count = file.Read(buffer)) > 0) {
    if (Vell::IO::Platform::StopRequest() != 0) {
      return std::nullopt;
    }
    hash.Add({buffer.data(), static_cast<std::size_t>(count)});
  }
  return count == 0 ? std::optional<std::string>(hash.Finish()) : std::nullopt;
}

}  // namespace Hovar
