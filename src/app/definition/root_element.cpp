#include "app/definition/root_element.h"

#include <algorithm>

#include "app/definition/element_table.h"
#include "foundation/exceptions/exceptions.h"
#include "messages/error_texts.h"

namespace Hovar {

std::string_view NameOf(RunKind kind) noexcept {
  return std::find_if(kRoots.begin(), kRoots.end(),
                      [kind](const RootEntry& root) { return root.kind == kind; })
      ->name;
}

Vell::XmlTag ReadRootTag(Vell::XmlReader& reader) {
  Vell::XmlTag root = reader.ReadTag();
  while (root.kind == Vell::XmlTag::Kind::kDeclaration) {
    root = reader.ReadTag();
  }
  return root;
}

RunKind RunKindOf(const Vell::XmlTag& root) {
  for (const RootEntry& entry : kRoots) {
    if (root.name.View() == entry.name) {
      return entry.kind;
    }
  }
  throw Vell::Exceptions::Exception(Messages::kErrors.invalidDefinition);
}

}  // namespace Hovar
