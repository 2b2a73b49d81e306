#include "tools/support/sentence_parts.h"

#include <gtest/gtest.h>

namespace Hovar {
namespace {

TEST(SentencePartsTest, WhatATerminalWouldObeyIsEscaped) {
  EXPECT_EQ(Printable("a\tb\r\n\x01\x1b[2J\x7F"), "a\\tb\\r\\n\\x01\\x1b[2J\\x7f");
  // In UTF-8 and as single bytes: control characters of Latin-1.
  EXPECT_EQ(Printable("\xC2\x80\xC2\x9B\xC2\x9F"), "\\xc2\\x80\\xc2\\x9b\\xc2\\x9f");
  EXPECT_EQ(Printable("\x80\x9B"), "\\x80\\x9b");
  // Marks, embeddings, overrides and isolates of direction; separators of lines and paragraphs.
  EXPECT_EQ(Printable("\xD8\x9C"), "\\xd8\\x9c");
  EXPECT_EQ(Printable("\xE2\x80\x8E\xE2\x80\x8F"), "\\xe2\\x80\\x8e\\xe2\\x80\\x8f");
  EXPECT_EQ(Printable("\xE2\x80\xA8\xE2\x80\xAE"), "\\xe2\\x80\\xa8\\xe2\\x80\\xae");
  EXPECT_EQ(Printable("\xE2\x81\xA6\xE2\x81\xA9"), "\\xe2\\x81\\xa6\\xe2\\x81\\xa9");
}

TEST(SentencePartsTest, EverythingElseStaysAsItIs) {
  for (const std::string text : {"Z\xC3\xBCrich", "Z\xFCrich", "\xE6\x9D\xB1\xE4\xBA\xAC",
                                 "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D", "\xC2\xA0",
                                 "\xE2\x80\xA7\xE2\x80\xAF", "\xF0\x9F\x8F\xA5", "a\\nb"}) {
    EXPECT_EQ(Printable(text), text);
    EXPECT_TRUE(IsPrintable(text));
  }
  EXPECT_FALSE(IsPrintable("a\n"));
}

TEST(SentencePartsTest, QuotedTextsAreCutBetweenCharacters) {
  EXPECT_EQ(Quoted(std::string(60, 'x')), '"' + std::string(60, 'x') + '"');
  EXPECT_EQ(Quoted(std::string(59, 'x') + "\xC3\xBC"), '"' + std::string(59, 'x') + "...\"");
  EXPECT_EQ(Quoted(std::string(58, 'x') + "\xC3\xBC"), '"' + std::string(58, 'x') + "\xC3\xBC\"");
  EXPECT_EQ(Quoted("a\nb"), "\"a\\nb\"");
}

}  // namespace
}  // namespace Hovar
