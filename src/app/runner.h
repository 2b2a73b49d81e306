#pragma once

#include "foundation/shared_handle.h"

namespace Hovar {

/// One definition turned into one run. The constructor of a derived class reads the definition; Run
/// is called once. Runners are held through shared handles, which destroy them as what they are.
class Runner {
 public:
  virtual void Run() = 0;

 protected:
  Runner() = default;
  ~Runner() = default;
};

using RunnerHandle = Vell::SharedHandle<Runner>;

}  // namespace Hovar
