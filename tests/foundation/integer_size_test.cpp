#include "foundation/integer_size.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "foundation/exceptions/exceptions.h"
#include "support/raised.h"
#include "support/seeded_random.h"

namespace {

using Testing::ExpectRaises;
using Vell::CheckedSize;
using Vell::WrappingProduct;
using Vell::Exceptions::IntegerOverflowException;

TEST(CheckedSizeTest, ReturnsEverythingBelow2To31Unchanged) {
  EXPECT_EQ(CheckedSize(0), 0);
  EXPECT_EQ(CheckedSize(1), 1);
  EXPECT_EQ(CheckedSize(65536), 65536);
  EXPECT_EQ(CheckedSize(2147483646), 2147483646);
  EXPECT_EQ(CheckedSize(2147483647), 2147483647);
}

TEST(CheckedSizeTest, Raises2To31AndMore) {
  // The last ones would be small or negative if only their low 32 bits were looked at.
  for (const std::uint64_t size :
       {std::uint64_t{2147483648}, std::uint64_t{2147483649}, std::uint64_t{4294967295},
        std::uint64_t{4294967296}, std::uint64_t{4294967297},
        std::numeric_limits<std::uint64_t>::max()}) {
    SCOPED_TRACE(size);
    ExpectRaises<IntegerOverflowException>("Integer overflow", [size] { CheckedSize(size); });
  }
}

TEST(RequireIndexTest, AnIndexLiesWithinTheCount) {
  using Vell::RequireIndex;
  RequireIndex(0, 1);
  RequireIndex(std::numeric_limits<std::int32_t>::max() - 1,
               std::numeric_limits<std::int32_t>::max());
  for (const auto& [index, count] : {std::pair(0, 0), std::pair(-1, 5), std::pair(5, 5),
                                     std::pair(std::numeric_limits<std::int32_t>::min(), 5)}) {
    ExpectRaises<Vell::Exceptions::InvalidArgumentException>(
        "Index out of range", [index = index, count = count] { RequireIndex(index, count); });
  }
}

TEST(WrappingProductTest, KeepsTheLow32BitsOfTheProduct) {
  struct Case {
    std::int32_t a;
    std::int32_t b;
    std::int32_t product;
  };
  constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
  constexpr Case kCases[] = {
      {0, 7, 0},
      {-3, 7, -21},
      {46340, 46340, 2147395600},   // the largest square that fits
      {46341, 46341, -2147479015},  // 2147488281 - 2^32
      {65536, 32768, kLeast},       // 2^31
      {65536, 65536, 0},            // 2^32
      {65537, 65537, 131073},       // 2^32 + 2^17 + 1
      {kLeast, -1, kLeast},         // 2^31
      {kLeast, kLeast, 0},          // 2^62
      {2147483647, 2147483647, 1},  // 2^62 - 2^32 + 1
      {2147483647, 2, -2},          // 2^32 - 2
  };
  for (const Case& c : kCases) {
    EXPECT_EQ(WrappingProduct(c.a, c.b), c.product) << c.a << " * " << c.b;
    EXPECT_EQ(WrappingProduct(c.b, c.a), c.product) << c.b << " * " << c.a;
  }
}

TEST(WrappingProductTest, DiffersFromTheExactProductByAMultipleOf2To32) {
  Testing::SeededRandom random(20240301);
  SCOPED_TRACE(random.Text());
  for (int i = 0; i < 10000; ++i) {
    const auto a = static_cast<std::int32_t>(random.Word() >> 32);
    const auto b = static_cast<std::int32_t>(random.Word() >> 32);
    const std::int64_t difference = std::int64_t{a} * b - WrappingProduct(a, b);
    ASSERT_EQ(difference % (std::int64_t{1} << 32), 0) << a << " * " << b;
  }
}

}  // namespace
