// The table of elements beside the page that describes them and beside the reader.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "app/definition/definitions.h"
#include "app/definition/element_table.h"
#include "app/definition/root_element.h"
#include "support/files.h"
#include "support/outcome.h"
#include "support/streams.h"

namespace {

using Hovar::Element;
using Hovar::ElementEntry;
using Hovar::ElementType;
using Hovar::kElements;
using Hovar::RunKind;
using Hovar::ValueKind;
using Strings = std::vector<std::string>;

constexpr std::array<RunKind, 4> kKinds = {RunKind::kAnalysis, RunKind::kPrediction,
                                           RunKind::kValidation, RunKind::kBatch};

/// The rows of a kind of run in their order.
std::vector<const ElementEntry*> EntriesOf(RunKind kind) {
  std::vector<const ElementEntry*> entries;
  for (const ElementEntry& entry : kElements) {
    if (entry.kinds.Contains(kind)) {
      entries.push_back(&entry);
    }
  }
  return entries;
}

// The tables of docs/definitions.md.

using Row = Strings;  // cells
using Table = std::vector<Row>;

Strings Split(const std::string& text, char separator) {
  Strings parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) {
    parts.push_back(part);
  }
  return parts;
}

std::string Trimmed(const std::string& text) {
  const std::size_t start = text.find_first_not_of(' ');
  return start == std::string::npos ? ""
                                    : text.substr(start, text.find_last_not_of(' ') + 1 - start);
}

/// The tables of elements in a section of the page.
std::vector<Table> TablesOf(const std::string& section) {
  std::vector<Table> tables;
  bool isInSection = false;
  bool isInTable = false;
  for (const std::string& line : Split(Testing::ReadFile(HOVAR_DOCS "/definitions.md"), '\n')) {
    if (line.starts_with("## ")) {
      isInSection = line == "## " + section;
    } else if (isInSection && line.starts_with("| element ")) {
      isInTable = true;
      tables.emplace_back();
    } else if (isInTable && !line.starts_with("|")) {
      isInTable = false;
    } else if (isInTable && !line.starts_with("|---")) {
      Row cells;
      for (const std::string& cell : Split(line.substr(1), '|')) {
        cells.push_back(Trimmed(cell));
      }
      tables.back().push_back(cells);
    }
  }
  return tables;
}

/// "- - `Tolerance`" and "real" as "2 Tolerance real", within so many further groups.
std::string LineOf(const Row& row, std::size_t outer) {
  const std::string& element = row.at(0);
  const std::size_t name = element.find('`') + 1;
  const auto depth =
      static_cast<std::size_t>(std::count(element.begin(), element.end(), '-')) + outer;
  return std::to_string(depth) + ' ' + element.substr(name, element.find('`', name) - name) + ' ' +
         row.at(1);
}

/// The elements that the page gives for a kind of run, with those of the groups that it describes
/// once for all.
Strings DocumentedLines(RunKind kind) {
  const std::vector<Table> shared = TablesOf("Analysis");
  const std::map<std::string, Table> groups = {{"fit settings", shared.at(1)},
                                               {"sampling block", shared.at(2)}};
  Strings lines;
  const Table elements = TablesOf(std::string(NameOf(kind))).at(0);
  for (const Row& row : elements) {
    lines.push_back(LineOf(row, 0));
    if (const auto group = groups.find(row.at(1)); group != groups.end()) {
      const std::size_t depth = std::stoul(lines.back()) + 1;
      for (const Row& inner : group->second) {
        lines.push_back(LineOf(inner, depth));
      }
    }
  }
  return lines;
}

// The blocks of the manual page hovar-definition(5), where indentation shows which element stands in
// which.

/// The lines of the block in a section of the manual page.
Strings BlockOf(const std::string& heading) {
  Strings block;
  bool isInSection = false;
  bool isInBlock = false;
  for (const std::string& line :
       Split(Testing::ReadFile(HOVAR_DOCS "/man/hovar-definition.5.in"), '\n')) {
    if (line.starts_with(".S")) {
      isInSection = line == heading;
    } else if (line == ".EX" || line == ".EE") {
      isInBlock = isInSection && line == ".EX";
    } else if (isInBlock && line.find("...") == std::string::npos) {
      block.push_back(line);
    }
  }
  return block;
}

/// The elements of a kind of run as "1 Data".
Strings ManualLines(RunKind kind) {
  const std::map<std::string, Strings> groups = {
      {"\\fIfit settings\\fP", BlockOf(".SS Fit settings")},
      {"\\fIsampling\\fP", BlockOf(".SS Sampling")}};
  std::string heading(NameOf(kind));
  std::transform(heading.begin(), heading.end(), heading.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
  Strings lines;
  for (const std::string& line : BlockOf(".SH " + heading)) {
    const std::size_t depth = line.find_first_not_of(' ') / 2;
    const std::string element = Trimmed(line);
    lines.push_back(std::to_string(depth) + ' ' + element.substr(0, element.find(' ')));
    const std::string type = Trimmed(element.substr(std::min(element.find(' '), element.size())));
    if (const auto group = groups.find(type); group != groups.end()) {
      for (const std::string& inner : group->second) {
        lines.push_back(std::to_string(depth + 1) + ' ' + inner.substr(0, inner.find(' ')));
      }
    }
  }
  return lines;
}

std::string TypeInWords(ElementType type) {
  switch (type) {
    case ElementType::kGroup:
      return "group";
    case ElementType::kFitSettings:
      return "fit settings";
    case ElementType::kSampling:
      return "sampling block";
    case ElementType::kSeedSource:
      return "see [Seeds](#seeds)";
    case ElementType::kPath:
      return "path";
    case ElementType::kName:
      return "name";
    case ElementType::kFlag:
      return "flag";
    default:
      return ValueKindOf(type) == ValueKind::kReal ? "real" : "integer";
  }
}

TEST(ElementTableTest, ThePageOnDefinitionsHasTheSameElements) {
  for (const RunKind kind : kKinds) {
    Strings lines;
    for (const ElementEntry* entry : EntriesOf(kind)) {
      if (!entry->IsWithin(EntryOf(Element::kSeed))) {  // the page shows these in an example
        lines.push_back(std::to_string(entry->Depth()) + ' ' + std::string(entry->Name()) + ' ' +
                        TypeInWords(entry->type));
      }
    }
    EXPECT_EQ(lines, DocumentedLines(kind)) << NameOf(kind);
  }
}

TEST(ElementTableTest, TheManualPageHasTheSameElements) {
  for (const RunKind kind : kKinds) {
    Strings lines;
    for (const ElementEntry* entry : EntriesOf(kind)) {
      if (!entry->IsWithin(EntryOf(Element::kSeed))) {
        lines.push_back(std::to_string(entry->Depth()) + ' ' + std::string(entry->Name()));
      }
    }
    EXPECT_EQ(lines, ManualLines(kind)) << NameOf(kind);
  }
}

TEST(ElementTableTest, ThePageOnDefinitionsHasTheSameRoots) {
  const std::string page = Testing::ReadFile(HOVAR_DOCS "/definitions.md");
  for (const RunKind kind : kKinds) {
    EXPECT_NE(page.find("| `" + std::string(NameOf(kind)) + "` |"), std::string::npos);
  }
}

TEST(ElementTableTest, AnElementHasOnePathTypeAndRole) {
  for (const ElementEntry& entry : kElements) {
    const ElementEntry& first = EntryOf(entry.element);
    EXPECT_EQ(entry.path, first.path);
    EXPECT_EQ(entry.type, first.type) << entry.path;
    EXPECT_EQ(entry.role, first.role) << entry.path;
    EXPECT_EQ(entry.occurrence, first.occurrence) << entry.path;
    for (const ElementEntry& other : kElements) {
      EXPECT_EQ(entry.path == other.path, entry.element == other.element) << entry.path;
    }
  }
}

TEST(ElementTableTest, AnElementIsFoundByItsPathOnceInEachKindOfRun) {
  for (const RunKind kind : kKinds) {
    for (const ElementEntry* entry : EntriesOf(kind)) {
      EXPECT_EQ(Hovar::FindElement(kind, entry->path), entry);
    }
  }
  EXPECT_EQ(Hovar::FindElement(RunKind::kAnalysis, "Output/CStatistics"), nullptr);
  EXPECT_EQ(Hovar::FindElement(RunKind::kAnalysis, "Data"), nullptr);
}

/// What stands in a group, as far as its type says.
Strings ContentsOf(RunKind kind, const ElementEntry& group) {
  Strings contents;
  for (const ElementEntry* entry : EntriesOf(kind)) {
    if (entry->IsWithin(group)) {
      contents.emplace_back(entry->path.substr(group.path.size()));
      contents.emplace_back(TypeInWords(entry->type));
      contents.emplace_back(entry->annotation);
      contents.emplace_back(entry->example);
    }
  }
  return contents;
}

TEST(ElementTableTest, GroupsOfOneTypeHoldTheSame) {
  std::map<ElementType, Strings> known;
  int compared = 0;
  for (const RunKind kind : kKinds) {
    for (const ElementEntry* entry : EntriesOf(kind)) {
      if (ValueKindOf(entry->type) == ValueKind::kElements && entry->type != ElementType::kGroup) {
        const auto [place, isNew] = known.emplace(entry->type, ContentsOf(kind, *entry));
        EXPECT_EQ(place->second, ContentsOf(kind, *entry)) << entry->path;
        compared += isNew ? 0 : 1;
      }
    }
  }
  EXPECT_EQ(compared, 1 + 2 + 2 + 2);  // fit settings, sampling, seed, its words
}

// The reader.

using Change = std::function<std::string(const ElementEntry&, const std::string& text)>;

/// The content of a definition with the examples of the table. `change` is given each element that
/// holds a value, or the tag that begins a group, and returns what is written in its place.
std::string ExampleOf(RunKind kind, const Change& change) {
  std::string text;
  std::vector<const ElementEntry*> open;
  const auto endTo = [&](std::size_t depth) {
    for (; open.size() > depth; open.pop_back()) {
      text += "</" + std::string(open.back()->Name()) + ">\n";
    }
  };
  for (const ElementEntry* entry : EntriesOf(kind)) {
    endTo(entry->Depth());
    const std::string name(entry->Name());
    if (ValueKindOf(entry->type) == ValueKind::kElements) {
      const bool isSeed = entry->type == ElementType::kSeedSource;
      text += change(*entry, '<' + name + (isSeed ? " xsi:type=\"Vector\">" : ">"));
      open.push_back(entry);
      continue;
    }
    const std::string element = '<' + name + '>' + std::string(entry->example) + "</" + name + ">";
    for (int i = entry->occurrence == Hovar::Occurrence::kTwice ? 2 : 1; i > 0; --i) {
      text += change(*entry, element);
    }
  }
  endTo(0);
  return text;
}

/// The failure of the reader, or an empty text.
std::string FailureOf(RunKind kind, const std::string& text) {
  const Testing::InputStream stream(text);
  return Testing::Observe([&] {
           Vell::XmlReader reader(stream.Handle());
           switch (kind) {
             case RunKind::kAnalysis:
               Hovar::ReadAnalysisDefinition(reader);
               break;
             case RunKind::kPrediction:
               Hovar::ReadPredictionDefinition(reader);
               break;
             case RunKind::kValidation:
               Hovar::ReadValidationDefinition(reader);
               break;
             case RunKind::kBatch:
               Hovar::ReadBatchDefinition(reader);
               break;
           }
         })
      .Failure();
}

/// The failure with something else in place of an element.
std::string FailureWith(RunKind kind, const ElementEntry& changed,
                        const std::function<std::string(const std::string&)>& change) {
  return FailureOf(kind, ExampleOf(kind, [&](const ElementEntry& entry, const std::string& text) {
                     return &entry == &changed ? change(text) : text;
                   }));
}

TEST(ElementTableTest, TheReaderTakesTheExamples) {
  for (const RunKind kind : kKinds) {
    const std::string text =
        ExampleOf(kind, [](const ElementEntry&, const std::string& element) { return element; });
    EXPECT_EQ(FailureOf(kind, text), "") << text;
  }
}

TEST(ElementTableTest, TheReaderMissesEveryElementAndTakesNoFurtherOne) {
  for (const RunKind kind : kKinds) {
    for (const ElementEntry* entry : EntriesOf(kind)) {
      SCOPED_TRACE(entry->path);
      const auto nothing = [](const std::string&) { return std::string(); };
      const auto twice = [](const std::string& text) { return text + text; };
      const auto further = [](const std::string& text) { return "<Title>x</Title>" + text; };
      EXPECT_NE(FailureWith(kind, *entry, further), "");
      if (entry->occurrence != Hovar::Occurrence::kAnyNumber) {
        EXPECT_NE(FailureWith(kind, *entry, nothing), "");
        EXPECT_NE(FailureWith(kind, *entry, twice), "");
      }
    }
  }
}

TEST(ElementTableTest, TheReaderReadsEveryElementAsItsType) {
  for (const RunKind kind : kKinds) {
    for (const ElementEntry* entry : EntriesOf(kind)) {
      const ValueKind value = ValueKindOf(entry->type);
      if (value == ValueKind::kElements) {
        continue;
      }
      SCOPED_TRACE(entry->path);
      const auto takes = [&](const char* text) {
        const std::string name(entry->Name());
        return FailureWith(kind, *entry, [&](const std::string&) {
                 return '<' + name + '>' + text + "</" + name + '>';
               }) == "";
      };
      EXPECT_EQ(takes("some text"), value == ValueKind::kText);
      EXPECT_EQ(takes("1.5"), value == ValueKind::kText || value == ValueKind::kReal);
      EXPECT_EQ(takes("12"), value != ValueKind::kFlag);
      EXPECT_EQ(takes("true"), value == ValueKind::kText || value == ValueKind::kFlag);
    }
  }
}

}  // namespace
