#include "foundation/xml/xml_reader.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/exceptions/exceptions.h"
#include "support/all_texts.h"
#include "support/memory_stream.h"
#include "support/raised.h"

namespace {

namespace E = Vell::Exceptions;
using Testing::ExpectRaises;
using Testing::MemoryStream;
using Testing::Quoted;
using Vell::MakeShared;
using Vell::String;
using Vell::XmlReader;
using Vell::XmlTag;
using Kind = Vell::XmlTag::Kind;

constexpr const char* kName = "run\\definition.xml";

/// A reader of a text, which may hold NUL bytes.
XmlReader ReaderOf(const std::string& text, std::size_t windowSize = MemoryStream::kWhole) {
  return XmlReader(MakeShared<MemoryStream>(text, windowSize, kName));
}

/// What is wrong with a text: which class says so, and its line.
struct Fault {
  enum class Class { kCharacter, kName, kEnd, kArgument, kInput, kIO };
  Class exception;
  std::string line;
};

Fault Character(char expected, char current) {
  return {Fault::Class::kCharacter, std::string("Invalid input in file \"") + kName +
                                        "\": expected \"" + expected + "\", current \"" + current +
                                        "\""};
}
Fault Name(const std::string& expected, const std::string& current) {
  return {Fault::Class::kName, std::string("Invalid input in file \"") + kName + "\": expected \"" +
                                   expected + "\", current \"" + current + "\""};
}
const Fault kEnd{Fault::Class::kEnd, "Unexpected end of stream"};
const Fault kDuplicate{Fault::Class::kArgument, "Duplicate attributes not allowed in XML tag"};
const Fault kInvalidArgument{Fault::Class::kArgument, "Invalid argument"};
const Fault kNul{Fault::Class::kInput, "Invalid input string"};
const Fault kIO{Fault::Class::kIO, "IO Exception"};

void ExpectFault(const Fault& fault, const std::function<void()>& call) {
  switch (fault.exception) {
    case Fault::Class::kCharacter:
      return ExpectRaises<E::MatchException<char>>(fault.line, call);
    case Fault::Class::kName:
      return ExpectRaises<E::MatchException<String>>(fault.line, call);
    case Fault::Class::kEnd:
      return ExpectRaises<E::EndOfStreamException>(fault.line, call);
    case Fault::Class::kArgument:
      return ExpectRaises<E::InvalidArgumentException>(fault.line, call);
    case Fault::Class::kInput:
      return ExpectRaises<E::InvalidInputException>(fault.line, call);
    case Fault::Class::kIO:
      return ExpectRaises<E::IOException>(fault.line, call);
  }
}

struct FaultCase {
  std::string text;
  Fault fault;
};

using Attributes = std::vector<std::pair<std::string, std::string>>;

struct TagCase {
  std::string text;
  Kind kind;
  bool isEmpty;
  std::string name;
  Attributes attributes;
};

Attributes AttributesOf(const XmlTag& tag) {
  Attributes attributes;
  for (const Vell::XmlAttribute& attribute : tag.attributes) {
    attributes.emplace_back(attribute.name.View(), attribute.value.View());
  }
  return attributes;
}

TEST(ReadTagTest, ReadsAllKindsOfTags) {
  const TagCase cases[] = {
      {"<Analysis>", Kind::kStart, false, "Analysis", {}},
      {"<Analysis  >", Kind::kStart, false, "Analysis", {}},
      {"</Analysis>", Kind::kEnd, false, "Analysis", {}},
      {"</Analysis\n >", Kind::kEnd, false, "Analysis", {}},
      {"<Seed />", Kind::kStart, true, "Seed", {}},
      {"<Seed\t/>", Kind::kStart, true, "Seed", {}},
      // A name ends only at white space or '>', so a slash right after it belongs to it.
      {"<Seed/>", Kind::kStart, false, "Seed/", {}},
      {"<Batch/>", Kind::kStart, false, "Batch/", {}},
      {"</Seed/>", Kind::kEnd, false, "Seed/", {}},
      {"<a=b\"c'&d>", Kind::kStart, false, "a=b\"c'&d", {}},
      // Declarations
      {"<?xml version=\"1.0\" encoding=\"utf-8\"?>",
       Kind::kDeclaration,
       false,
       "xml",
       {{"version", "1.0"}, {"encoding", "utf-8"}}},
      {"<?xml ?>", Kind::kDeclaration, false, "xml", {}},
      {"<?xml a=\"1\" ?>", Kind::kDeclaration, false, "xml", {{"a", "1"}}},
      // Attributes
      {"<Seed xsi:type=\"Randomize\"/>", Kind::kStart, true, "Seed", {{"xsi:type", "Randomize"}}},
      {"<Seed xsi:type=\"Vector\">", Kind::kStart, false, "Seed", {{"xsi:type", "Vector"}}},
      {"<A b = \"1\"\r\n c\t=\t\"2\" >", Kind::kStart, false, "A", {{"b", "1"}, {"c", "2"}}},
      {"<A b=\"1\"c=\"2\">", Kind::kStart, false, "A", {{"b", "1"}, {"c", "2"}}},
      {"<A z=\"1\" a=\"2\">", Kind::kStart, false, "A", {{"z", "1"}, {"a", "2"}}},
      {"<A b=\"\">", Kind::kStart, false, "A", {{"b", ""}}},
      {"<A b=\" two  words\n\">", Kind::kStart, false, "A", {{"b", " two  words\n"}}},
      {"<A b=\"<>/?='&lt;\">", Kind::kStart, false, "A", {{"b", "<>/?='&lt;"}}},
      {"<A b=\"1\" B=\"2\">", Kind::kStart, false, "A", {{"b", "1"}, {"B", "2"}}},
      // Things of XML that this reader takes for names
      {"<!DOCTYPE>", Kind::kStart, false, "!DOCTYPE", {}},
      {"<!-x>", Kind::kStart, false, "!-x", {}},
      {"<!>", Kind::kStart, false, "!", {}},
  };
  for (const TagCase& c : cases) {
    SCOPED_TRACE(c.text);
    for (const std::size_t windowSize : {MemoryStream::kWhole, std::size_t{1}}) {
      XmlReader reader = ReaderOf(" \t\r\n" + c.text + "rest", windowSize);
      const XmlTag tag = reader.ReadTag();
      EXPECT_EQ(tag.kind, c.kind);
      EXPECT_EQ(tag.isEmpty, c.isEmpty);
      EXPECT_EQ(tag.name.View(), c.name);
      EXPECT_EQ(AttributesOf(tag), c.attributes);
      EXPECT_EQ(reader.ReadText().View(), "rest");
    }
  }
}

TEST(ReadTagTest, RefusesWhatIsNoTag) {
  const FaultCase cases[] = {
      {"x<A>", Character('<', 'x')},
      {" >", Character('<', '>')},
      {"\xEF\xBB\xBF<A>", Character('<', '\xEF')},  // a byte order mark
      // Attributes
      {"<A b='1'>", Character('"', '\'')},
      {"<A b=1>", Character('"', '1')},
      {"<A b=>", Character('"', '>')},
      {"<A b >", Character('=', '>')},
      {"<A b \"1\">", Character('=', '"')},
      {"<A b=\"1\" b=\"2\">", kDuplicate},
      {"<A b=\"1\" c=\"\" b=\"1\">", kDuplicate},
      {"<?xml b=\"1\" b=\"1\"?>", kDuplicate},
      // Ends of tags
      {"<A />"  // fine, but the next one is not
       "<A / >",
       Character('>', ' ')},
      {"<A ?>", Character('>', '?')},
      {"<A b=\"1\"?>", Character('>', '?')},
      {"<?xml />", Character('?', '/')},
      {"<?xml >", Character('?', '>')},
      {"<?xml?>", Character('?', '>')},  // the question mark belongs to the name
      {"<?xml ? >", Character('>', ' ')},
      {"</A b=\"1\">", Character('>', 'b')},
      {"</A />", Character('>', '/')},
      // A comment within a tag
      {"<A <!-- c --> >", Character('=', 'c')},
      {"<A b=\"1\" <!-- c --> >", Character('=', 'c')},
      {"</A <!-- c --> >", Character('>', '<')},
      {"<A <!---->>", kEnd},  // a name without an end
      // NUL bytes
      {std::string("<A\0>", 4), kNul},
      {std::string("<A b\0=\"1\">", 10), kNul},
      {std::string("<A b=\"\0\">", 9), kNul},
      {std::string("</A\0>", 5), kNul},
      {std::string("\0<A>", 4), Character('<', '\0')},
  };
  for (const FaultCase& c : cases) {
    SCOPED_TRACE(Quoted(c.text));
    for (const std::size_t windowSize : {MemoryStream::kWhole, std::size_t{1}}) {
      ExpectFault(c.fault, [&] {
        XmlReader reader = ReaderOf(c.text, windowSize);
        reader.ReadTag();
        reader.ReadTag();
      });
    }
  }
}

TEST(ReadTagTest, TagCutAnywhereIsTheEndOfTheStream) {
  for (const std::string text :
       {"<Analysis a=\"1\" b = \"2\" >", "<Seed xsi:type=\"Randomize\" />", "</Analysis >",
        "<?xml version=\"1.0\" ?>", " <!-- comment --> <A>"}) {
    for (std::size_t length = 0; length < text.size(); ++length) {
      SCOPED_TRACE(text.substr(0, length));
      ExpectFault(kEnd, [&] { ReaderOf(text.substr(0, length)).ReadTag(); });
    }
    ReaderOf(text).ReadTag();
  }
}

TEST(CommentTest, IsSkippedBetweenTags) {
  for (const std::string text : {
           "<!-- one --><A>",
           " <!-- one -->\n\t<!--two--><!--\nof\nmany\nlines\n--> <A>",
           "<!----><A>",
           "<!-- <B> </B> < > & \" ' --><A>",
           "<!-- a - b -- c --- --><A>",
           "<!-- a ---><A>",
           "<!-- a ----><A>",
           "<!-----><A>",
           // The end is looked for after the four opening characters.
           "<!--> <B> --><A>",
           "<!---> <B> --><A>",
           "<!-- <!-- --><A>",
           "<!-- - -> -- > --><A>",
       }) {
    SCOPED_TRACE(text);
    for (const std::size_t windowSize : {MemoryStream::kWhole, std::size_t{1}, std::size_t{5}}) {
      EXPECT_EQ(ReaderOf(text, windowSize).ReadTag().name.View(), "A");
      ReaderOf(text, windowSize).ReadStartTag("A");
    }
  }
}

TEST(CommentTest, MayHoldNulBytes) {
  EXPECT_EQ(ReaderOf(std::string("<!-- \0 --><A>", 13)).ReadTag().name.View(), "A");
}

TEST(CommentTest, DoesNotEndInItself) {
  // Three dashes open and close nothing.
  EXPECT_EQ(ReaderOf("<!---><A>--><B>").ReadTag().name.View(), "B");
}

TEST(CommentTest, AngleBracketThatOpensNoneStartsTheNextTag) {
  EXPECT_EQ(ReaderOf("  <A>").ReadTag().name.View(), "A");
  EXPECT_EQ(ReaderOf("<!-A>").ReadTag().name.View(), "!-A");
  EXPECT_EQ(ReaderOf("<!-- c --><!A>").ReadTag().name.View(), "!A");
  ExpectFault(kEnd, [] { ReaderOf("<!-").ReadTag(); });
  EXPECT_EQ(ReaderOf("<a>").ReadTag().name.View(), "a");  // shorter than the opener
}

TEST(CommentTest, IsFoundAcrossBlocksOfAnySize) {
  for (std::size_t windowSize = 1; windowSize < 24; ++windowSize) {
    XmlReader reader = ReaderOf(" <!-- c1 --> <!- a=\"1\"> <!-- c2 --></X>", windowSize);
    EXPECT_EQ(reader.ReadTag().name.View(), "!-") << windowSize;
    EXPECT_EQ(reader.ReadTag().name.View(), "X") << windowSize;
  }
}

TEST(CommentTest, WithoutEndReachesTheEndOfTheStream) {
  for (const char* const text : {"<!--", "<!-->", "<!--->", "<!-- x", "<!-- x --", "<!-- -> <A>"}) {
    SCOPED_TRACE(text);
    ExpectFault(kEnd, [text] { ReaderOf(text).ReadTag(); });
    ExpectFault(kEnd, [text] { ReaderOf(text).ReadStartTag("A"); });
    ExpectFault(kEnd, [text] { ReaderOf(text).ReadEndTag("A"); });
  }
}

TEST(ReadStartTagTest, AcceptsTheNameWithWhitespaceBehindIt) {
  for (const char* const text :
       {"<Data>.", " \n<Data>.", "<Data  \t\r\n>.", "<!-- c --> <!-- d --><Data>."}) {
    XmlReader reader = ReaderOf(text);
    reader.ReadStartTag("Data");
    EXPECT_EQ(reader.ReadText().View(), ".") << text;
  }
}

TEST(ReadStartTagTest, RefusesEverythingElse) {
  const FaultCase cases[] = {
      {"Data>", Character('<', 'D')},
      // As many bytes as the name has are compared.
      {"<Dat>", Name("Data", "Dat>")},
      {"<D>..", Name("Data", "D>..")},
      {"<data>", Name("Data", "data")},
      {"< Data>", Name("Data", " Dat")},
      {"</Data>", Name("Data", "/Dat")},
      {"<?xml ?>", Name("Data", "?xml")},
      {"<!DOCTYPE>", Name("Data", "!DOC")},
      {"<Dota>", Name("Data", "Dota")},
      // What follows must be white space or '>'.
      {"<DataX>", Character('>', 'X')},
      {"<Data/>", Character('>', '/')},
      {"<Data />", Character('>', '/')},
      {"<Data a=\"1\">", Character('>', 'a')},
      {"<Data <!-- c --> >", Character('>', '<')},
      {std::string("<Data\0>", 7), Character('>', '\0')},
      // NUL bytes in the name
      {std::string("<Da\0a>", 6), kInvalidArgument},
      {std::string("<\0ata>", 6), kInvalidArgument},
      // The end of the file: within the name the bytes that were there are shown.
      {"", kEnd},
      {"  ", kEnd},
      {"<", Name("Data", "")},
      {"<D", Name("Data", "D")},
      {"<Dat", Name("Data", "Dat")},
      {"<Data", kEnd},
      {"<Data ", kEnd},
  };
  for (const FaultCase& c : cases) {
    SCOPED_TRACE(Quoted(c.text));
    for (const std::size_t windowSize : {MemoryStream::kWhole, std::size_t{1}}) {
      ExpectFault(c.fault, [&] { ReaderOf(c.text, windowSize).ReadStartTag("Data"); });
    }
  }
}

TEST(ReadEndTagTest, AcceptsTheNameWithWhitespaceBehindIt) {
  for (const char* const text :
       {"</Data>.", " \n</Data>.", "</Data  \t\r\n>.", "<!-- c --> <!-- d --></Data>."}) {
    XmlReader reader = ReaderOf(text);
    reader.ReadEndTag("Data");
    EXPECT_EQ(reader.ReadText().View(), ".") << text;
  }
}

TEST(ReadEndTagTest, RefusesEverythingElse) {
  const FaultCase cases[] = {
      {"Data>", Character('<', 'D')},
      {"<Data>", Character('/', 'D')},
      {"< /Data>", Character('/', ' ')},
      {"</Dat>", Name("Data", "Dat>")},
      {"</data>", Name("Data", "data")},
      {"</ Data>", Name("Data", " Dat")},
      {"</DataX>", Character('>', 'X')},
      {"</Data/>", Character('>', '/')},
      {"</Data a=\"1\">", Character('>', 'a')},
      {std::string("</D\0ta>", 7), kInvalidArgument},
      {"", kEnd},
      {"<", kEnd},
      {"</", Name("Data", "")},
      {"</Dat", Name("Data", "Dat")},
      {"</Data", kEnd},
      {"</Data\n", kEnd},
  };
  for (const FaultCase& c : cases) {
    SCOPED_TRACE(Quoted(c.text));
    for (const std::size_t windowSize : {MemoryStream::kWhole, std::size_t{1}}) {
      ExpectFault(c.fault, [&] { ReaderOf(c.text, windowSize).ReadEndTag("Data"); });
    }
  }
}

TEST(ReadTextTest, GivesEveryCharacterUpToTheNextTagAsItStands) {
  for (const std::string text : {"", " ", "plain", "  two words \r\n", "a &amp; b &#65;",
                                 "C:\\data\\in.csv", "a > b", "--> ]]> ' \" /", "\xC3\xA4\xFF"}) {
    XmlReader reader = ReaderOf(text + "<x");
    EXPECT_EQ(reader.ReadText().View(), text);
    EXPECT_EQ(reader.Source().ReadByte(), '<');
    EXPECT_EQ(ReaderOf(text).ReadText().View(), text) << "the end of the stream ends it too";
  }
}

TEST(ReadTextTest, DoesNotSkipComments) {
  XmlReader reader = ReaderOf("a<!-- c -->b<x");
  EXPECT_EQ(reader.ReadText().View(), "a");
  EXPECT_EQ(reader.Source().ReadByte(), '<');
  EXPECT_EQ(reader.Source().ReadByte(), '!');
}

TEST(ReadTextTest, LongTextIsReadWhole) {
  const std::string text(200'000, 'x');
  EXPECT_TRUE(ReaderOf(text + "<").ReadText().View() == text);
}

TEST(ReadTextTest, NulByteIsAnInvalidInputString) {
  for (const std::string& text : {std::string("\0", 1), std::string("a\0b<", 4)}) {
    ExpectFault(kNul, [&text] { ReaderOf(text).ReadText(); });
  }
}

TEST(AttributeTest, IsFoundByItsExactName) {
  const XmlTag tag = ReaderOf("<A b=\"1\" bc=\"2\">").ReadTag();
  EXPECT_EQ(tag.Attribute("b").View(), "1");
  EXPECT_EQ(tag.Attribute("bc").View(), "2");
  for (const char* const missing : {"", "B", "bcd", "A"}) {
    ExpectFault({Fault::Class::kArgument, "Attribute not found in XML tag"},
                [&] { tag.Attribute(missing); });
  }
}

TEST(AttributeTest, IsMissingInATagWithoutAny) {
  const XmlTag tag = ReaderOf("<Seed>").ReadTag();
  ExpectFault({Fault::Class::kArgument, "Attribute not found in XML tag"},
              [&] { tag.Attribute("xsi:type"); });
}

TEST(XmlTagTest, IsComparedByKindAndExactName) {
  const XmlTag start = ReaderOf("<Analysis>").ReadTag();
  EXPECT_TRUE(start.IsStart("Analysis"));
  EXPECT_FALSE(start.IsStart("analysis"));
  EXPECT_FALSE(start.IsStart("Analysi"));
  EXPECT_FALSE(start.IsStart("AnalysisX"));
  EXPECT_FALSE(start.IsEnd("Analysis"));
  const XmlTag end = ReaderOf("</Analysis>").ReadTag();
  EXPECT_TRUE(end.IsEnd("Analysis"));
  EXPECT_FALSE(end.IsStart("Analysis"));
  const XmlTag declaration = ReaderOf("<?Analysis ?>").ReadTag();
  EXPECT_FALSE(declaration.IsStart("Analysis"));
  EXPECT_FALSE(declaration.IsEnd("Analysis"));
}

TEST(TextElementTest, KeepsTheTextAsItStands) {
  EXPECT_EQ(ReaderOf("<F> a &amp; b\n</F>").ReadTextElement("F").View(), " a &amp; b\n");
  EXPECT_EQ(ReaderOf("\n <!-- c --><F ></F >").ReadTextElement("F").View(), "");
}

TEST(TextElementTest, RefusesWhatDoesNotFit) {
  const FaultCase cases[] = {
      {"<G>x</G>", Name("F", "G")},
      {"<F>x</G>", Name("F", "G")},
      {"<F>x<F>", Character('/', 'F')},
      {"<F/>", Character('>', '/')},
      {"<F>x", kEnd},
      {std::string("<F>\0</F>", 8), kNul},
  };
  for (const FaultCase& c : cases) {
    SCOPED_TRACE(Quoted(c.text));
    ExpectFault(c.fault, [&] { ReaderOf(c.text).ReadTextElement("F"); });
  }
}

TEST(NumberElementTest, ReadsIntegersAndReals) {
  EXPECT_EQ(ReaderOf("<N>12</N>").ReadIntegerElement("N"), 12);
  EXPECT_EQ(ReaderOf("<N> \r\n -7 \n</N>").ReadIntegerElement("N"), -7);
  EXPECT_EQ(ReaderOf("<N>4294967297</N>").ReadIntegerElement("N"), 1);
  EXPECT_EQ(ReaderOf("<N>5<!-- five --></N>").ReadIntegerElement("N"), 5);
  EXPECT_EQ(ReaderOf("<R>1e-3</R>").ReadRealElement("R"), 0.001);
  EXPECT_EQ(ReaderOf("<R>\n0x1p3\n</R>").ReadRealElement("R"), 8.0);
  EXPECT_EQ(ReaderOf("<R>1e</R>").ReadRealElement("R"), 1.0);
  EXPECT_EQ(ReaderOf("<R>5</R>").ReadRealElement("R"), 5.0);
}

TEST(NumberElementTest, RefusesWhatIsNoNumber) {
  const FaultCase cases[] = {
      {"<N>abc</N>", kIO},
      {"<N></N>", kIO},
      {"<N><!-- 5 -->5</N>", kIO},
      {"<N>-</N>", kIO},
      {"<N>12x</N>", Character('<', 'x')},
      {"<N>1 2</N>", Character('<', '2')},
      {"<N>", kEnd},
      {"<N> \n", kEnd},
      {"<N>-", kEnd},
      {"<N>12", kEnd},
      {"<M>12</M>", Name("N", "M")},
      {"<N>12</M>", Name("N", "M")},
  };
  for (const FaultCase& c : cases) {
    SCOPED_TRACE(c.text);
    ExpectFault(c.fault, [&] { ReaderOf(c.text).ReadIntegerElement("N"); });
    ExpectFault(c.fault, [&] { ReaderOf(c.text).ReadRealElement("N"); });
  }
  ExpectFault(kIO, [] { ReaderOf("<N>.5</N>").ReadIntegerElement("N"); });
  ExpectFault(Character('<', '.'), [] { ReaderOf("<N>1.5</N>").ReadIntegerElement("N"); });
  ExpectFault(kIO, [] { ReaderOf("<R>0x</R>").ReadRealElement("R"); });
  ExpectFault(Character('<', ','), [] { ReaderOf("<R>1,5</R>").ReadRealElement("R"); });
}

TEST(XmlReaderTest, DeclarationAndCommentsMayStandBeforeTheRoot) {
  XmlReader reader = ReaderOf(
      "<?xml version=\"1.0\"?>\n<!-- c -->\n<?more a=\"b\" ?>\n<Analysis xmlns:xsi=\"http://x\">");
  EXPECT_EQ(reader.ReadTag().kind, Kind::kDeclaration);
  EXPECT_EQ(reader.ReadTag().kind, Kind::kDeclaration);
  const XmlTag root = reader.ReadTag();
  EXPECT_TRUE(root.IsStart("Analysis"));
  EXPECT_EQ(root.Attribute("xmlns:xsi").View(), "http://x");
}

}  // namespace
