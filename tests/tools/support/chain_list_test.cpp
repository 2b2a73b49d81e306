#include "tools/support/chain_list.h"

#include <gtest/gtest.h>

namespace Hovar {
namespace {

TEST(ChainListTest, AListSaysHowManyChainsBelongTogether) {
  EXPECT_EQ(ChainListText(12), "{\"chains\": 12}\n");
  EXPECT_EQ(ChainCountOf("{\"chains\": 12}\n"), 12);
}

TEST(ChainListTest, OtherTextsAreNone) {
  for (const char* text : {"", "{}", "{\"chains\": }\n", "{\"chains\": 0}\n", "{\"chains\": -2}\n",
                           "{\"chains\": 02}\n", "{\"chains\": 2}", "{\"chains\": 2x}\n",
                           " {\"chains\": 2}\n", "{\"chains\": 99999999999}\n"}) {
    EXPECT_EQ(ChainCountOf(text), std::nullopt) << text;
  }
}

TEST(ChainListTest, FoldersOfChainsAreKnownByTheirNames) {
  EXPECT_EQ(ChainNumberOf("chain-1"), 1);
  EXPECT_EQ(ChainNumberOf("chain-120"), 120);
  for (const char* name : {"", "chain-", "chain-0", "chain-01", "chain-1a", "Chain-1", "chain--1",
                           "chain-1/", "a-chain-1"}) {
    EXPECT_EQ(ChainNumberOf(name), std::nullopt) << name;
  }
}

}  // namespace
}  // namespace Hovar
