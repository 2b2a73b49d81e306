#include "foundation/random/random_generator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "foundation/exceptions/exceptions.h"
#include "foundation/io/platform/platform.h"
#include "support/files.h"
#include "support/memory_stream.h"
#include "support/raised.h"
#include "support/seeded_random.h"

namespace {

namespace E = Vell::Exceptions;
using Testing::ExpectRaises;
using Testing::MemoryStream;
using Vell::RandomGenerator;
using Vell::XmlReader;

/// The state is the process's; every test starts and leaves it as a new process has it.
class RandomGeneratorTest : public testing::Test {
 protected:
  RandomGeneratorTest() { RandomGenerator::Reset(); }
  ~RandomGeneratorTest() override { RandomGenerator::Reset(); }

  static void Read(const std::string& text) {
    XmlReader reader(Vell::MakeShared<MemoryStream>(text, MemoryStream::kWhole, "d.xml"));
    RandomGenerator::ReadXml(reader);
  }

  static std::vector<std::uint32_t> NextWords(int count) {
    std::vector<std::uint32_t> words;
    for (int i = 0; i < count; ++i) {
      words.push_back(RandomGenerator::NextWord());
    }
    return words;
  }

  static std::vector<std::uint32_t> WordsOf(std::uint32_t z, std::uint32_t w) {
    RandomGenerator::Seed(z, w);
    return NextWords(4);
  }

  /// How many words of the seed (12345, 67890) `call` uses.
  static int WordsUsedBy(const std::function<void()>& call) {
    RandomGenerator::Seed(12345, 67890);
    const std::vector<std::uint32_t> words = NextWords(20);
    RandomGenerator::Seed(12345, 67890);
    call();
    const std::uint32_t next = RandomGenerator::NextWord();
    for (int used = 0; used < 20; ++used) {
      if (words[static_cast<std::size_t>(used)] == next) {
        return used;
      }
    }
    return -1;
  }
};

std::string Vector(const std::string& first, const std::string& second) {
  return "<Seed xsi:type=\"Vector\"><Seed><Element>" + first + "</Element><Element>" + second +
         "</Element></Seed></Seed>";
}

TEST_F(RandomGeneratorTest, FirstWordOfANewProcess) {
  // z = 36969 * 1 + 0, w = 18000 * 1 + 0; (36969 << 16) xor 18000 = 2422800384 xor 18000
  EXPECT_EQ((36969u << 16) ^ 18000u, 2422818384u);
  EXPECT_EQ(RandomGenerator::NextWord(), 2422818384u);
}

TEST_F(RandomGeneratorTest, FirstUniformOfANewProcess) {
  EXPECT_EQ(RandomGenerator::Uniform(), 0.5641063638031483);
}

TEST_F(RandomGeneratorTest, SecondWordByHand) {
  // z = 36969: 36969 * 36969 + 0 = 1366706961, low half << 16; w: 18000 * 18000 = 324000000.
  RandomGenerator::NextWord();
  EXPECT_EQ(RandomGenerator::NextWord(), ((1366706961u % 65536) << 16) ^ (324000000u % 65536));
}

TEST_F(RandomGeneratorTest, LargestWordsWrapAround) {
  // 36969 * 65535 + 65535 = 2422818950 < 2^32: nothing is lost but the arithmetic is unsigned.
  RandomGenerator::Seed(0xFFFFFFFF, 0xFFFFFFFF);
  EXPECT_EQ(RandomGenerator::NextWord(), ((36970u * 65535u) << 16) ^ ((18001u * 65535u) & 0xFFFF));
}

double Real(const std::string& cell) { return std::strtod(cell.c_str(), nullptr); }
std::uint32_t Word(const std::string& cell) {
  return static_cast<std::uint32_t>(std::strtoul(cell.c_str(), nullptr, 10));
}

/// Draws every row of a reference file, seeding where a new pair of seeds begins, and hands the
/// row's last cell to `check`.
void ForReferenceDraws(const char* file, const std::function<void(const std::string&)>& check) {
  const auto rows = Testing::ReadCsv(Testing::ReferenceFile(file));
  ASSERT_GT(rows.size(), 20u);
  for (std::size_t i = 1; i < rows.size(); ++i) {
    const auto& row = rows[i];
    ASSERT_EQ(row.size(), 4u);
    if (row[2] == "1") {
      RandomGenerator::Reset();
      RandomGenerator::Seed(Word(row[0]), Word(row[1]));
    }
    SCOPED_TRACE("seeds " + row[0] + ", " + row[1] + ", draw " + row[2]);
    ASSERT_NO_FATAL_FAILURE(check(row[3]));
  }
}

TEST_F(RandomGeneratorTest, WordsEqualTheReference) {
  ForReferenceDraws("random_words.csv", [](const std::string& cell) {
    ASSERT_EQ(RandomGenerator::NextWord(), Word(cell));
  });
}

TEST_F(RandomGeneratorTest, UniformsEqualTheReference) {
  ForReferenceDraws("uniform_values.csv", [](const std::string& cell) {
    ASSERT_EQ(RandomGenerator::Uniform(), Real(cell));
  });
}

TEST_F(RandomGeneratorTest, NormalsEqualTheReference) {
  // Another logarithm may differ in its last bit.
  ForReferenceDraws("normal_deviates.csv", [](const std::string& cell) {
    const double expected = Real(cell);
    ASSERT_NEAR(RandomGenerator::Normal(), expected, 1e-15 * std::max(1.0, std::fabs(expected)));
  });
}

TEST_F(RandomGeneratorTest, SeedZeroIsOneForEachWordAlone) {
  const auto words = WordsOf(1, 1);
  EXPECT_EQ(WordsOf(0, 0), words);
  EXPECT_EQ(WordsOf(0, 7), WordsOf(1, 7));
  EXPECT_EQ(WordsOf(7, 0), WordsOf(7, 1));
  EXPECT_NE(WordsOf(2, 1), words);
  EXPECT_NE(WordsOf(1, 2), words);
}

TEST_F(RandomGeneratorTest, AcceptDrawsNothingForCertainAnswers) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double p : {0.0, -0.0, -1.0, -kInfinity, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_EQ(WordsUsedBy([p] { EXPECT_FALSE(RandomGenerator::Accept(p)) << p; }), 0) << p;
  }
  for (const double p : {1.0, std::nextafter(1.0, 2.0), 2.0, kInfinity}) {
    EXPECT_EQ(WordsUsedBy([p] { EXPECT_TRUE(RandomGenerator::Accept(p)) << p; }), 0) << p;
  }
}

TEST_F(RandomGeneratorTest, AcceptDrawsOneWordOtherwise) {
  for (const double p :
       {0.5, std::numeric_limits<double>::denorm_min(), std::nextafter(1.0, 0.0)}) {
    EXPECT_EQ(WordsUsedBy([p] { RandomGenerator::Accept(p); }), 1) << p;
  }
}

TEST_F(RandomGeneratorTest, AcceptsWhenPIsGreaterThanTheWord) {
  // The first word of a new process is 2422818384, times 2^-32.
  const double uniform = 2422818384.0 / 4294967296.0;
  EXPECT_FALSE(RandomGenerator::Accept(uniform)) << "not when they are equal";
  RandomGenerator::Reset();
  EXPECT_TRUE(RandomGenerator::Accept(std::nextafter(uniform, 1.0)));
  RandomGenerator::Reset();
  EXPECT_FALSE(RandomGenerator::Accept(std::nextafter(uniform, 0.0)));
}

TEST_F(RandomGeneratorTest, NormalsComeInPairsMadeFromTheSecondAndThenTheFirstWord) {
  // Worked from the words by the formula, over pairs that are rejected too.
  Testing::SeededRandom random(20240310);
  SCOPED_TRACE(random.Text());
  for (int i = 0; i < 200; ++i) {
    const auto z = static_cast<std::uint32_t>(random.Word());
    const auto w = static_cast<std::uint32_t>(random.Word());
    RandomGenerator::Seed(z, w);
    long double r1;
    long double r2;
    long double s;
    do {
      r1 = (RandomGenerator::NextWord() + 1.0L) / 4294967297.0L * 2 - 1;
      r2 = (RandomGenerator::NextWord() + 1.0L) / 4294967297.0L * 2 - 1;
      s = r1 * r1 + r2 * r2;
    } while (s >= 1 || s == 0);
    const std::uint32_t after = RandomGenerator::NextWord();
    const long double f = std::sqrt(-2 * std::log(s) / s);

    RandomGenerator::Seed(z, w);
    const double first = RandomGenerator::Normal();
    const double second = RandomGenerator::Normal();
    ASSERT_NEAR(first, static_cast<double>(f * r2), 1e-13) << z << ", " << w;
    ASSERT_NEAR(second, static_cast<double>(f * r1), 1e-13) << z << ", " << w;
    ASSERT_EQ(RandomGenerator::NextWord(), after) << "a pair serves two calls";
  }
}

TEST_F(RandomGeneratorTest, SecondNormalOfAPairDrawsNothing) {
  RandomGenerator::Normal();
  const int used = WordsUsedBy([] { RandomGenerator::Normal(); });
  EXPECT_EQ(used, 0);
}

TEST_F(RandomGeneratorTest, SeedingKeepsTheWaitingNormal) {
  RandomGenerator::Seed(12345, 67890);
  RandomGenerator::Normal();
  const double waiting = RandomGenerator::Normal();
  for (const auto& seed : {std::function<void()>([] { RandomGenerator::Seed(5, 6); }),
                           std::function<void()>([] { Read(Vector("5", "6")); }),
                           std::function<void()>([] { Read("<Seed xsi:type=\"Randomize\"/>"); })}) {
    RandomGenerator::Seed(12345, 67890);
    RandomGenerator::Normal();
    seed();
    EXPECT_EQ(RandomGenerator::Normal(), waiting);
  }
}

TEST_F(RandomGeneratorTest, VectorSeedsTheFirstWordAndTheSecond) {
  const auto expected = WordsOf(12345, 67890);
  Read(Vector("12345", "67890"));
  EXPECT_EQ(NextWords(4), expected);
}

TEST_F(RandomGeneratorTest, VectorOfZerosEqualsOnes) {
  const auto expected = WordsOf(1, 1);
  for (const char* const zero : {"0", "1", "00", "-0", "4294967296"}) {
    Read(Vector(zero, zero));
    EXPECT_EQ(NextWords(4), expected) << zero;
  }
}

TEST_F(RandomGeneratorTest, VectorElementsAreUnsigned) {
  const auto expected = WordsOf(4294967295, 2147483648);
  Read(Vector("4294967295", "2147483648"));
  EXPECT_EQ(NextWords(4), expected);
  Read(Vector("-1", " \n+2147483648 "));
  EXPECT_EQ(NextWords(4), expected);
  const auto two = WordsOf(2, 2);
  Read(Vector("2", "2"));
  EXPECT_EQ(NextWords(4), two);
}

TEST_F(RandomGeneratorTest, SpaceAndCommentsMayStandBetweenTheTagsOfAVector) {
  const auto expected = WordsOf(5, 6);
  Read(
      "\n <!-- a --> <Seed a=\"b\" xsi:type=\"Vector\" >\n<!-- b --><Seed >\n"
      "<Element> 5 </Element ><!-- c -->\n<Element>6</Element> </Seed>\n<!-- d --></Seed>");
  EXPECT_EQ(NextWords(4), expected);
}

TEST_F(RandomGeneratorTest, VectorIsReadToItsEndAndNoFurther) {
  XmlReader reader(Vell::MakeShared<MemoryStream>(Vector("5", "6") + "</Mcmc>"));
  RandomGenerator::ReadXml(reader);
  EXPECT_EQ(reader.Source().ReadByte(), '<');
  EXPECT_EQ(reader.Source().ReadByte(), '/');
  EXPECT_EQ(reader.Source().ReadByte(), 'M');
}

TEST_F(RandomGeneratorTest, RandomizeSeedsBothWordsFromTheClock) {
  const std::int64_t before = Vell::IO::Platform::CalendarSeconds();
  Read("<Seed xsi:type=\"Randomize\" />");
  const auto words = NextWords(4);
  const std::int64_t after = Vell::IO::Platform::CalendarSeconds();
  bool isFound = false;
  for (std::int64_t time = before; time <= after; ++time) {
    const auto word = static_cast<std::uint32_t>(time);
    isFound = isFound || WordsOf(word, word) == words;
  }
  EXPECT_TRUE(isFound) << "between " << before << " and " << after;
}

TEST_F(RandomGeneratorTest, SeedWithoutATypeLacksAnAttribute) {
  for (const char* const text :
       {"<Seed>", "<Seed />", "<Seed type=\"Vector\">", "<Seed XSI:TYPE=\"Randomize\"/>"}) {
    SCOPED_TRACE(text);
    ExpectRaises<E::InvalidArgumentException>("Attribute not found in XML tag",
                                              [text] { Read(text); });
  }
}

TEST_F(RandomGeneratorTest, AnyOtherNodeIsInvalidInput) {
  for (const char* const text : {
           "<Randomize />",
           "<seed xsi:type=\"Randomize\"/>",
           "<Seed/>",  // the slash belongs to the name
           "</Seed>",
           "<?Seed xsi:type=\"Randomize\"?>",
           "<Seed xsi:type=\"randomize\"/>",
           "<Seed xsi:type=\"Randomize \"/>",
           "<Seed xsi:type=\"\"/>",
           "<Seed xsi:type=\"Scalar\">",
           // Each form in the other one's clothes
           "<Seed xsi:type=\"Randomize\">",
           "<Seed xsi:type=\"Randomize\"></Seed>",
           "<Seed xsi:type=\"Vector\" />",
       }) {
    SCOPED_TRACE(text);
    ExpectRaises<E::InvalidInputException>("Invalid RandomGenerator XML input",
                                           [text] { Read(text); });
  }
}

TEST_F(RandomGeneratorTest, ElementThatIsNoNumberIsTheEndOfTheStream) {
  for (const char* const text : {"", "abc", "-", "<", "x1"}) {
    SCOPED_TRACE(text);
    ExpectRaises<E::EndOfStreamException>("Unexpected end of stream",
                                          [text] { Read(Vector(text, "1")); });
    ExpectRaises<E::EndOfStreamException>("Unexpected end of stream",
                                          [text] { Read(Vector("1", text)); });
  }
}

TEST_F(RandomGeneratorTest, StreamThatEndsTooEarlyIsTheEndOfTheStream) {
  for (const char* const text :
       {"", "<Seed xsi:type=\"Vector\">", "<Seed xsi:type=\"Vector\"><Seed>",
        "<Seed xsi:type=\"Vector\"><Seed><Element>", "<Seed xsi:type=\"Vector\"><Seed><Element>1",
        "<Seed xsi:type=\"Vector\"><Seed><Element>1</Element>"}) {
    SCOPED_TRACE(text);
    ExpectRaises<E::EndOfStreamException>("Unexpected end of stream", [text] { Read(text); });
  }
}

TEST_F(RandomGeneratorTest, WrongTagOfAVectorIsTheReadersMismatch) {
  const std::string start = "<Seed xsi:type=\"Vector\">";
  struct Case {
    std::string text;
    const char* expected;
    const char* current;
  };
  const Case names[] = {
      {"<Element>1</Element>", "Seed", "Elem"},
      {"</Seed>", "Seed", "/See"},
      {"<Seed><Seed>1</Seed>", "Element", "Seed>1<"},
      {"<Seed><Element>1</Seed></Seed>", "Element", "Seed></"},
      {"<Seed><Element>1</Element></Seed></Seed>", "Element", "/Seed><"},
      {"<Seed><Element>1</Element><Element>2</Element></Mcmc>", "Seed", "Mcmc"},
      {"<Seed><Element>1</Element><Element>2</Element></Seed></Mcmc>", "Seed", "Mcmc"},
  };
  for (const Case& c : names) {
    SCOPED_TRACE(c.text);
    ExpectRaises<E::MatchException<Vell::String>>(
        std::string("Invalid input in file \"d.xml\": expected \"") + c.expected +
            "\", current \"" + c.current + "\"",
        [&] { Read(start + c.text); });
  }
  const Case characters[] = {
      {"<Seed a=\"1\">", ">", "a"},
      {"<Seed><Element>1 2</Element>", "<", "2"},
      {"<Seed><Element>1.5</Element>", "<", "."},
      {"<Seed><Element>1<Element>", "/", "E"},
      {"<Seed><Element>1</Element><Element>2</Element><Element>3</Element>", "/", "E"},
      {"<Seed><Element>1</Element><Element>2</Element></Seed><Seed>", "/", "S"},
      {"5", "<", "5"},
  };
  for (const Case& c : characters) {
    SCOPED_TRACE(c.text);
    ExpectRaises<E::MatchException<char>>(
        std::string("Invalid input in file \"d.xml\": expected \"") + c.expected +
            "\", current \"" + c.current + "\"",
        [&] { Read(start + c.text); });
  }
}

}  // namespace
