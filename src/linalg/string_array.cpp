#include "linalg/string_array.h"

#include <algorithm>
#include <utility>

#include "foundation/integer_size.h"

namespace Vell {

String& StringArray::operator[](std::int32_t index) {
  RequireIndex(index, Count());
  return texts_[index];
}

const String& StringArray::operator[](std::int32_t index) const {
  RequireIndex(index, Count());
  return texts_[index];
}

void StringArray::RemoveElements(const IndexVector& indices) {
  if (indices.IsEmpty()) {
    return;
  }
  IndexVector sorted(indices);
  std::sort(sorted.begin(), sorted.end());
  RequireIndex(sorted[0], Count());
  RequireIndex(sorted[sorted.Size() - 1], Count());
  GrowableArray<String> kept;
  kept.Reserve(Count() - sorted.Size());
  for (std::int32_t i = 0; i < Count(); ++i) {
    if (!std::binary_search(sorted.begin(), sorted.end(), i)) {
      kept.Append(std::move(texts_[i]));
    }
  }
  texts_ = std::move(kept);
}

}  // namespace Vell
