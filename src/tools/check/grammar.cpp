#include "tools/check/grammar.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "app/definition/element_table.h"
#include "foundation/string.h"
#include "messages/error_texts.h"
#include "tools/check/definition_messages.h"
#include "tools/check/findings.h"
#include "tools/support/error_capture.h"
#include "tools/support/message.h"
#include "tools/support/text.h"
#include "tools/support/text_places.h"

namespace Hovar {
namespace {

constexpr std::int64_t kContext = 4096;  // bytes after the stop that are examined

/// True for the name of an element that holds such a value.
bool Holds(std::string_view name, ValueKind kind) {
  return std::any_of(kElements.begin(), kElements.end(), [=](const ElementEntry& entry) {
    return entry.Name() == name && ValueKindOf(entry.type) == kind;
  });
}

bool IsBlank(char c) noexcept { return Vell::kWhitespace.find(c) != std::string_view::npos; }

std::string Tag(std::string_view name) { return '<' + std::string(name) + '>'; }
std::string EndTag(std::string_view name) { return "</" + std::string(name) + '>'; }

/// Of a byte of Surroundings, which begin where the file does.
std::int64_t Offset(std::size_t index) { return static_cast<std::int64_t>(index); }

/// The bytes up to the place where the reader stopped, and some after it.
class Surroundings {
 public:
  Surroundings(const TextSource& text, std::int64_t stop)
      : bytes_(BytesAt(text, 0, static_cast<std::size_t>(stop + kContext))),
        stop_(std::min(static_cast<std::size_t>(stop), bytes_.size())) {}

  std::string_view All() const { return bytes_; }
  std::string_view Before(std::size_t index) const {
    return std::string_view(bytes_).substr(0, index);
  }
  std::size_t Stop() const { return stop_; }
  bool IsAtEnd() const { return stop_ == bytes_.size(); }

  /// The last '<' before an index, after which a tag was read.
  std::size_t TagStart(std::size_t index) const {
    return std::min(Before(index).rfind('<'), index);
  }
  /// The byte after the last '>' before an index, or the first byte.
  std::size_t BehindTag(std::size_t index) const { return Before(index).rfind('>') + 1; }

  /// The text at an index, up to white space or the end of a tag.
  std::string_view NameAt(std::size_t index) const {
    return All().substr(index, All().find_first_of(" \t\r\n>", index) - index);
  }
  /// The name in the tag that ends before an index: "Data", "/Data", "?xml", or nothing.
  std::string_view LastTagName(std::size_t index) const {
    const std::size_t end = BehindTag(index);
    return end == 0 ? std::string_view() : NameAt(TagStart(end) + 1);
  }

 private:
  std::string bytes_;
  std::size_t stop_;
};

std::string NotANumber(std::string_view element, std::string_view value) {
  const std::string shown = Quoted(Trimmed(value));
  return Holds(element, ValueKind::kReal)
             ? Filled(kGrammarMessages.notANumber, shown, Tag(element))
             : Filled(kGrammarMessages.notAWholeNumber, shown, Tag(element));
}

/// What is wrong with a value that a number was read from, up to `index`.
GrammarError WrongNumber(const Surroundings& around, std::size_t index) {
  const std::size_t start = around.BehindTag(index);
  const std::size_t end = std::min(around.All().find('<', start), around.All().size());
  const std::size_t value = std::min(around.All().find_first_not_of(Vell::kWhitespace, start), end);
  return {Offset(value),
          NotANumber(around.LastTagName(start), around.All().substr(start, end - start))};
}

GrammarError WrongName(const Surroundings& around, const Mismatch& mismatch) {
  const std::size_t name = around.Stop() - std::min(around.Stop(), mismatch.current.size());
  const bool isEnd = around.Before(name).ends_with('/');
  const std::size_t tag = around.TagStart(name);
  const std::string_view found = around.NameAt(tag + 1);
  const std::string due = isEnd ? EndTag(mismatch.expected) : Tag(mismatch.expected);
  const std::string stands = Quoted(Tag(found));
  if (found.empty()) {
    return {Offset(tag), Filled(kGrammarMessages.dueBeforeEnd, due)};
  }
  if (LowerCase(found) == LowerCase(due.substr(1, due.size() - 2))) {
    return {Offset(tag), Filled(kGrammarMessages.dueLetterByLetter, due, stands)};
  }
  return {Offset(tag), isEnd ? Filled(kGrammarMessages.dueCloseFirst, due, stands)
                             : Filled(kGrammarMessages.dueInOrder, due, stands)};
}

GrammarError WrongDeclarationEnd(const Surroundings& around) {
  if (around.Before(around.Stop()).ends_with("?>")) {  // the name took the question mark
    return {Offset(around.Stop() - 2), Filled(kGrammarMessages.declarationBlank)};
  }
  return {Offset(around.Stop() - 1), Filled(kGrammarMessages.declarationEnd)};
}

/// A tag that was read up to here does not end here.
GrammarError WrongTagEnd(const Surroundings& around, char current) {
  const std::size_t wrong = around.Stop() - 1;
  const std::size_t tag = around.TagStart(wrong);
  const std::string_view found = around.NameAt(tag + 1);
  const std::string name(around.All().substr(tag + 1, wrong - tag - 1));
  if (name.ends_with('?')) {
    return WrongDeclarationEnd(around);
  }
  if (current == '/' || name.ends_with('/')) {
    return {Offset(tag), Filled(kGrammarMessages.emptyElement, Quoted(Tag(found)))};
  }
  if (!IsBlank(around.All()[wrong - 1])) {
    return {Offset(tag), Filled(kGrammarMessages.dueInOrder, Tag(name), Quoted(Tag(found)))};
  }
  return {Offset(wrong), Filled(kGrammarMessages.tagGoesOn, Tag(Trimmed(name)))};
}

GrammarError WrongText(const Surroundings& around) {
  const std::size_t wrong = around.Stop() - 1;
  if (Offset(wrong) == 0 && around.All().starts_with(kByteOrderMark)) {
    return {0, Filled(kGrammarMessages.byteOrderMark)};
  }
  const std::string_view last = around.LastTagName(wrong);
  if (last.empty()) {
    return {Offset(wrong), Filled(kGrammarMessages.notXml)};
  }
  if (Holds(last, ValueKind::kWholeNumber) || Holds(last, ValueKind::kReal)) {
    return WrongNumber(around, wrong);
  }
  return {Offset(wrong), Filled(kGrammarMessages.textBetweenTags)};
}

GrammarError WrongByte(const Surroundings& around, const Mismatch& mismatch) {
  const std::size_t wrong = around.Stop() - 1;
  switch (mismatch.expected.front()) {
    case '<':
      return WrongText(around);
    case '/':
      return {Offset(around.TagStart(wrong)),
              Filled(kGrammarMessages.notClosed, Tag(around.LastTagName(wrong)),
                     Quoted(Tag(around.NameAt(wrong))))};
    case '>':
      return WrongTagEnd(around, mismatch.current.front());
    case '=':
      return {Offset(around.TagStart(wrong)), Filled(kGrammarMessages.attributeWithoutValue)};
    case '"':
      return {Offset(wrong), Filled(kGrammarMessages.attributeWithoutQuotes)};
    default:  // '?'
      return WrongDeclarationEnd(around);
  }
}

GrammarError WrongSeed(const Surroundings& around) {
  return {Offset(around.TagStart(around.Stop())),
          Filled(kGrammarMessages.seed, "<Seed xsi:type=\"Vector\">",
                 "<Seed xsi:type=\"Randomize\" />")};
}

GrammarError WrongEnd(const Surroundings& around) {
  if (around.IsAtEnd()) {
    return {Offset(around.Stop()), Filled(kGrammarMessages.endsEarly)};
  }
  return WrongNumber(around, around.Stop());  // a word of a Seed
}

GrammarError WrongFlag(const Surroundings& around) {
  const std::size_t end = around.TagStart(around.Stop());
  const std::size_t value = around.BehindTag(end);
  return {Offset(value),
          Filled(kGrammarMessages.flag, Quoted(around.All().substr(value, end - value)))};
}

GrammarError WrongRoot(const Surroundings& around) {
  const std::size_t tag = around.TagStart(around.Stop());
  return {Offset(tag), Filled(kGrammarMessages.root, Quoted(Tag(around.NameAt(tag + 1))))};
}

GrammarError WrongListEntry(const Surroundings& around) {
  const std::size_t tag = around.TagStart(around.Stop());
  return {Offset(tag), Filled(kGrammarMessages.listEntry, Quoted(Tag(around.NameAt(tag + 1))))};
}

GrammarError WrongAttributes(const Surroundings& around) {
  return {Offset(around.TagStart(around.Stop())), Filled(kGrammarMessages.attributeTwice)};
}

GrammarError NulByte(const Surroundings& around) {
  return {Offset(around.Stop() - 1), Filled(kGrammarMessages.nulByte)};
}

}  // namespace

GrammarError ExplainGrammarError(const TextSource& text, std::int64_t stop,
                                 std::string_view error) {
  struct Explanation {
    std::string_view error;
    GrammarError (*explain)(const Surroundings& around);
  };
  constexpr std::array<Explanation, 10> kExplanations = {{
      {Messages::kErrors.unexpectedEnd.Text(), WrongEnd},
      {Messages::kErrors.ioException.Text(),
       [](const Surroundings& around) { return WrongNumber(around, around.Stop()); }},
      {Messages::kErrors.invalidFlag.Text(), WrongFlag},
      {Messages::kErrors.invalidBatch.Text(), WrongListEntry},
      {Messages::kErrors.invalidSeed.Text(), WrongSeed},
      {Messages::kErrors.attributeNotFound.Text(), WrongSeed},
      {Messages::kErrors.duplicateAttributes.Text(), WrongAttributes},
      {Messages::kErrors.invalidDefinition.Text(), WrongRoot},
      {Messages::kErrors.invalidInputString.Text(), NulByte},
      {Messages::kErrors.invalidArgument.Text(), NulByte},
  }};
  const Surroundings around(text, stop);
  if (const std::optional<Mismatch> mismatch = MismatchIn(error, text.Path())) {
    return mismatch->expected.size() == 1 ? WrongByte(around, *mismatch)
                                          : WrongName(around, *mismatch);
  }
  for (const Explanation& explanation : kExplanations) {
    if (explanation.error == error) {
      return explanation.explain(around);
    }
  }
  return {stop, Filled(kGrammarMessages.otherError, Quoted(error))};
}

}  // namespace Hovar
