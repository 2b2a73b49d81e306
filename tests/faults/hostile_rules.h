#pragma once

// What must be true of every run with a hostile file, whatever it prints.

#include <string>
#include <vector>

#include "faults/hostile_run.h"

namespace Testing {

/// The rules that a run breaks, each as a sentence. `alone` is the program by itself with the same
/// files.
std::vector<std::string> BrokenRules(const HostileCell& cell, const HostileEnd& run,
                                     const HostileEnd& alone);

}  // namespace Testing
