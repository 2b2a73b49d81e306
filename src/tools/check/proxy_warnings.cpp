#include "tools/check/proxy_warnings.h"

#include <map>
#include <string>

#include "tools/check/csv.h"
#include "tools/check/finding_messages.h"
#include "tools/check/proxies.h"
#include "tools/check/proxy_messages.h"
#include "tools/support/message.h"
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
             ? Filled(kFindingParts.andMore, names, indices.size() - kMostNames)
             : names;
}

std::string SettledText(const VariableCounts& variable) {
  const std::string z = Quoted(variable.zName);
  const std::string x = Quoted(variable.xName);
  const XzClass without = XzClassOf(variable, false);
  const XzClass with = XzClassOf(variable, true);
  const auto settledX = [](const XzClass& xz) { return xz.ones == 0 ? 0 : 1; };
  const auto known = [](const XzClass& xz) { return Counted(xz.known, "record"); };
  const auto missing = [](const XzClass& xz) { return Counted(xz.missing, "missing value"); };
  if (without.IsSettled() && with.IsSettled()) {
    return Filled(kProxyMessages.settledByBoth, z, x, settledX(without), known(without),
                  missing(without), settledX(without), z, x, settledX(with), known(with),
                  missing(with), settledX(with));
  }
  return without.IsSettled() ? Filled(kProxyMessages.settledByZero, z, x, settledX(without),
                                      known(without), missing(without), settledX(without))
                             : Filled(kProxyMessages.settledByOne, z, x, settledX(with),
                                      known(with), missing(with), settledX(with));
}

std::string TextOf(const std::vector<VariableCounts>& variables, const ProxyVerdict& verdict,
                   const VariableCounts& variable) {
  const std::string z = Quoted(variable.zName);
  const std::string x = Quoted(variable.xName);
  const std::string records = Counted(variable.records, "record");
  const std::string known = Counted(variable.records - variable.xMissing, "known value");
  const std::string others = ZNames(variables, verdict.others);
  switch (verdict.fault) {
    case ProxyFault::kCopy:
      return Filled(kProxyMessages.copy, z, x, Counted(variable.xMissing, "missing value"));
    case ProxyFault::kSettledClass:
      return SettledText(variable);
    case ProxyFault::kConstant:
      return Filled(kProxyMessages.constant, z, variable.zOnes == 0 ? 0 : 1, records, x,
                    variable.xOnes, known);
    case ProxyFault::kEqual:
      return Filled(kProxyMessages.equal, z, others, records, x, variable.xOnes, known);
    case ProxyFault::kDependent:
      return Filled(kProxyMessages.dependent, z, others, records, x, variable.xOnes, known);
    case ProxyFault::kNearlyDependent:
      return Filled(kProxyMessages.nearlyDependent, z, x, variable.xOnes, known);
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
                          Filled(kProxyMessages.others, Counted(rest.size(), "more Z column"),
                                 ZNames(variables, rest)));
    }
  }
}

}  // namespace Hovar
