#pragma once

// The root element, by which a definition says what kind of run it is.

#include <string_view>

#include "app/definition/elements.h"
#include "foundation/xml/xml_reader.h"

namespace Hovar {

/// The name of the root element, for example "Analysis"; it lives as long as the process.
std::string_view NameOf(RunKind kind) noexcept;

/// Reads the start tag of a definition's root element and skips the declarations before it.
/// Errors: those of the reader.
Vell::XmlTag ReadRootTag(Vell::XmlReader& reader);

/// The kind of run that a root element of this name defines; whatever kind of tag it is.
/// Errors: Exception "Invalid definition file".
RunKind RunKindOf(const Vell::XmlTag& root);

}  // namespace Hovar
