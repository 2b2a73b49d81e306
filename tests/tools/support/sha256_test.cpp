#include "tools/support/sha256.h"

#include <gtest/gtest.h>

#include "support/files.h"

namespace Hovar {
namespace {

// Published examples: FIPS 180-2, appendix B, and NIST's examples for 0 bytes.
TEST(Sha256Test, PublishedExamples) {
  EXPECT_EQ(Sha256Of(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(Sha256Of("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(Sha256Of("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  EXPECT_EQ(Sha256Of(std::string(1'000'000, 'a')),
            "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

// coreutils: for n in 55 56 63 64 65 119 120; do head -c $n /dev/zero | sha256sum; done
TEST(Sha256Test, LengthsAroundTheEndOfABlock) {
  const std::pair<std::size_t, const char*> rows[] = {
      {55, "02779466cdec163811d078815c633f21901413081449002f24aa3e80f0b88ef7"},
      {56, "d4817aa5497628e7c77e6b606107042bbba3130888c5f47a375e6179be789fbb"},
      {63, "c7723fa1e0127975e49e62e753db53924c1bd84b8ac1ac08df78d09270f3d971"},
      {64, "f5a5fd42d16a20302798ef6ed309979b43003d2320d9f0e8ea9831a92759fb4b"},
      {65, "98ce42deef51d40269d542f5314bef2c7468d401ad5d85168bfab4c0108f75f7"},
      {119, "f616b0d54e78571a9611f343c9f8e022e859e920381ab0e4d3da01e193a7bd7e"},
      {120, "6edd9f6f9cc92cded36e6c4a580933f9c9f1b90562b46903b806f21902a1a54f"}};
  for (const auto& [length, digest] : rows) {
    EXPECT_EQ(Sha256Of(std::string(length, '\0')), digest) << length;
  }
}

TEST(Sha256Test, PiecesOfAnySizeGiveTheSame) {
  std::string message;
  for (int i = 0; i < 300; ++i) {
    message.push_back(static_cast<char>(i * 7));
  }
  for (std::size_t piece = 1; piece < 140; ++piece) {
    Sha256 hash;
    for (std::size_t next = 0; next < message.size(); next += piece) {
      hash.Add(std::string_view(message).substr(next, piece));
    }
    EXPECT_EQ(hash.Finish(), Sha256Of(message)) << piece;
  }
}

TEST(Sha256Test, AFileIsReadInWhole) {
  const Testing::ScratchFolder folder;
  const std::string content(3'000'001, 'x');
  EXPECT_EQ(Sha256OfFile(folder.Write("large", content)), Sha256Of(content));
  EXPECT_EQ(Sha256OfFile(folder.Write("empty", "")), Sha256Of(""));
  EXPECT_EQ(Sha256OfFile(folder.File("none")), std::nullopt);
  EXPECT_EQ(Sha256OfFile(folder.Path().string()), std::nullopt);
}

}  // namespace
}  // namespace Hovar
