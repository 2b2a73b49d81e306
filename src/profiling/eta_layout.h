#pragma once

#include <span>

#include "profiling/eta_grid.h"

namespace Hovar {

/// What a grid has to hold besides the hospital's own outcomes.
struct EtaRange {
  double centre = 0;           // the shift of the average hospital, in log-odds
  double spread = 1.5;         // hospitals are looked for within centre -+ spread
  double uncertainEvents = 0;  // events of the hospital whose P is imputed
};

/// A grid for a hospital whose patients have these bounded risks and of whom so many had the event, in one
/// completed study; the others are tabulated on the same one.
///
/// Its core is where the likelihood is within e^-24.5 of its maximum, 7 standard errors either way,
/// and as much wider as uncertain events, at worst half of them imputed as present, make the
/// outcomes more spread. It ends 12 log-odds from the centre: without an event the likelihood has no
/// lower end.
EtaGrid MakeEtaGrid(std::span<const double> risks, double events, const EtaRange& range) noexcept;

}  // namespace Hovar
