#include "foundation/io/carriage_returns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace Vell::IO {
namespace {

/// A block that is filled as a stream fills it, with the returns that it lacks.
class Block {
 public:
  explicit Block(bool areDropped) : returns_(areDropped) {}

  void Add(std::string_view bytes) {
    unsigned char* end = std::fill_n(end_, returns_.HeldCount(), '\r');
    end = std::copy(bytes.begin(), bytes.end(), end);
    end_ = returns_.Drop(bytes_.data(), end_, end);
  }
  std::string Text() const {
    return std::string(bytes_.begin(), bytes_.begin() + (end_ - bytes_.data()));
  }
  CarriageReturns& Returns() { return returns_; }

 private:
  std::array<unsigned char, 64> bytes_{};
  unsigned char* end_ = bytes_.data();
  CarriageReturns returns_;
};

TEST(CarriageReturnsTest, OnlyThoseBeforeLineFeedsAreDropped) {
  Block block(true);
  block.Add("\r\na\r\r\nb\rc");
  EXPECT_EQ(block.Text(), "\na\r\nb\rc");
  EXPECT_FALSE(block.Returns().IsEmpty());
  // They were before the line feeds at the places 0 and 3.
  EXPECT_EQ(block.Returns().CountFrom(0), 2);
  EXPECT_EQ(block.Returns().CountFrom(1), 1);
  EXPECT_EQ(block.Returns().CountFrom(3), 1);
  EXPECT_EQ(block.Returns().CountFrom(4), 0);
}

TEST(CarriageReturnsTest, TheLastByteIsHeldUntilTheNextDecides) {
  Block dropped(true);
  dropped.Add("a\r");
  EXPECT_EQ(dropped.Text(), "a");
  EXPECT_EQ(dropped.Returns().HeldCount(), 1U);
  EXPECT_EQ(dropped.Returns().CountFrom(1), 1);
  dropped.Add("\nb");
  EXPECT_EQ(dropped.Text(), "a\nb");
  EXPECT_EQ(dropped.Returns().HeldCount(), 0U);

  Block kept(true);
  kept.Add("a\r");
  kept.Add("\r");
  kept.Add("b");
  EXPECT_EQ(kept.Text(), "a\r\rb");
  EXPECT_TRUE(kept.Returns().IsEmpty());

  Block last(true);
  last.Add("a\r");
  last.Add("");
  EXPECT_EQ(last.Text(), "a\r") << "the file ends";
  EXPECT_TRUE(last.Returns().IsEmpty());
}

TEST(CarriageReturnsTest, PlacesMoveWithTheBytes) {
  Block block(true);
  block.Add("a\r\nb\r\nc\r\n");  // line feeds at 1, 3 and 5
  block.Returns().MoveToStart(4);
  EXPECT_EQ(block.Returns().CountFrom(-1), 2) << "that of the byte before";
  EXPECT_EQ(block.Returns().CountFrom(0), 1);
  EXPECT_EQ(block.Returns().CountFrom(2), 0);
  block.Returns().Clear();
  EXPECT_TRUE(block.Returns().IsEmpty());
}

TEST(CarriageReturnsTest, WhereNoneIsDroppedAllBytesStay) {
  Block block(false);
  block.Add("a\r\nb\r");
  EXPECT_EQ(block.Text(), "a\r\nb\r");
  EXPECT_TRUE(block.Returns().IsEmpty());
}

}  // namespace
}  // namespace Vell::IO
