// The files of the quick start, damaged and read by the reader of that kind of file, in process.
// The end that each must have was found from the rules of the formats by tests/reference/damage.py.

#include <gtest/gtest.h>

#include <map>

#include "app/definition/definitions.h"
#include "data/data_file_reader.h"
#include "faults/damage_tables.h"
#include "faults/sample.h"
#include "foundation/exceptions/exceptions.h"
#include "foundation/xml/xml_reader.h"
#include "support/memory_stream.h"
#include "support/outcome.h"

namespace Testing {
namespace {

constexpr std::size_t kSampledCases = 600;
constexpr std::int32_t kIndicators = 2;

/// Reads a definition as it is dispatched, without building a runner.
void ReadDefinition(MemoryStream& stream) {
  Vell::SharedCount keepsItself;
  ++keepsItself.count;
  Vell::XmlReader reader(Vell::SharedHandle<Vell::IO::Stream>(keepsItself, stream));
  Vell::XmlTag root = reader.ReadTag();
  while (root.kind == Vell::XmlTag::Kind::kDeclaration) {
    root = reader.ReadTag();
  }
  if (root.name.View() == "Analysis") {
    Hovar::ReadAnalysisDefinition(reader);
  } else if (root.name.View() == "Prediction") {
    Hovar::ReadPredictionDefinition(reader);
  } else if (root.name.View() == "Validation") {
    Hovar::ReadValidationDefinition(reader);
  } else if (root.name.View() == "Batch") {
    Hovar::ReadBatchDefinition(reader);
  } else {
    throw Vell::Exceptions::Exception(Messages::Pattern("Invalid definition file"));
  }
  reader.ReadEndTag(root.name);
}

Outcome ReadDamaged(const std::string& file, const std::string& content, std::size_t windowSize) {
  return Observe([&] {
    MemoryStream stream(content, windowSize, "d.xml");
    if (file == "data.csv") {
      Hovar::DataSet dataSet;
      Hovar::ReadDataFile(dataSet, stream, kIndicators);
    } else {
      ReadDefinition(stream);
    }
  });
}

TEST(DamagedQuickstartTest, EachFileIsReadOrRejectedAsTheRulesSay) {
  const std::vector<DamageCase> cases = ReadQuickstartDamage();
  std::map<std::string, std::string> originals;
  Sample sample(kSampledCases, cases.size());
  int different = 0;
  std::size_t index = 0;
  for (const DamageCase& damage : cases) {
    // Streams read ahead in blocks of different sizes: a whole file, and blocks that cut lines.
    const std::size_t windowSize = ++index % 3 == 0 ? 1000 : MemoryStream::kWhole;
    if (!sample.Takes()) {
      continue;
    }
    std::string& original = originals[damage.file];
    if (original.empty()) {
      original = ReadFile(std::string(HOVAR_EXAMPLES_FOLDER "/quickstart/") + damage.file);
    }
    const std::string content = Damaged(original, damage.change, damage.offset);
    const Outcome outcome = ReadDamaged(damage.file, content, windowSize);
    const std::string prefix = "Error: ";
    const DamageEnd end(damage.end, "d.xml", content);
    const bool isRight =
        outcome.error.empty()
            ? end.IsValid() && outcome.raised.empty()
            : outcome.error.starts_with(prefix) && !outcome.raised.empty() &&
                  end.MayEndWith(
                      std::string_view(outcome.error)
                          .substr(prefix.size(), outcome.error.size() - prefix.size() - 1));
    if (!isRight && ++different < 20) {
      ADD_FAILURE() << damage.file << ", " << damage.change << " at " << damage.offset
                    << ": expected <" << damage.end << ">, got <" << outcome.error << "> "
                    << outcome.raised;
    }
  }
  EXPECT_EQ(different, 0);
  std::cout << sample.Text() << "\n";
}

}  // namespace
}  // namespace Testing
