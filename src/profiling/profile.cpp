#include "profiling/profile.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <numeric>

#include "diagnostics/normal_quantile.h"
#include "profiling/counter_random.h"
#include "profiling/eta_layout.h"
#include "profiling/ratio_tails.h"
#include "profiling/study_tables.h"

namespace Hovar {
namespace {

std::size_t Index(std::int32_t number) { return static_cast<std::size_t>(number); }

/// The cuts between the tenths of all patients' risks.
std::array<double, kRiskTenths - 1> RiskCuts(const CompletedStudy& study) {
  std::array<double, kRiskTenths - 1> cuts{};
  std::vector<double> risks(study.probability.begin(), study.probability.end());
  if (risks.empty()) {
    return cuts;
  }
  auto begin = risks.begin();
  for (std::size_t k = 0; k < cuts.size(); ++k) {
    const auto place =
        risks.begin() + static_cast<std::ptrdiff_t>(risks.size() * (k + 1) / kRiskTenths);
    std::nth_element(begin, place, risks.end());
    cuts[k] = *place;
    begin = place;
  }
  return cuts;
}

void AddTenths(std::array<TenthOfRisk, kRiskTenths>& tenths,
               const std::array<double, kRiskTenths - 1>& cuts, const CompletedStudy& study,
               std::int32_t hospital) {
  const std::span<const double> risks = study.Probabilities(hospital);
  const std::span<const std::uint8_t> outcomes = study.Outcomes(hospital);
  for (std::size_t i = 0; i < risks.size(); ++i) {
    std::size_t tenth = 0;
    for (const double cut : cuts) {
      tenth += risks[i] >= cut ? 1 : 0;
    }
    tenths[tenth].cases += 1;
    tenths[tenth].observed += outcomes[i];
    tenths[tenth].expected += risks[i];
  }
}

/// Joint draws of one study: which point of the posterior of mu, gamma and tau each belongs to.
std::vector<std::uint32_t> PointsOfDraws(const HyperPosterior& posterior, std::size_t draws,
                                         const CounterRandom& random) {
  // Systematic: evenly spaced in the cumulated weights, from one random start.
  std::vector<std::uint32_t> points(draws);
  const double start = random.Uniform();
  double cumulated = 0;
  std::size_t draw = 0;
  for (std::size_t k = 0; k < posterior.points.size(); ++k) {
    cumulated += posterior.points[k].weight * static_cast<double>(draws);
    const bool isLast = k + 1 == posterior.points.size();
    while (draw < draws && (isLast || static_cast<double>(draw) + start < cumulated)) {
      points[draw++] = static_cast<std::uint32_t>(k);
    }
  }
  return points;
}

/// Appends the ranks of a draw's effects: 1 for the smallest.
void AppendRanks(std::vector<std::uint32_t>& ranks, std::span<const double> effects,
                 std::vector<std::uint32_t>& order) {
  order.resize(effects.size());
  std::iota(order.begin(), order.end(), 0U);
  std::sort(order.begin(), order.end(),
            [&](std::uint32_t a, std::uint32_t b) { return effects[a] < effects[b]; });
  const std::size_t begin = ranks.size();
  ranks.resize(begin + effects.size());
  for (std::size_t place = 0; place < order.size(); ++place) {
    ranks[begin + order[place]] = static_cast<std::uint32_t>(place + 1);
  }
}

/// The model's part of a study.
class ModelJudgement {
 public:
  ModelJudgement(ProfileEvidence& evidence, const ProfileLayout& layout,
                 const ProfileSettings& settings, std::int32_t number)
      : evidence_(evidence),
        layout_(layout),
        settings_(settings),
        random_(CounterRandom(settings.seed).At(static_cast<std::uint64_t>(number))) {}

  void Judge(const StudyTables& tables, std::span<const TailTable> tails) {
    const std::span<const HospitalOutcomes> outcomes = tables.Outcomes();
    const HyperPosterior posterior =
        AddEffects(evidence_.effects, outcomes, layout_.tauGrid, layout_.start, settings_.meanModel,
                   tables.LogCases(), tables.MeanLogOdds());
    const PredictiveDistribution predictive(posterior);
    const std::size_t draws = Index(settings_.drawsPerStudy);
    const std::vector<std::uint32_t> points = PointsOfDraws(posterior, draws, random_);
    std::vector<double> uniform(draws);
    std::vector<double> effects(draws);
    std::vector<double> effectsOfAll(draws * outcomes.size());
    std::vector<double> aboveOne(outcomes.size(), std::nan(""));
    for (std::size_t h = 0; h < outcomes.size(); ++h) {
      for (std::size_t r = 0; r < draws; ++r) {
        uniform[r] = random_.At(h).At(r).Uniform();
      }
      if (outcomes[h].curve->Patients() > 0) {
        ShrunkenEvidence study = JudgeShrunken(outcomes[h], posterior, layout_.ratioGrids[h],
                                               {points, uniform, effects});
        study.predictive = tails[h].MeanOver(layout_.etaGrids[h], predictive);
        aboveOne[h] = 1 - study.distribution[layout_.ratioGrids[h].one];
        evidence_.shrunken[h].Add(study);
      } else {
        // Nothing is known of it in this study but what is known of all.
        for (std::size_t r = 0; r < draws; ++r) {
          effects[r] = posterior.points[points[r]].at.tau * NormalQuantile(uniform[r]);
        }
      }
      for (std::size_t r = 0; r < draws; ++r) {
        effectsOfAll[r * outcomes.size() + h] = effects[r];
      }
    }
    AddTauWithoutFlagged(evidence_.effects, outcomes, aboveOne, posterior.fit, settings_.meanModel);
    std::vector<std::uint32_t> order;
    for (std::size_t r = 0; r < draws; ++r) {
      AppendRanks(evidence_.ranks,
                  std::span(effectsOfAll).subspan(r * outcomes.size(), outcomes.size()), order);
    }
  }

 private:
  ProfileEvidence& evidence_;
  const ProfileLayout& layout_;
  const ProfileSettings& settings_;
  CounterRandom random_;
};

}  // namespace

void ProfileEvidence::Add(const ProfileEvidence& other) {
  assert(ratios.size() == other.ratios.size());
  for (std::size_t h = 0; h < ratios.size(); ++h) {
    ratios[h].Add(other.ratios[h]);
    shrunken[h].Add(other.shrunken[h]);
    for (std::size_t k = 0; k < kRiskTenths; ++k) {
      tenths[h][k].cases += other.tenths[h][k].cases;
      tenths[h][k].observed += other.tenths[h][k].observed;
      tenths[h][k].expected += other.tenths[h][k].expected;
    }
  }
  effects.Add(other.effects);
  ranks.insert(ranks.end(), other.ranks.begin(), other.ranks.end());
}

std::vector<std::int32_t> CountUncertainEvents(const DataSet& dataSet) {
  std::vector<std::int32_t> counts(Index(dataSet.hospitalCount));
  for (std::int32_t i = 0; i < dataSet.recordCount; ++i) {
    if (dataSet.y.Get(i) && dataSet.p.IsMissing(i)) {
      ++counts[Index(dataSet.recordHospital[i])];
    }
  }
  return counts;
}

ProfileLayout MakeProfileLayout(const CompletedStudy& first,
                                std::span<const std::int32_t> uncertainEvents,
                                const ProfileSettings& settings) {
  const std::size_t count = Index(first.HospitalCount());
  ProfileLayout layout;
  layout.etaGrids.resize(count);
  layout.riskCuts = RiskCuts(first);
  StudyTables tables(count);
  std::vector<double> risks;
  const auto tabulate = [&](const EtaRange& range) {
    for (std::size_t h = 0; h < count; ++h) {
      const HospitalCases cases = GatherCases(risks, first, static_cast<std::int32_t>(h));
      EtaRange own = range;
      own.uncertainEvents = uncertainEvents[h];
      layout.etaGrids[h] = MakeEtaGrid(risks, cases.observed, own);
      CumulantTable table;
      TabulateCumulants(table, layout.etaGrids[h], risks);
      tables.Set(h, table, layout.etaGrids[h], risks, cases.observed);
    }
    tables.SetCovariate(settings.meanModel);
  };
  // Once as if the average hospital were like the reference, to learn how far it is from there.
  tabulate({});
  layout.hasModel = HasEffectModel(tables.Outcomes());
  if (!layout.hasModel) {
    return layout;
  }
  constexpr double kReach = 6;  // standard deviations between hospitals
  constexpr double kLeast = 1;
  constexpr double kMost = 6;
  const EffectFit rough = FitEffects(tables.Outcomes(), {}, settings.meanModel);
  const double largestTau = MakeTauGrid(tables.Outcomes(), rough, settings.meanModel).End();
  layout.start = rough.at;
  tabulate({rough.at.mu,
            std::clamp(std::max(kReach * rough.at.tau, kReach / 2 * largestTau), kLeast, kMost),
            0});
  const EffectFit fit = FitEffects(tables.Outcomes(), layout.start, settings.meanModel);
  layout.start = fit.at;
  layout.tauGrid = MakeTauGrid(tables.Outcomes(), fit, settings.meanModel);
  const HyperPosterior posterior =
      MakeHyperPosterior(tables.Outcomes(), layout.tauGrid, fit, settings.meanModel);
  layout.ratioGrids.resize(count);
  for (std::size_t h = 0; h < count; ++h) {
    const HospitalOutcomes& outcomes = tables.Outcomes()[h];
    if (outcomes.curve->Patients() > 0) {
      const double information = std::max(0.25, outcomes.curve->At(layout.start.mu).curvature);
      const double uncertainty = std::sqrt(1.2 + uncertainEvents[h] / (4 * information));
      layout.ratioGrids[h] = MakeRatioGrid(outcomes, posterior, settings.threshold, uncertainty);
    } else {
      layout.ratioGrids[h] = SpanRatioGrid(-kMost, kMost, settings.threshold);
    }
  }
  return layout;
}

void JudgeStudy(ProfileEvidence& evidence, const CompletedStudy& study, std::int32_t number,
                const ProfileLayout& layout, const ProfileSettings& settings) {
  const std::size_t count = Index(study.HospitalCount());
  StudyTables tables(count);
  std::vector<TailTable> tails(count);
  std::vector<double> risks;
  TailComputation computation;
  for (std::size_t h = 0; h < count; ++h) {
    const auto hospital = static_cast<std::int32_t>(h);
    const HospitalCases cases = GatherCases(risks, study, hospital);
    CumulantTable table;
    TabulateCumulants(table, layout.etaGrids[h], risks);
    tables.Set(h, table, layout.etaGrids[h], risks, cases.observed);
    const ReferenceTails reference = computation.Compute(tails[h], layout.etaGrids[h], table, risks,
                                                         static_cast<std::int64_t>(cases.observed));
    evidence.ratios[h].Add(table, tails[h], reference, static_cast<double>(risks.size()),
                           cases.observed, cases.expected);
    AddTenths(evidence.tenths[h], layout.riskCuts, study, hospital);
  }
  tables.SetCovariate(settings.meanModel);
  if (layout.hasModel && HasEffectModel(tables.Outcomes())) {
    ModelJudgement(evidence, layout, settings, number).Judge(tables, tails);
  }
}

}  // namespace Hovar
