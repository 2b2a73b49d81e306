#include "tools/check/pairs.h"

#include <gtest/gtest.h>

#include "support/files.h"

namespace {

/// What is said about a header with a number of indicators.
std::string Lines(const std::string& names, int indicators) {
  const Testing::ScratchFolder folder;
  Hovar::DefinitionFile definition;
  definition.path = "d.xml";
  definition.text = {"d.xml", ""};
  definition.data = folder.Write("data.csv", "Key,Hospital,Y," + names + "\n");
  definition.poaCount = indicators;
  definition.values.push_back({Hovar::Element::kNumberOfPoaIndicators, 0, "", ""});
  Hovar::Findings findings;
  WarnOfPairs(findings, definition);
  return findings.Lines();
}

bool IsFitting(const std::string& names, int given, int fitting) {
  return Lines(names, given).find("With " + std::to_string(fitting) + " they do") !=
         std::string::npos;
}

constexpr const char* kPrefixes = "P1,P2,P3,P4,ZAge,ZSex,ZRenal,ZLiver,XAge,XSex,XRenal,XLiver";

TEST(CheckPairsTest, TheSentenceNamesAPairOfEachNumber) {
  EXPECT_EQ(Lines(kPrefixes, 2),
            "d.xml:1:1: warning: With 2 POA indicators the first pair of Z and X is \"P3\" and "
            "\"ZLiver\", and the names of the pairs do not go together. With 4 they do, as in "
            "\"ZAge\" and \"XAge\". Correct the number of indicators.\n");
}

TEST(CheckPairsTest, PrefixesSuffixesAndMiddles) {
  EXPECT_TRUE(IsFitting(kPrefixes, 0, 4));
  EXPECT_TRUE(IsFitting(kPrefixes, 6, 4));
  const char* const suffixes = "P1,P2,age_before,sex_before,renal_before,age_now,sex_now,renal_now";
  EXPECT_TRUE(IsFitting(suffixes, 0, 2));
  EXPECT_TRUE(IsFitting(suffixes, 4, 2));
  const char* const oneSided = "P1,P2,old_age,old_sex,old_renal,old_liver,age,sex,renal,liver";
  EXPECT_TRUE(IsFitting(oneSided, 0, 2));
  EXPECT_TRUE(IsFitting(oneSided, 4, 2));
  const char* const middles = "P1,P2,c_z_age,c_z_sex,c_z_renal,c_x_age,c_x_sex,c_x_renal";
  EXPECT_TRUE(IsFitting(middles, 4, 2));
  const char* const quoted = "P1,P2,\"Z,a\",\"Z,b\",\"Z\"\"c\",\"X,a\",\"X,b\",\"X\"\"c\"";
  EXPECT_TRUE(IsFitting(quoted, 0, 2));
  const char* const numbered = "P1,P2,Z1,Z2,Z3,Z4,X1,X2,X3,X4";
  EXPECT_TRUE(IsFitting(numbered, 0, 2));
  EXPECT_TRUE(IsFitting(numbered, 4, 2));
}

TEST(CheckPairsTest, CapitalLettersDoNotMatter) {
  const char* const mixed = "P1,P2,zAge,ZSEX,z_Renal,ZLiver,XAGE,xSex,X_renal,xLIVER";
  EXPECT_TRUE(IsFitting(mixed, 0, 2));
  EXPECT_TRUE(IsFitting(mixed, 4, 2));
  EXPECT_EQ(Lines(mixed, 2), "");
  EXPECT_NE(Lines(mixed, 4).find("as in \"zAge\" and \"XAGE\""), std::string::npos);
}

TEST(CheckPairsTest, MostPairsAreEnough) {
  std::string z;
  std::string x;
  for (char c = 'a'; c <= 'i'; ++c) {
    z += std::string(",Z") + c + "ge";
    x += std::string(",X") + c + "ge";
  }
  EXPECT_TRUE(IsFitting("P1,P2" + z + ",emergency" + x + ",urgent", 0, 2)) << "nine of ten";
  EXPECT_EQ(Lines("P1,P2" + z + ",emergency,Zk" + x + ",urgent,other", 0), "") << "nine of eleven";
}

TEST(CheckPairsTest, TheRightNumberGivesNoWarning) {
  for (const char* names : {kPrefixes, "a,b,c,d,Z,X", "p,p,p,p,age,sex,age,sex"}) {
    EXPECT_EQ(Lines(names, 4), "") << names;
  }
}

TEST(CheckPairsTest, NamesWithoutAPatternGiveNoWarning) {
  for (int indicators = 0; indicators <= 12; indicators += 2) {
    EXPECT_EQ(
        Lines("anna,berta,cesar,dora,emil,fritz,gustav,heinz,ida,julius,karl,lotte", indicators),
        "");
    EXPECT_EQ(Lines(",,,,,,,,,,,", indicators), "");
    EXPECT_EQ(Lines("v,v,v,v,v,v,v,v,v,v,v,v", indicators), "");
  }
  for (const int columns : {12, 40, 210, 300}) {
    std::string numbered = "V1";
    for (int i = 2; i <= columns; ++i) {
      numbered += ",V" + std::to_string(i);
    }
    for (int indicators = 0; indicators < columns; indicators += 2) {
      EXPECT_EQ(Lines(numbered, indicators), "") << columns << " " << indicators;
    }
  }
}

TEST(CheckPairsTest, WhatIsAnErrorOrHasNoPairsIsPassedOver) {
  for (const int indicators : {-2, 1, 3, 12, 14, 1000}) {
    EXPECT_EQ(Lines(kPrefixes, indicators), "") << indicators;
  }
}

}  // namespace
