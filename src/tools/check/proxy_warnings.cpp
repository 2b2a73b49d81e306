#include "tools/check/proxy_warnings.h"

#include <map>
#include <string>

#include "tools/check/csv.h"
#include "tools/check/proxies.h"
#include "tools/support/text_places.h"

namespace Hovar {
namespace {

constexpr std::size_t kMostNames = 5;  // in a line, and lines of one kind

/// "ZA", "ZB" and 3 more.
std::string ZNames(const std::vector<VariableCounts>& variables,
                   const std::vector<std::size_t>& indices) {
  std::string names;
  for (std::size_t i = 0; i < indices.size() && i < kMostNames; ++i) {
    names += (i == 0 ? "" : ", ") + Quoted(variables[indices[i]].zName);
  }
  return indices.size() > kMostNames
             ? names + " and " + std::to_string(indices.size() - kMostNames) + " more"
             : names;
}

std::string CopyText(const VariableCounts& variable) {
  return Quoted(variable.zName) + " repeats " + Quoted(variable.xName) +
         " and is 0 where that is missing, so its " + Counted(variable.xMissing, "missing value") +
         " would be imputed as 0. Use a Z from another source, which also tells something where X "
         "is missing.";
}

/// What one value of Z settles.
std::string Settled(const VariableCounts& variable, const XzClass& xz) {
  const std::string x = xz.ones == 0 ? "0" : "1";
  return Quoted(variable.xName) + " is " + x + " as far as it is known (" +
         Counted(xz.known, "record") + "), so its " + Counted(xz.missing, "missing value") +
         " there would be imputed as " + x;
}

std::string SettledText(const VariableCounts& variable) {
  const std::string z = Quoted(variable.zName);
  const XzClass without = XzClassOf(variable, false);
  const XzClass with = XzClassOf(variable, true);
  std::string text;
  if (without.IsSettled()) {
    text = "Where " + z + " is 0, " + Settled(variable, without);
  }
  if (with.IsSettled()) {
    text += (text.empty() ? "Where " : ", and where ") + z + " is 1, " + Settled(variable, with);
  }
  return text + ". Check that this Z proves it, or choose another one.";
}

/// Why a variable is removed with its Z, and what is lost.
std::string RemovedText(const VariableCounts& variable, const std::string& why,
                        const std::string& cure) {
  return why + ", so it is removed together with " + Quoted(variable.xName) + ", which is 1 in " +
         std::to_string(variable.xOnes) + " of " +
         Counted(variable.records - variable.xMissing, "known value") + ". " + cure;
}

std::string TextOf(const std::vector<VariableCounts>& variables, const ProxyVerdict& verdict,
                   const VariableCounts& variable) {
  const std::string z = Quoted(variable.zName);
  const std::string everywhere = " in all " + Counted(variable.records, "record");
  switch (verdict.fault) {
    case ProxyFault::kCopy:
      return CopyText(variable);
    case ProxyFault::kSettledClass:
      return SettledText(variable);
    case ProxyFault::kConstant:
      return RemovedText(variable, z + " is " + (variable.zOnes == 0 ? "0" : "1") + everywhere,
                         "Give it a Z that varies.");
    case ProxyFault::kEqual:
      return RemovedText(variable, z + " equals " + ZNames(variables, verdict.others) + everywhere,
                         "Give each variable a Z of its own.");
    case ProxyFault::kDependent:
      return RemovedText(variable,
                         z + " follows from " + ZNames(variables, verdict.others) + everywhere,
                         "Give it a Z that the others do not tell.");
    case ProxyFault::kNearlyDependent:
      return RemovedText(variable,
                         z + " counts as dependent on other Z columns within the tolerance",
                         "Choose a smaller tolerance, or give it another Z.");
    case ProxyFault::kNone:
      break;
  }
  return "";  // nothing is wrong
}

}  // namespace

void WarnOfProxies(Findings& findings, const DefinitionFile& definition, const Vell::BitMatrix& z,
                   const std::vector<VariableCounts>& variables) {
  const std::vector<ProxyVerdict> verdicts = JudgeProxies(z, variables);
  std::map<ProxyFault, std::vector<std::size_t>> byFault;
  for (std::size_t j = 0; j < verdicts.size(); ++j) {
    if (verdicts[j].fault != ProxyFault::kNone) {
      byFault[verdicts[j].fault].push_back(j);
    }
  }
  const std::vector<std::size_t> fields = FieldStarts(HeaderOf(definition.data), QuoteUse::kHonour);
  const auto placeOf = [&](std::size_t variable) {
    const std::size_t field = fields.size() - 2 * variables.size() + variable;  // the X come last
    return field < fields.size()
               ? PlaceOf(definition.data, static_cast<std::int64_t>(fields[field]))
               : Place{};
  };
  for (const auto& [fault, indices] : byFault) {
    const std::size_t told = indices.size() == kMostNames + 1 ? indices.size() : kMostNames;
    for (std::size_t i = 0; i < indices.size() && i < told; ++i) {
      const std::size_t j = indices[i];
      findings.AddWarning(definition.data, placeOf(j),
                          TextOf(variables, verdicts[j], variables[j]));
    }
    if (indices.size() > told) {
      const std::vector<std::size_t> rest(indices.begin() + static_cast<std::ptrdiff_t>(told),
                                          indices.end());
      findings.AddWarning(definition.data, placeOf(rest.front()),
                          "The same is wrong with " +
                              Counted(static_cast<std::int64_t>(rest.size()), "more Z column") +
                              ": " + ZNames(variables, rest) + ". Do the same there.");
    }
  }
}

}  // namespace Hovar
