#include "limited_rights.h"

#include <unistd.h>

#include <string>

namespace Testing {

namespace fs = std::filesystem;

Command WithoutRights(Command command) {
  if (geteuid() == 0) {
    const std::string program = command.program.string();
    command.program = "/usr/bin/setpriv";
    command.arguments[0] = program;
    command.arguments.insert(command.arguments.begin(),
                             {"setpriv", "--bounding-set=-all", "--inh-caps=-all", "--"});
  }
  return command;
}

LimitedRights::LimitedRights(const fs::path& path, fs::perms rights) : path_(path) {
  fs::permissions(path_, rights);
}

LimitedRights::~LimitedRights() { fs::permissions(path_, fs::perms::owner_all); }

}  // namespace Testing
