#include "linalg/kernels/exponentials.h"

#include <cstring>

#include "foundation/exponential.h"
#include "linalg/kernels/dispatch.h"

namespace Vell {
namespace {

struct Exponentials {
  std::span<double> values;

  template <int kLanes>
  [[gnu::always_inline]] void operator()() const noexcept {
    typename Lanes<kLanes>::Real x;
    std::size_t i = 0;
    for (; i + kLanes <= values.size(); i += kLanes) {
      std::memcpy(&x, &values[i], sizeof x);
      ReplaceByExp<kLanes>(x);
      std::memcpy(&values[i], &x, sizeof x);
    }
    for (; i < values.size(); ++i) {
      ReplaceByExp<1>(values[i]);
    }
  }
};

}  // namespace

void ReplaceByExponentials(std::span<double> values) noexcept {
  RunVectorForm(Exponentials{values});
}

}  // namespace Vell
