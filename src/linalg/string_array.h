#pragma once

#include <cstdint>

#include "foundation/growable_array.h"
#include "foundation/string.h"
#include "linalg/vector.h"

namespace Vell {

/// A fixed number of texts, empty at first, counted from 0; access is checked.
class StringArray {
 public:
  StringArray() = default;
  /// Errors: "Invalid argument" for a negative count; "Out of memory".
  explicit StringArray(std::int32_t count) : texts_(count) {}

  std::int32_t Count() const noexcept { return texts_.Size(); }

  /// Errors: InvalidArgumentException "Index out of range".
  String& operator[](std::int32_t index);
  const String& operator[](std::int32_t index) const;

  /// Removes the listed elements, which must be distinct; the rest keep their order.
  /// Errors: "Index out of range" for an index that is negative or not below Count().
  void RemoveElements(const IndexVector& indices);

 private:
  GrowableArray<String> texts_;
};

}  // namespace Vell
