#include "tools/check/data_fields.h"

#include "data/data_file_reader.h"
#include "tools/check/tables.h"

namespace Hovar {

std::string RoleOf(const DefinitionFile& definition, const std::string& header, std::size_t field) {
  const auto index = static_cast<std::int64_t>(field);
  const auto fields = static_cast<std::int64_t>(FieldStarts(header, QuoteUse::kHonour).size());
  const std::int64_t variables = (fields - kFieldsBeforeIndicators - definition.poaCount) / 2;
  std::string role = "X";
  if (index < kFieldsBeforeIndicators) {
    role = "Y";  // key and hospital ID may hold anything
  } else if (index < kFieldsBeforeIndicators + definition.poaCount) {
    role = "POA indicator";
  } else if (index < kFieldsBeforeIndicators + definition.poaCount + variables) {
    role = "Z";
  }
  const std::string_view name = FieldOf(header, field, QuoteUse::kHonour);
  return name.empty() ? role : role + ", " + QuotedField(name);
}

bool MayBeMissing(const std::string& role) {
  return role.starts_with("X") || role.starts_with("POA");
}

bool IsZ(const std::string& role) { return role.starts_with("Z"); }

}  // namespace Hovar
