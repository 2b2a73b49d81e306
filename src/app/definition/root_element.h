#pragma once

#include <string_view>

#include "foundation/xml/xml_reader.h"

namespace Hovar {

/// What the root element of a definition stands for.
enum class RunKind { kAnalysis, kPrediction, kValidation, kBatch };

/// The name of the root element.
std::string_view NameOf(RunKind kind) noexcept;

/// Reads the start tag of a definition's root element and skips the declarations before it.
/// Errors: those of the reader.
Vell::XmlTag ReadRootTag(Vell::XmlReader& reader);

/// The run that a root element of this name stands for.
/// Errors: Exception "Invalid definition file".
RunKind RunKindOf(const Vell::XmlTag& root);

}  // namespace Hovar
