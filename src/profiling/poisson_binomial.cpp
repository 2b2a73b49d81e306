#include "profiling/poisson_binomial.h"

#include <algorithm>

namespace Hovar {

void PoissonBinomial::Compute(std::span<const double> probabilities) {
  used_ = 0;
  for (std::size_t i = 0; i < probabilities.size(); i += kBlock) {
    PushBlock(probabilities.subspan(i, std::min(kBlock, probabilities.size() - i)));
    while (used_ > 1 && stack_[used_ - 1].level == stack_[used_ - 2].level) {
      MultiplyTopTwo();
    }
  }
  if (used_ == 0) {
    Push().masses.assign(1, 1.0);
  }
  while (used_ > 1) {
    MultiplyTopTwo();
  }
}

PoissonBinomial::Window& PoissonBinomial::Push() {
  if (used_ == stack_.size()) {
    stack_.emplace_back();
  }
  Window& window = stack_[used_++];
  window.first = 0;
  window.level = 0;
  return window;
}

void PoissonBinomial::PushBlock(std::span<const double> probabilities) {
  Window& window = Push();
  // Two buffers in turn, with a zero on either side of what is there: no step of the loop needs
  // what another one writes.
  std::vector<double>& from = window.masses;
  from.assign(kBlock + 3, 0.0);
  scratch_.assign(kBlock + 3, 0.0);
  from[1] = 1;
  std::size_t size = 1;
  for (const double q : probabilities) {
    const double complement = 1 - q;
    double* const __restrict to = scratch_.data();
    const double* const __restrict old = from.data();
    for (std::size_t k = 1; k <= size + 1; ++k) {
      to[k] = old[k] * complement + old[k - 1] * q;
    }
    ++size;
    from.swap(scratch_);
  }
  from.erase(from.begin());
  from.resize(size);
  DropNegligible(window);
}

void PoissonBinomial::MultiplyTopTwo() {
  Window& left = stack_[used_ - 2];
  const Window& right = stack_[used_ - 1];
  const bool leftIsLonger = left.masses.size() >= right.masses.size();
  const std::vector<double>& longer = leftIsLonger ? left.masses : right.masses;
  const std::vector<double>& shorter = leftIsLonger ? right.masses : left.masses;
  scratch_.assign(longer.size() + shorter.size() - 1, 0.0);
  for (std::size_t i = 0; i < shorter.size(); ++i) {
    const double factor = shorter[i];
    double* const __restrict to = scratch_.data() + i;
    const double* const __restrict terms = longer.data();
    const std::size_t count = longer.size();
    for (std::size_t j = 0; j < count; ++j) {
      to[j] += factor * terms[j];
    }
  }
  left.masses.swap(scratch_);
  left.first += right.first;
  ++left.level;
  --used_;
  DropNegligible(left);
}

void PoissonBinomial::DropNegligible(Window& window) {
  std::vector<double>& masses = window.masses;
  const auto matters = [](double mass) { return mass >= kNegligible; };
  masses.erase(std::find_if(masses.rbegin(), masses.rend(), matters).base(), masses.end());
  const auto begin = std::find_if(masses.begin(), masses.end(), matters);
  window.first += begin - masses.begin();
  masses.erase(masses.begin(), begin);
}

}  // namespace Hovar
