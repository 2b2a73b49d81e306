#pragma once

// The system calls of the platform layer, counted and made to fail. The linker leads the layer's
// calls to the functions of system_calls.cpp (--wrap), so that the layer itself is tested too.

#include <array>
#include <optional>
#include <string>

namespace Testing {

enum class SystemCall { kOpen, kRead, kWrite, kSeek, kLength, kClose, kMakeFolder };
inline constexpr std::array kSystemCalls = {
    SystemCall::kOpen,   SystemCall::kRead,  SystemCall::kWrite,     SystemCall::kSeek,
    SystemCall::kLength, SystemCall::kClose, SystemCall::kMakeFolder};

struct SystemCallFault {
  enum class Kind {
    kError,       // the call fails with `error`; a file that is closed so is closed all the same
    kShort,       // every read and write moves a part of what was asked for
    kKillBefore,  // the process is killed in place of the call
    kKillAfter,   // the process is killed when the call is done
  };

  Kind kind = Kind::kError;
  std::optional<SystemCall> only = std::nullopt;  // the calls that count; all when empty
  int failing = 0;                                // the number of the call, from 1; 0 for none
  int error = 0;
  bool isFromThenOn = false;  // all later calls fail too
};

/// What the calls of an armed process did.
struct SystemCallReport {
  int count = 0;  // of the calls that count
  bool hasFired = false;
  // The call that met the fault first, and its file.
  SystemCall call = SystemCall::kOpen;
  int file = -1;  // -1 for a call with a path
  bool isOpenForWriting = false;
  bool isThere = false;  // a file or folder with the path of the call existed
  char path[512] = {};
};

/// A fault for one process: the calls of the process that arms it are counted, until it disarms it.
/// The report lies in memory that is shared with copies of the process, so the original can read
/// it.
class SystemCallFaults {
 public:
  SystemCallFaults();
  ~SystemCallFaults();
  SystemCallFaults(const SystemCallFaults&) = delete;
  SystemCallFaults& operator=(const SystemCallFaults&) = delete;

  /// Clears the report; for the original process.
  void Clear();
  /// From now on the calls of this process count.
  void Arm(const SystemCallFault& fault);
  void Disarm();
  const SystemCallReport& Report() const { return *report_; }

 private:
  SystemCallReport* report_;
};

/// The call's name, for messages.
std::string NameOf(SystemCall call);

}  // namespace Testing
