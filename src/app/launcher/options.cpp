#include "app/launcher/options.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>

#include "app/launcher/message.h"

namespace Hovar {
namespace {

constexpr int kMostChains = 9999;

constexpr std::array<std::string_view, 12> kOptionNames{
    "--json",   "--keep", "--progress", "--check",   "--strict", "--data",
    "--chains", "--jobs", "--only",     "--collect", "--report", "--output"};

void RefuseUsage(std::string_view reason) {
  Say(reason);
  Say("see hovar --help");
}

/// Reads the arguments one by one.
class Parser {
 public:
  explicit Parser(const std::vector<std::string_view>& arguments) : arguments_(arguments) {}

  std::optional<Options> Parse() {
    while (next_ < arguments_.size() && problem_.empty()) {
      Take();
    }
    if (problem_.empty()) {
      Settle();
    }
    if (!problem_.empty()) {
      RefuseUsage(problem_);
      return std::nullopt;
    }
    return options_;
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

  void TakeOption(std::string_view option) {
    if (std::find(given_.begin(), given_.end(), option) != given_.end()) {
      problem_ = std::string(option) + " is given twice";
      return;
    }
    given_.push_back(option);
    if (option == "--json") {
      options_.recordFile = Text(option, "FILE");
    } else if (option == "--keep") {
      options_.keepOutputs = true;
    } else if (option == "--progress") {
      options_.showProgress = true;
    } else if (option == "--strict") {
      options_.isStrict = true;
    } else if (option == "--data") {
      options_.describesData = true;
    } else if (option == "--chains") {
      options_.chainCount = Number(option, "N");
    } else if (option == "--jobs") {
      options_.jobs = Number(option, "J");
    } else if (option == "--only") {
      options_.onlyChain = Number(option, "K");
    } else if (option == "--collect") {
      options_.collectOnly = true;
    } else if (option == "--output") {
      options_.reportFile = Text(option, "FILE");
    } else if (option != "--report" && option != "--check") {
      problem_ = "there is no option " + std::string(option);
    }
  }

  std::string Text(std::string_view option, std::string_view what) {
    if (next_ == arguments_.size() || arguments_[next_].empty()) {
      problem_ = std::string(option) + " needs a " + std::string(what);
      return {};
    }
    return std::string(arguments_[next_++]);
  }

  int Number(std::string_view option, std::string_view what) {
    const std::string text = Text(option, what);
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    if (problem_.empty() && (!isNumber || number < 1 || number > kMostChains)) {
      problem_ = std::string(option) + " needs a number from 1 to " + std::to_string(kMostChains);
    }
    return number;
  }

  bool Has(std::string_view option) const {
    return std::find(given_.begin(), given_.end(), option) != given_.end();
  }

  /// Finds the task and refuses what does not go together.
  void Settle() {
    if (Has("--report")) {
      options_.task = Task::kReport;
      Allow({"--report", "--output"});
      options_.folders = names_;
      if (names_.empty()) {
        problem_ = "--report needs a FOLDER";
      }
      return;
    }
    if (Has("--check")) {
      options_.task = Task::kCheck;
      Allow({"--check", "--strict", "--data"});
    } else if (Has("--chains")) {
      options_.task = Task::kChains;
      Allow({"--chains", "--jobs", "--only", "--collect"});
      SettleChains();
    } else {
      Allow({"--json", "--keep", "--progress"});
    }
    if (problem_.empty() && names_.size() != 1) {
      problem_ = names_.empty() ? "the DEFINITION is missing" : "more than one DEFINITION is given";
    }
    options_.definition = names_.empty() ? std::string() : names_.front();
  }

  void SettleChains() {
    if (options_.onlyChain > options_.chainCount && problem_.empty()) {
      problem_ = "--only needs a number from 1 to the number of chains";
    }
    if (options_.onlyChain > 0 && (options_.collectOnly || options_.jobs > 0)) {
      problem_ = "--only does not go with --jobs or --collect";
    }
    if (options_.collectOnly && options_.jobs > 0) {
      problem_ = "--collect does not go with --jobs";
    }
  }

  void Allow(std::initializer_list<std::string_view> allowed) {
    for (const std::string_view option : given_) {
      if (std::find(allowed.begin(), allowed.end(), option) == allowed.end()) {
        problem_ = std::string(option) + " does not go with " +
                   std::string(Has("--report")   ? "--report"
                               : Has("--check")  ? "--check"
                               : Has("--chains") ? "--chains"
                                                 : "a single run");
      }
    }
  }

  const std::vector<std::string_view>& arguments_;
  std::size_t next_ = 0;
  bool onlyNames_ = false;
  std::vector<std::string_view> given_;
  std::vector<std::string> names_;
  std::string problem_;
  Options options_;
};

}  // namespace

bool IsLauncherOption(std::string_view argument) noexcept {
  return std::find(kOptionNames.begin(), kOptionNames.end(), argument) != kOptionNames.end();
}

std::optional<Options> ParseOptions(const std::vector<std::string_view>& arguments) {
  return Parser(arguments).Parse();
}

}  // namespace Hovar
