#include "tools/support/json_text.h"

#include <gtest/gtest.h>

#include "tools/support/base64.h"
#include "tools/support/utf8.h"

namespace Hovar {
namespace {

using namespace std::string_literals;

// RFC 4648, section 10.
TEST(Base64Test, PublishedExamples) {
  EXPECT_EQ(Base64Of(""), "");
  EXPECT_EQ(Base64Of("f"), "Zg==");
  EXPECT_EQ(Base64Of("fo"), "Zm8=");
  EXPECT_EQ(Base64Of("foo"), "Zm9v");
  EXPECT_EQ(Base64Of("foob"), "Zm9vYg==");
  EXPECT_EQ(Base64Of("fooba"), "Zm9vYmE=");
  EXPECT_EQ(Base64Of("foobar"), "Zm9vYmFy");
}

TEST(Base64Test, BytesOfAllValues) {
  EXPECT_EQ(Base64Of("\x00\xFF\xFE"s), "AP/+");
  EXPECT_EQ(Base64Of("\xFB\xEF\xBE"s), "++++");
}

TEST(JsonStringTest, WhatMustBeEscapedIs) {
  EXPECT_EQ(JsonString(""), "\"\"");
  EXPECT_EQ(JsonString("a\"b\\c/d"), R"("a\"b\\c/d")");
  EXPECT_EQ(JsonString("\n\r\t"), R"("\n\r\t")");
  EXPECT_EQ(JsonString("\x00\x01\x1F\x7F"s), R"("\u0000\u0001\u001f\u007f")");
  EXPECT_EQ(JsonString("</script>"), R"("\u003c/script>")");
}

TEST(JsonStringTest, Utf8StandsAsItIs) {
  for (const char* text : {"K\xC3\xB6ln", "\xE2\x82\xAC", "\xF0\x9F\x8F\xA5", "\xED\x9F\xBF",
                           "\xEE\x80\x80", "\xF4\x8F\xBF\xBF", "\xC2\x80", "\xE0\xA0\x80"}) {
    EXPECT_EQ(JsonString(text), "\"" + std::string(text) + "\"");
    EXPECT_TRUE(IsUtf8(text));
  }
}

TEST(JsonStringTest, OtherBytesAreReplacedOneByOne) {
  const std::string r = "\\ufffd";
  const std::vector<std::pair<std::string, std::string>> rows{
      {"a\xFF", "a" + r},
      {"\x80z", r + "z"},                   // continuation without a lead
      {"\xC3", r},                          // cut short
      {"\xE2\x82", r + r},                  //
      {"\xE2\x82x", r + r + "x"},           // the last byte is no continuation
      {"\xC3(", r + "("},                   // no continuation
      {"\xC0\x80", r + r},                  // longer than needed
      {"\xE0\x9F\xBF", r + r + r},          //
      {"\xF0\x8F\xBF\xBF", r + r + r + r},  //
      {"\xED\xA0\x80", r + r + r},          // surrogate
      {"\xF4\x90\x80\x80", r + r + r + r},  // above U+10FFFF
      {"\xF5\x80\x80\x80", r + r + r + r}};
  for (const auto& [text, json] : rows) {
    EXPECT_EQ(JsonString(text), "\"" + json + "\"");
    EXPECT_FALSE(IsUtf8(text));
  }
}

TEST(JsonWriterTest, NestsObjectsAndArrays) {
  JsonWriter json;
  json.BeginObject();
  json.Text("a", "x");
  json.BeginArray("b");
  json.EndArray();
  json.BeginArray("c");
  json.Number({}, -5);
  json.BeginObject();
  json.Null("d");
  json.EndObject();
  json.EndArray();
  json.Numbers("e", {1, 2});
  json.EndObject();
  EXPECT_EQ(json.Finish(),
            "{\n"
            "  \"a\": \"x\",\n"
            "  \"b\": [],\n"
            "  \"c\": [\n"
            "    -5,\n"
            "    {\n"
            "      \"d\": null\n"
            "    }\n"
            "  ],\n"
            "  \"e\": [1, 2]\n"
            "}\n");
}

TEST(JsonWriterTest, BytesThatAreNotUtf8AreKeptBeside) {
  JsonWriter json;
  json.BeginObject();
  json.Bytes("path", "a\xFF");
  json.Bytes("other", "a");
  json.EndObject();
  EXPECT_EQ(json.Finish(),
            "{\n"
            "  \"path\": \"a\\ufffd\",\n"
            "  \"pathBase64\": \"Yf8=\",\n"
            "  \"other\": \"a\"\n"
            "}\n");
}

}  // namespace
}  // namespace Hovar
