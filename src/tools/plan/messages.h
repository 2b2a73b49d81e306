#pragma once

#include "messages/pattern.h"

namespace Hovar {

/// What is made from draws that are not fit for inference, for the sentences that name it.
struct UnfitColumns {
  Messages::Pattern missingX{
      "the fifth block, E[Y|X,P=0]-MCMC and, as an X is missing in <records>, the other "
      "expectations; the observed E[Y|P=0] is not affected, for every P is known"};
  Messages::Pattern missingP{
      "the fifth block, E[Y|X,P=0]-MCMC and the observed E[Y|P=0], as P is missing in <records>"};
  Messages::Pattern nothingMissing{"the fifth block, E[Y|X,P=0]-MCMC"};
  Messages::Pattern unknown{
      "the fifth block, E[Y|X,P=0]-MCMC and, where P is missing, the observed E[Y|P=0]"};
};

inline constexpr UnfitColumns kUnfitColumns;

/// What to do instead of using such draws.
struct EquationsRemedy {
  Messages::Pattern remedy{
      "Take counts and expectations from a run with false, and standard errors of the four fits "
      "from a run with true and Steps 0."};
};

inline constexpr EquationsRemedy kEquations;

}  // namespace Hovar
