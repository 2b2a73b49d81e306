#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "support/child_process.h"

namespace Testing {

/// A process whose standard input is a terminal, seen from the other side of that terminal: the
/// test types keys, looks at the terminal's attributes and sees when the process stops or ends.
///
/// The process belongs to a session of its own, led by a process in between that lives as long as
/// this object, as a shell does. Without it the terminal would be hung up and reset when the
/// process ends, and whoever left it in disorder would not be found out. All waiting is for events
/// and gives up after a minute, so nothing depends on the speed of the machine.
class TerminalSession {
 public:
  enum class Place { kForeground, kBackground };

  struct Event {
    enum class Kind { kNone, kStopped, kEnded };
    Kind kind = Kind::kNone;
    ProcessEnd end;

    bool operator==(const Event&) const = default;
  };
  static Event Exited(int status) { return {Event::Kind::kEnded, {status, -1}}; }
  static Event Killed(int signal) { return {Event::Kind::kEnded, {-1, signal}}; }
  static Event Stopped() { return {Event::Kind::kStopped, {}}; }

  /// Types `earlierKeys` (which end with a line feed, if there are any) and then starts the
  /// process.
  TerminalSession(Place place, const std::function<int()>& body, std::string_view earlierKeys = "");
  ~TerminalSession();
  TerminalSession(const TerminalSession&) = delete;
  TerminalSession& operator=(const TerminalSession&) = delete;

  void Type(std::string_view keys);
  /// Waits until keys are delivered one by one; false if that does not happen.
  bool WaitForKeyMode();
  /// The terminal's settings as a text, for comparisons.
  std::string Attributes() const;
  /// Those before the process was started; they differ from a terminal's usual ones.
  const std::string& InitialAttributes() const { return initialAttributes_; }
  /// True while typed characters are echoed.
  bool HasEcho() const;
  /// Everything that appeared on the terminal since the last call.
  std::string Shown();
  /// How many typed bytes nobody has read. Changes the terminal's attributes.
  int UnreadBytes();

  void Signal(int signal) const;
  /// The next thing that happens to the process; kNone if nothing does within the time.
  Event NextEvent(int milliseconds = 60'000);

 private:
  void Lead(Place place, const std::function<int()>& body);

  int terminal_ = -1;  // the process's side
  int screen_ = -1;    // our side
  int leader_ = -1;
  int process_ = -1;
  Pipe events_;
  Pipe life_;
  std::string initialAttributes_;
};

}  // namespace Testing
