#pragma once

// What the four kinds of run have in common for whoever starts one (dispatch.h, batch_runner.h).

#include "foundation/shared_handle.h"

namespace Hovar {

/// One definition turned into one run. The constructor of a derived class reads the definition; Run
/// is called once and raises whatever ends the run, of which the error line has been printed by
/// then. What was written before an error stays. Runners are held through shared handles, which
/// destroy them as what they are.
class Runner {
 public:
  /// Does what the definition says; its output files are complete when this returns, the log apart.
  virtual void Run() = 0;

 protected:
  Runner() = default;
  ~Runner() = default;
};

using RunnerHandle = Vell::SharedHandle<Runner>;

}  // namespace Hovar
