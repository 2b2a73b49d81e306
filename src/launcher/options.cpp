#include "launcher/options.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <utility>

#include "launcher/messages.h"
#include "tools/support/message.h"

namespace Hovar {
namespace {

constexpr int kMostChains = 9999;

constexpr std::array<std::string_view, 12> kOptionNames{
    "--json",   "--keep", "--progress", "--check",   "--strict", "--data",
    "--chains", "--jobs", "--only",     "--collect", "--report", "--output"};

constexpr std::array<std::string_view, 5> kOptionsWithValue{"--json", "--chains", "--jobs",
                                                            "--only", "--output"};

bool TakesValue(std::string_view option) noexcept {
  return std::find(kOptionsWithValue.begin(), kOptionsWithValue.end(), option) !=
         kOptionsWithValue.end();
}

void RefuseUsage(std::string_view reason) {
  SayLine(reason);
  Say(kLauncherMessages.seeHelp);
}

/// Reads the arguments one by one.
class Parser {
 public:
  explicit Parser(const std::vector<std::string_view>& arguments) : arguments_(arguments) {}

  std::optional<Task> Parse() {
    while (next_ < arguments_.size() && problem_.empty()) {
      Take();
    }
    Task task = problem_.empty() ? Settle() : Task();
    if (!problem_.empty()) {
      RefuseUsage(problem_);
      return std::nullopt;
    }
    return task;
  }

 private:
  void Take() {
    const std::string_view argument = arguments_[next_++];
    if (onlyNames_ || !argument.starts_with("--")) {
      names_.emplace_back(argument);
    } else if (argument == "--") {
      onlyNames_ = true;
    } else {
      TakeOption(argument);
    }
  }

  /// Takes an option, "--option" or "--option=value".
  void TakeOption(std::string_view argument) {
    const std::string_view option = argument.substr(0, argument.find('='));
    if (option.size() < argument.size()) {
      value_ = argument.substr(option.size() + 1);
      if (IsLauncherOption(option) && !TakesValue(option)) {
        problem_ = Filled(kLauncherMessages.takesNoValue, option);
        return;
      }
    }
    if (std::find(given_.begin(), given_.end(), option) != given_.end()) {
      problem_ = Filled(kLauncherMessages.givenTwice, option);
      return;
    }
    given_.push_back(option);
    if (option == "--json") {
      run_.recordFile = Text(option, "FILE");
    } else if (option == "--keep") {
      run_.keepOutputs = true;
    } else if (option == "--progress") {
      run_.showProgress = true;
    } else if (option == "--strict") {
      check_.isStrict = true;
    } else if (option == "--data") {
      check_.describe = Describe::kData;
    } else if (option == "--chains") {
      chains_.chainCount = Number(option, "N");
    } else if (option == "--jobs") {
      chains_.jobs = Number(option, "J");
    } else if (option == "--only") {
      chains_.onlyChain = Number(option, "K");
    } else if (option == "--collect") {
      chains_.collectOnly = true;
    } else if (option == "--output") {
      report_.reportFile = Text(option, "FILE");
    } else if (option != "--report" && option != "--check") {
      problem_ = Filled(kLauncherMessages.noOption, option);
    }
  }

  /// The value of an option: what follows its equals sign, or else the next argument.
  std::string_view Value() {
    if (value_) {
      return *std::exchange(value_, std::nullopt);
    }
    return next_ < arguments_.size() ? arguments_[next_++] : std::string_view();
  }

  /// The name of a file. What begins with a hyphen is taken for an option that stands where the name is
  /// missing, unless it follows an equals sign.
  std::string Text(std::string_view option, std::string_view what) {
    const bool isCertain = value_.has_value();
    const std::string_view text = Value();
    if (text.empty()) {
      problem_ = Filled(kLauncherMessages.needs, option, what);
    } else if (text.starts_with('-') && !isCertain) {
      problem_ = Filled(kLauncherMessages.needsPath, option, what, text, text);
    }
    return std::string(text);
  }

  int Number(std::string_view option, std::string_view what) {
    const std::string_view text = Value();
    if (text.empty()) {
      problem_ = Filled(kLauncherMessages.needs, option, what);
    }
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    if (problem_.empty() && (!isNumber || number < 1 || number > kMostChains)) {
      problem_ = Filled(kLauncherMessages.needsNumber, option, kMostChains);
    }
    return number;
  }

  bool Has(std::string_view option) const {
    return std::find(given_.begin(), given_.end(), option) != given_.end();
  }

  /// Finds the task and refuses what does not go together.
  Task Settle() {
    if (Has("--report")) {
      Allow({"--report", "--output"});
      report_.folders = names_;
      if (names_.empty()) {
        problem_ = kLauncherMessages.needsFolder.Text();
      }
      return report_;
    }
    if (Has("--check")) {
      Allow({"--check", "--strict", "--data"});
      return WithDefinition(check_);
    }
    if (Has("--chains")) {
      Allow({"--chains", "--jobs", "--only", "--collect"});
      SettleChains();
      return WithDefinition(chains_);
    }
    Allow({"--json", "--keep", "--progress"});
    return WithDefinition(run_);
  }

  template <typename Settings>
  Task WithDefinition(Settings settings) {
    if (problem_.empty() && names_.size() != 1) {
      problem_ =
          (names_.empty() ? kLauncherMessages.definitionMissing : kLauncherMessages.moreDefinitions)
              .Text();
    }
    settings.definition = names_.empty() ? std::string() : names_.front();
    return settings;
  }

  void SettleChains() {
    if (chains_.onlyChain > chains_.chainCount && problem_.empty()) {
      problem_ = kLauncherMessages.onlyAbove.Text();
    }
    if (chains_.onlyChain > 0 && (chains_.collectOnly || chains_.jobs > 0)) {
      problem_ = kLauncherMessages.onlyAndOthers.Text();
    }
    if (chains_.collectOnly && chains_.jobs > 0) {
      problem_ = kLauncherMessages.collectAndJobs.Text();
    }
  }

  void Allow(std::initializer_list<std::string_view> allowed) {
    for (const std::string_view option : given_) {
      if (std::find(allowed.begin(), allowed.end(), option) == allowed.end()) {
        problem_ = Has("--report")   ? Filled(kLauncherMessages.notWithReport, option)
                   : Has("--check")  ? Filled(kLauncherMessages.notWithCheck, option)
                   : Has("--chains") ? Filled(kLauncherMessages.notWithChains, option)
                                     : Filled(kLauncherMessages.notWithRun, option);
      }
    }
  }

  const std::vector<std::string_view>& arguments_;
  std::size_t next_ = 0;
  std::optional<std::string_view> value_;  // behind the equals sign of the option that is taken
  bool onlyNames_ = false;
  std::vector<std::string_view> given_;
  std::vector<std::string> names_;
  std::string problem_;
  RunSettings run_;
  CheckSettings check_;
  ChainSettings chains_;
  ReportSettings report_;
};

}  // namespace

bool IsLauncherOption(std::string_view argument) noexcept {
  const std::string_view name = argument.substr(0, argument.find('='));
  return std::find(kOptionNames.begin(), kOptionNames.end(), name) != kOptionNames.end();
}

std::optional<Task> ParseOptions(const std::vector<std::string_view>& arguments) {
  return Parser(arguments).Parse();
}

}  // namespace Hovar
