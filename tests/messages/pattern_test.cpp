#include "messages/pattern.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

using Messages::Pattern;
using Messages::PatternWithParts;

constexpr Pattern kNone{"Check rank"};
constexpr Pattern kTwo{"Burnin: <iteration> Intercept: <intercept> "};
constexpr Pattern kAtEnds{"<pass>/<passes>"};

template <std::size_t kParts, typename... Parts>
std::string Filled(const PatternWithParts<kParts>& message, const Parts&... parts) {
  std::string text;
  message.Fill([&text](std::string_view part) { text += part; }, parts...);
  return text;
}

TEST(PatternTest, CountsPlaceholders) {
  EXPECT_EQ(kNone.PlaceholderCount(), 0U);
  EXPECT_EQ(kTwo.PlaceholderCount(), 2U);
  EXPECT_EQ(kAtEnds.PlaceholderCount(), 2U);
}

TEST(PatternTest, PiecesLieBetweenPlaceholders) {
  EXPECT_EQ(kNone.Piece(0), "Check rank");
  EXPECT_EQ(kTwo.Piece(0), "Burnin: ");
  EXPECT_EQ(kTwo.Piece(1), " Intercept: ");
  EXPECT_EQ(kTwo.Piece(2), " ");
  EXPECT_EQ(kAtEnds.Piece(0), "");
  EXPECT_EQ(kAtEnds.Piece(1), "/");
  EXPECT_EQ(kAtEnds.Piece(2), "");
}

TEST(PatternTest, SignAboveWithoutPlaceholderIsText) {
  constexpr Pattern kSign{"does not end with ?>, but <tag> does."};
  EXPECT_EQ(kSign.PlaceholderCount(), 1U);
  EXPECT_EQ(kSign.Piece(0), "does not end with ?>, but ");
  EXPECT_EQ(kSign.Piece(1), " does.");
}

TEST(PatternTest, NullIsNoText) {
  constexpr Pattern kNull{nullptr};
  EXPECT_EQ(kNull.Text(), "");
  EXPECT_EQ(kNull.PlaceholderCount(), 0U);
}

TEST(PatternTest, EqualsItsText) {
  EXPECT_TRUE(kNone == "Check rank");
  EXPECT_TRUE(std::string("Check rank") == kNone);
  EXPECT_FALSE(kNone == "Check rank ");
  EXPECT_FALSE(kNone == "Check");
}

TEST(PatternWithPartsTest, PartsTakeThePlaceOfPlaceholders) {
  EXPECT_EQ(Filled<0>(kNone), "Check rank");
  EXPECT_EQ(Filled<2>(kTwo, "3", "-1.5"), "Burnin: 3 Intercept: -1.5 ");
  EXPECT_EQ(Filled<2>(kAtEnds, "0", "20"), "0/20");
}

TEST(PatternWithPartsTest, PartWithASignIsNoPlaceholder) {
  EXPECT_EQ(Filled<2>(kAtEnds, "<a>", "<"), "<a>/<");
}

}  // namespace
