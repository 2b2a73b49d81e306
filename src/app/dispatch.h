#pragma once

#include "app/runner.h"
#include "foundation/string.h"
#include "foundation/xml/xml_reader.h"

namespace Hovar {

enum class RunKind { kAnalysis, kPrediction, kValidation, kBatch };

/// Reads the start tag of a definition's root element; declarations before it are passed over.
/// Errors: those of the reader.
Vell::XmlTag ReadRootTag(Vell::XmlReader& reader);

/// The run that a root element of this name stands for.
/// Errors: Exception "Invalid definition file".
RunKind RunKindOf(const Vell::XmlTag& root);

/// Opens a definition file, lets its root element choose the runner (Analysis, Prediction,
/// Validation or Batch), builds it from the element's content and checks the root's end tag. By
/// then the output folder and the empty log file of a single run exist.
/// Errors: FileOpenException; Exception "Invalid definition file" for any other root; those of
///         reading the definition.
RunnerHandle DispatchDefinition(const Vell::String& path);

}  // namespace Hovar
