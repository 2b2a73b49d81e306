#include <gtest/gtest.h>

#include "schema.h"
#include "support/files.h"

namespace {

TEST(SchemaFileTest, TheFileIsWhatIsWrittenFromTheTable) {
  EXPECT_EQ(Testing::ReadFile(HOVAR_SCHEMA), Hovar::DefinitionSchema())
      << "hovar_schema > share/hovar/hovar-definition.xsd writes it anew";
}

}  // namespace
