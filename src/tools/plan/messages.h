#pragma once

#include "messages/pattern.h"

namespace Hovar {

/// What is made from draws that are not fit for inference, for the sentences that name it.
struct UnfitColumns {
  Messages::Pattern missingBoth{
      "the fifth block, E[Y|X,P=0]-MCMC; as P is missing in <records>, also E[P|YPXZ] and the "
      "observed E[Y|P=0]; as an X is missing in <records>, also E[P|X], and E[Y|X] and E[Y|X,P=0] "
      "with their C-statistics"};
  Messages::Pattern missingP{
      "the fifth block, E[Y|X,P=0]-MCMC; as P is missing in <records>, also E[P|YPXZ], the "
      "observed E[Y|P=0], and E[Y|X,P=0] with its C-statistic"};
  Messages::Pattern missingX{
      "the fifth block, E[Y|X,P=0]-MCMC; as an X is missing in <records>, also E[P|X], and E[Y|X] "
      "and E[Y|X,P=0] with their C-statistics, but not the observed E[Y|P=0], as every P is "
      "known"};
  Messages::Pattern nothingMissing{"the fifth block, E[Y|X,P=0]-MCMC"};
  Messages::Pattern unknown{
      "the fifth block, E[Y|X,P=0]-MCMC; where P is missing, also E[P|YPXZ], the observed "
      "E[Y|P=0], and E[Y|X,P=0] with its C-statistic; where an X is missing, also E[P|X], and "
      "E[Y|X] and E[Y|X,P=0] with their C-statistics"};
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
