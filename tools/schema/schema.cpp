#include "schema.h"

#include <array>
#include <initializer_list>
#include <string_view>

#include "app/definition/element_table.h"
#include "schema_text.h"

namespace Hovar {
namespace {

struct Facet {
  std::string_view name;
  std::string_view value;
};

/// The values that a type takes, in the terms of the schema language. Where the program takes more
/// than makes sense, such as a negative count, the schema takes what makes sense.
struct ValueType {
  ElementType type;
  std::string_view name;
  std::string_view annotation;
  std::string_view base;
  std::array<Facet, 2> facets;
};

constexpr Facet kNotEmptyNorSpaced = {"xs:pattern", R"(\S(.*\S)?)"};

constexpr std::array<ValueType, 7> kValueTypes = {{
    {ElementType::kPath,
     "Path",
     "A path, taken exactly as it stands between the tags; both / and \\ separate folders on every "
     "system. When it is not absolute it is relative to the folder that hovar is started in, never "
     "to the folder of this file. Entities are not decoded.",
     "xs:string",
     {kNotEmptyNorSpaced}},
    {ElementType::kName,
     "Name",
     "The name of a file or folder within the output folder, taken exactly as it stands between "
     "the tags. Folders in it must exist.",
     "xs:string",
     {kNotEmptyNorSpaced}},
    {ElementType::kFlag,
     "Flag",
     "Exactly true or false.",
     "xs:string",
     {{{"xs:enumeration", "true"}, {"xs:enumeration", "false"}}}},
    {ElementType::kCount,
     "Count",
     "A whole number from 0 to 2147483647.",
     "xs:int",
     {{{"xs:minInclusive", "0"}}}},
    {ElementType::kPositiveCount,
     "PositiveCount",
     "A whole number from 1 to 2147483647.",
     "xs:int",
     {{{"xs:minInclusive", "1"}}}},
    {ElementType::kSmallTolerance,
     "SmallTolerance",
     "A number above 0 and below 1, without a unit.",
     "xs:double",
     {{{"xs:minExclusive", "0"}, {"xs:maxExclusive", "1"}}}},
    {ElementType::kPrecision,
     "Precision",
     "A finite number, 0 or more.",
     "xs:double",
     {{{"xs:minInclusive", "0"}, {"xs:maxExclusive", "INF"}}}},
}};

std::string Attribute(std::string_view name, std::string_view value) {
  return std::string(name) + "=\"" + std::string(value) + '"';
}

/// The name that a type has in the schema; a group has none.
std::string_view NameOf(ElementType type) {
  switch (type) {
    case ElementType::kGroup:
      return {};
    case ElementType::kFitSettings:
      return "FitSettings";
    case ElementType::kSampling:
      return "Sampling";
    case ElementType::kSeedSource:
      return "SeedSource";
    case ElementType::kSeedWords:
      return "SeedWords";
    case ElementType::kSeedWord:
      return "xs:unsignedInt";
    default:
      break;
  }
  for (const ValueType& value : kValueTypes) {
    if (value.type == type) {
      return value.name;
    }
  }
  return {};
}

class Writer {
 public:
  std::string Schema();

 private:
  void WriteHead();
  void WriteValueType(const ValueType& type);
  void WriteSeeds();
  void WriteSeedForm(const SeedForm& form, const ElementEntry* words);
  void WriteGroupType(ElementType type);
  void WriteRoot(const RootEntry& root);
  void WriteElement(RunKind kind, const ElementEntry& entry);
  void WriteListedElement(const ElementEntry& entry);
  /// The elements directly within another one, or within the root.
  void WriteSequence(RunKind kind, const ElementEntry* outer);

  SchemaText text_;
};

void Writer::WriteHead() {
  text_.Line(R"(<?xml version="1.0" encoding="utf-8"?>)");
  for (const std::string_view line : {
           "<!-- The definition files of hovar, for editors that complete and explain, and for "
           "validators. The",
           "     program does not read this file. Its own rules are in docs/definitions.md; it "
           "also "
           "takes some",
           "     files that this schema refuses, such as one with an empty name, and refuses some "
           "that it takes:",
           "     a byte order mark, single quotes round attributes, a Randomize seed with an end "
           "tag of its own.",
           "     The check of the launcher follows the program in all of that: docs/checking.md.",
           "     hovar_schema writes this file; see CONTRIBUTING.md. -->",
       }) {
    text_.Line(line);
  }
}

void Writer::WriteValueType(const ValueType& type) {
  text_.Line("");
  text_.Begin("xs:simpleType", Attribute("name", type.name));
  text_.Annotate(type.annotation);
  text_.Begin("xs:restriction", Attribute("base", type.base));
  for (const Facet& facet : type.facets) {
    if (!facet.name.empty()) {
      text_.Empty(facet.name, Attribute("value", facet.value));
    }
  }
  text_.End("xs:restriction");
  text_.End("xs:simpleType");
}

void Writer::WriteSeedForm(const SeedForm& form, const ElementEntry* words) {
  text_.Line("");
  text_.Begin("xs:complexType", Attribute("name", form.type));
  text_.Annotate(form.annotation);
  text_.Begin("xs:complexContent");
  const std::string base = Attribute("base", NameOf(ElementType::kSeedSource));
  if (words == nullptr) {
    text_.Empty("xs:extension", base);
  } else {
    text_.Begin("xs:extension", base);
    WriteSequence(RunKind::kAnalysis, words);
    text_.End("xs:extension");
  }
  text_.End("xs:complexContent");
  text_.End("xs:complexType");
}

void Writer::WriteSeeds() {
  text_.Section("Seeds: the attribute xsi:type says what a Seed element contains.");
  text_.Line("");
  text_.Begin("xs:complexType",
              Attribute("name", NameOf(ElementType::kSeedSource)) + R"( abstract="true")");
  text_.Annotate(
      "Where the random numbers start: choose Vector or Randomize with the attribute xsi:type.");
  text_.End("xs:complexType");
  WriteSeedForm(kFixedSeed, &EntryOf(Element::kSeed));
  WriteSeedForm(kClockSeed, nullptr);
  WriteGroupType(ElementType::kSeedWords);
}

void Writer::WriteGroupType(ElementType type) {
  for (const ElementEntry& entry : kElements) {
    if (entry.type == type) {  // all of this type hold the same
      text_.Line("");
      text_.Begin("xs:complexType", Attribute("name", NameOf(type)));
      WriteSequence(RunKind::kAnalysis, &entry);
      text_.End("xs:complexType");
      return;
    }
  }
}

void Writer::WriteSequence(RunKind kind, const ElementEntry* outer) {
  text_.Begin("xs:sequence");
  for (const ElementEntry& entry : kElements) {
    const bool isDirectlyWithin =
        outer == nullptr ? entry.Depth() == 0
                         : entry.IsWithin(*outer) && entry.Depth() == outer->Depth() + 1;
    if (entry.kinds.Contains(kind) && isDirectlyWithin) {
      WriteElement(kind, entry);
    }
  }
  text_.End("xs:sequence");
}

void Writer::WriteElement(RunKind kind, const ElementEntry& entry) {
  if (entry.occurrence == Occurrence::kAnyNumber) {
    WriteListedElement(entry);
    return;
  }
  std::string attributes = Attribute("name", entry.Name());
  if (entry.type != ElementType::kGroup) {
    attributes += ' ' + Attribute("type", NameOf(entry.type));
  }
  if (entry.occurrence == Occurrence::kTwice) {
    attributes += R"( minOccurs="2" maxOccurs="2")";
  }
  text_.Begin("xs:element", attributes);
  text_.Annotate(entry.annotation);
  if (entry.type == ElementType::kGroup) {
    text_.Begin("xs:complexType");
    WriteSequence(kind, &entry);
    text_.End("xs:complexType");
  }
  text_.End("xs:element");
}

/// An element of a list, which may have attributes.
void Writer::WriteListedElement(const ElementEntry& entry) {
  text_.Begin("xs:element",
              Attribute("name", entry.Name()) + R"( minOccurs="0" maxOccurs="unbounded")");
  text_.Annotate(entry.annotation);
  text_.Begin("xs:complexType");
  text_.Begin("xs:simpleContent");
  text_.Begin("xs:extension", Attribute("base", NameOf(entry.type)));
  text_.Empty("xs:anyAttribute", Attribute("processContents", "skip"));
  text_.End("xs:extension");
  text_.End("xs:simpleContent");
  text_.End("xs:complexType");
  text_.End("xs:element");
}

void Writer::WriteRoot(const RootEntry& root) {
  text_.Line("");
  text_.Begin("xs:element", Attribute("name", root.name));
  text_.Annotate(root.annotation);
  text_.Begin("xs:complexType");
  WriteSequence(root.kind, nullptr);
  text_.Empty("xs:anyAttribute", Attribute("processContents", "skip"));
  text_.End("xs:complexType");
  text_.End("xs:element");
}

std::string Writer::Schema() {
  WriteHead();
  text_.Begin("xs:schema", Attribute("xmlns:xs", "http://www.w3.org/2001/XMLSchema"));
  text_.Section("Values");
  for (const ValueType& type : kValueTypes) {
    WriteValueType(type);
  }
  WriteSeeds();
  text_.Section("Groups that several definitions share");
  WriteGroupType(ElementType::kFitSettings);
  WriteGroupType(ElementType::kSampling);
  text_.Section("The four kinds of definition");
  for (const RootEntry& root : kRoots) {
    WriteRoot(root);
  }
  text_.Line("");
  text_.End("xs:schema");
  return text_.Text();
}

}  // namespace

std::string DefinitionSchema() { return Writer().Schema(); }

}  // namespace Hovar
