#include "tools/support/chain_list.h"

#include <gtest/gtest.h>

namespace Hovar {
namespace {

TEST(ChainListTest, AListIsABatchThatSaysHowManyItHolds) {
  const std::string text = ChainListText({"a/chain-1.xml", "a/chain-2.xml"});
  EXPECT_EQ(text,
            "<!-- Chains 1 to 2 -->\n"
            "<Batch>\n"
            "  <Simulations>\n"
            "    <Simulation>a/chain-1.xml</Simulation>\n"
            "    <Simulation>a/chain-2.xml</Simulation>\n"
            "  </Simulations>\n"
            "</Batch>\n");
  EXPECT_EQ(ChainCountOf(text), 2);
}

TEST(ChainListTest, OtherTextsAreNone) {
  for (const char* text : {"", "<Batch>", "<!-- Chains 1 to  -->\n", "<!-- Chains 1 to 0 -->\n",
                           "<!-- Chains 1 to -2 -->\n", "<!-- Chains 1 to 02 -->\n",
                           "<!-- Chains 1 to 2 -->", "<!-- Chains 1 to 2x -->\n",
                           " <!-- Chains 1 to 2 -->\n", "<!-- Chains 1 to 99999999999 -->\n"}) {
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
