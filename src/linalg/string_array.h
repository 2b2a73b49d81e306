#pragma once

// The names of variables: a text's index is that of the variable's column.

#include <cstdint>

#include "foundation/growable_array.h"
#include "foundation/string.h"
#include "linalg/vector.h"

namespace Vell {

/// A number of texts, empty at first, counted from 0; access is checked. Only RemoveElements
/// changes their number.
class StringArray {
 public:
  StringArray() = default;
  /// `count` empty texts.
  /// Errors: "Invalid argument" for a negative count; "Out of memory".
  explicit StringArray(std::int32_t count) : texts_(count) {}

  std::int32_t Count() const noexcept { return texts_.Size(); }

  /// Text `index`, 0 <= index < Count(); valid until elements are removed.
  /// Errors: InvalidArgumentException "Index out of range".
  String& operator[](std::int32_t index);
  const String& operator[](std::int32_t index) const;

  /// Removes the listed elements, which must be distinct; the rest keep their order. With n texts
  /// and k indices the cost is about n log k comparisons, and no text is copied.
  /// Errors: "Index out of range" for an index that is negative or not below Count(); "Out of
  ///         memory". Nothing has changed then.
  void RemoveElements(const IndexVector& indices);

 private:
  GrowableArray<String> texts_;
};

}  // namespace Vell
