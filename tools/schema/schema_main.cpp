// hovar_schema writes the schema of definition files to standard output:
//   hovar_schema > share/hovar/hovar-definition.xsd

#include <cstdio>
#include <string>

#include "schema.h"

int main() {
  const std::string schema = Hovar::DefinitionSchema();
  const bool isWritten = std::fwrite(schema.data(), 1, schema.size(), stdout) == schema.size();
  return isWritten && std::fflush(stdout) == 0 ? 0 : 1;
}
