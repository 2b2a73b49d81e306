#pragma once

#include <string>

namespace Hovar {

/// The schema of definition files (W3C XML Schema 1.0), which share/hovar/hovar-definition.xsd
/// holds: the elements, their order and what they mean from the table of elements, and the values
/// of their types.
std::string DefinitionSchema();

}  // namespace Hovar
