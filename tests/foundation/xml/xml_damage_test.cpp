// A whole definition, read the way definitions are read, and what becomes of it when it is cut,
// changed, or read from a stream that fails.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "foundation/exceptions/exceptions.h"
#include "foundation/random/random_generator.h"
#include "foundation/xml/xml_reader.h"
#include "support/allocation_fault.h"
#include "support/memory_stream.h"
#include "support/raised.h"

namespace {

namespace E = Vell::Exceptions;
using Testing::ExpectRaises;
using Testing::MemoryStream;
using Vell::RandomGenerator;
using Vell::XmlReader;

const std::string kDefinition = R"(<?xml version="1.0" encoding="utf-8"?>
<!-- a short
     definition -->
<Analysis xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" >
  <Data>in\data.csv</Data>
  <Indicators> 2 </Indicators><!-- of presence -->
  <Tolerance>1e-8</Tolerance>
  <Mcmc>
    <Seed xsi:type="Vector"><Seed>
      <Element>12345</Element><Element>67890</Element>
    </Seed></Seed>
  </Mcmc>
</Analysis>)";

/// Reads a definition of the form above to its end.
void ReadDefinition(MemoryStream& stream) {
  Vell::SharedCount keepsItself;
  ++keepsItself.count;
  XmlReader reader(Vell::SharedHandle<Vell::IO::Stream>(keepsItself, stream));
  while (reader.ReadTag().kind == Vell::XmlTag::Kind::kDeclaration) {
  }
  reader.ReadTextElement("Data");
  reader.ReadIntegerElement("Indicators");
  reader.ReadRealElement("Tolerance");
  reader.ReadStartTag("Mcmc");
  RandomGenerator::ReadXml(reader);
  reader.ReadEndTag("Mcmc");
  reader.ReadEndTag("Analysis");
}

class XmlDamageTest : public testing::Test {
 protected:
  ~XmlDamageTest() override { RandomGenerator::Reset(); }
};

/// A place where a name is matched: cut there, the definition shows what is left of the name.
struct MatchedName {
  std::size_t begin;
  std::size_t end;
  std::string expected;
};

/// The names that are matched, not read as they come; the root's start tag and the outer Seed's are
/// read. The opener of a comment that is cut short passes for a tag, so it is matched with the name
/// of the tag after the comment.
std::vector<MatchedName> MatchedNames() {
  std::vector<MatchedName> names;
  for (std::size_t at = kDefinition.find("<Data>"); at != std::string::npos;
       at = kDefinition.find('<', at + 1)) {
    if (kDefinition.compare(at, 4, "<!--") == 0) {
      names.push_back({at + 1, at + 4, "Tolerance"});
    } else if (kDefinition.compare(at, 6, "<Seed ") != 0) {
      const std::size_t begin = at + (kDefinition[at + 1] == '/' ? 2 : 1);
      const std::size_t end = kDefinition.find('>', begin);
      names.push_back({begin, end, kDefinition.substr(begin, end - begin)});
    }
  }
  return names;
}

TEST_F(XmlDamageTest, WholeDefinitionIsRead) {
  MemoryStream stream(kDefinition);
  ReadDefinition(stream);
  EXPECT_EQ(stream.Tell(), stream.Length());
}

TEST_F(XmlDamageTest, CutWithinAMatchedNameShowsWhatIsLeftOfItAndElsewhereIsTheEnd) {
  const auto names = MatchedNames();
  ASSERT_EQ(names.size(), 17u);  // 17 tags after the root, less the outer Seed, and a comment
  for (std::size_t length = 0; length < kDefinition.size(); ++length) {
    SCOPED_TRACE(kDefinition.substr(0, length));
    MemoryStream stream(kDefinition.substr(0, length), 7);
    const auto name = std::find_if(names.begin(), names.end(), [length](const MatchedName& n) {
      return length >= n.begin && length < n.end;
    });
    if (name == names.end()) {
      ExpectRaises<E::EndOfStreamException>("Unexpected end of stream",
                                            [&stream] { ReadDefinition(stream); });
    } else {
      ExpectRaises<E::MatchException<Vell::String>>(
          "Invalid input in file \"\": expected \"" + name->expected + "\", current \"" +
              kDefinition.substr(name->begin, length - name->begin) + "\"",
          [&stream] { ReadDefinition(stream); });
    }
  }
}

/// Reads a damaged definition, which may be in order all the same. Anything but the documented
/// classes fails the test, as does a line too many or too few.
void ExpectDocumentedOutcome(const std::string& definition) {
  Testing::OutputCapture capture;
  std::string text;
  try {
    MemoryStream stream(definition, 64);
    ReadDefinition(stream);
  } catch (const E::MatchException<char>&) {
    text = "Invalid input in file \"\": expected \"";
  } catch (const E::MatchException<Vell::String>&) {
    text = "Invalid input in file \"\": expected \"";
  } catch (const E::EndOfStreamException&) {
    text = "Unexpected end of stream\n";
  } catch (const E::InvalidInputException&) {
    text = "Invalid ";  // input string, or RandomGenerator XML input
  } catch (const E::InvalidArgumentException&) {
    text = "A";  // "Attribute not found ...", or one of the two below
  } catch (const E::IOException&) {
    text = "IO Exception\n";
  }
  const std::string line = capture.TakeError();
  if (text == "A") {
    EXPECT_TRUE(line == "Error: Attribute not found in XML tag\n" ||
                line == "Error: Duplicate attributes not allowed in XML tag\n" ||
                line == "Error: Invalid argument\n")
        << line;
  } else if (text.empty()) {
    EXPECT_EQ(line, "");
  } else {
    EXPECT_TRUE(line.starts_with("Error: " + text) && line.ends_with('\n')) << line;
  }
}

TEST_F(XmlDamageTest, EveryChangedByteEndsInADocumentedWay) {
  for (std::size_t at = 0; at < kDefinition.size(); ++at) {
    for (const char c : {'<', '>', '/', '?', '!', '-', '"', '=', ' ', '9', 'x', '\0'}) {
      std::string definition = kDefinition;
      definition[at] = c;
      SCOPED_TRACE(definition);
      ExpectDocumentedOutcome(definition);
    }
  }
}

TEST_F(XmlDamageTest, EveryMissingAndDoubledByteEndsInADocumentedWay) {
  for (std::size_t at = 0; at < kDefinition.size(); ++at) {
    std::string definition = kDefinition;
    definition.erase(at, 1);
    SCOPED_TRACE(definition);
    ExpectDocumentedOutcome(definition);
    definition = kDefinition;
    definition.insert(at, 1, kDefinition[at]);
    SCOPED_TRACE(definition);
    ExpectDocumentedOutcome(definition);
  }
}

TEST_F(XmlDamageTest, StreamThatFailsAtAnyByteRaisesItsOwnError) {
  for (std::size_t at = 0; at < kDefinition.size(); ++at) {
    SCOPED_TRACE(at);
    MemoryStream stream(kDefinition, 1);
    stream.FailReadAt(at);
    ExpectRaises<E::IOException>("IO Exception", [&stream] { ReadDefinition(stream); });
    EXPECT_TRUE(stream.HasFailed());
  }
}

TEST_F(XmlDamageTest, FailingAllocationIsOutOfMemory) {
  Testing::ExpectOutOfMemoryAtEachAllocation([] {
    MemoryStream stream(kDefinition);
    ReadDefinition(stream);
  });
}

}  // namespace
