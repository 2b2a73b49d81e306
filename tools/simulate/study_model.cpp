#include "study_model.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "hospital_sizes.h"
#include "random_source.h"

namespace Hovar::Simulate {
namespace {

// Names of the first ordinary variables; the later ones are numbered. The first and the eleventh
// are frequent findings.
constexpr std::array<std::string_view, 16> kNames = {
    "Emergency",    "Age80",  "Diabetes", "HeartFailure", "KidneyDisease", "LungDisease",
    "LiverDisease", "Anemia", "Stroke",   "Cancer",       "Hypertension",  "Obesity",
    "Dementia",     "Smoker", "Asthma",   "Arthritis"};

// Every tenth ordinary variable is a frequent one.
constexpr std::size_t kFrequentStride = 10;

// The never seen variable has up to so many others before it, so that removing it moves columns.
constexpr std::size_t kNeverSeenPosition = 2;

constexpr double kClassCount = 10.0;
constexpr double kOutcomeRate = 0.10;
constexpr double kPoaRate = 0.05;

double LogOdds(double probability) { return std::log(probability / (1.0 - probability)); }

void DrawConditionals(Variable& variable, RandomSource& random) {
  variable.xGivenZ0 = random.Uniform(0.002, 0.02);
  variable.xGivenZ1 = random.Uniform(0.6, 0.95);
}

void DrawCoefficients(Variable& variable, RandomSource& random) {
  variable.outcomeCoefficient = random.Uniform(-0.3, 0.8);
  variable.poaCoefficient = random.Uniform(-0.3, 0.8);
}

// The prevalence at which kClassCount records with Z = 1 and a known X can be expected.
double SmallestPrevalence(const Options& options) {
  return std::min(0.5,
                  kClassCount / (static_cast<double>(options.records) * (1.0 - options.missingX)));
}

double DrawPrevalence(double low, double high, double smallest, RandomSource& random) {
  const double raised = std::max(low, smallest);
  return random.Uniform(raised, std::max(high, raised));
}

Variable DrawOrdinary(std::size_t position, double smallest, RandomSource& random) {
  Variable variable;
  variable.name = position < kNames.size() ? std::string(kNames[position])
                                           : "Factor" + std::to_string(position + 1);
  variable.zPrevalence = position % kFrequentStride == 0
                             ? DrawPrevalence(0.20, 0.50, smallest, random)
                             : DrawPrevalence(0.01, 0.15, smallest, random);
  DrawConditionals(variable, random);
  DrawCoefficients(variable, random);
  return variable;
}

Variable DrawNeverSeen(double smallest, RandomSource& random) {
  Variable variable;
  variable.name = "NeverSeen";
  variable.zPrevalence = DrawPrevalence(0.01, 0.15, smallest, random);
  return variable;
}

// Appends d, a, b, c. With pairs of 1.5 to 3 % a test is 1 in 3 to 6 % of the records and d in 4.5
// to 9 %; the Z prevalences that follow from this and the conditional probabilities lie between 1
// and 15 %. In small files all of them are larger, up to 4 to 8 % for a pair.
DependentGroup AppendDependent(std::vector<Variable>& variables, double smallest,
                               RandomSource& random) {
  DependentGroup group;
  group.first = variables.size();
  const double low = std::clamp(smallest, 0.015, 0.04);
  for (double& pair : group.pairs) {
    pair = random.Uniform(low, 2.0 * low);
  }
  const auto& [ab, ac, bc] = group.pairs;
  const std::array<std::string_view, DependentGroup::kSize> names = {"Confirmed", "TestA", "TestB",
                                                                     "TestC"};
  const std::array<double, DependentGroup::kSize> xPrevalences = {ab + ac + bc, ab + ac, ab + bc,
                                                                  ac + bc};
  for (std::size_t i = 0; i < DependentGroup::kSize; ++i) {
    Variable variable;
    variable.name = names[i];
    DrawConditionals(variable, random);
    variable.zPrevalence =
        (xPrevalences[i] - variable.xGivenZ0) / (variable.xGivenZ1 - variable.xGivenZ0);
    if (i > 0) {  // d has no effect: it could not be separated from those of the tests
      DrawCoefficients(variable, random);
    }
    variables.push_back(std::move(variable));
  }
  return group;
}

void DrawVariables(StudyModel& model, const Options& options) {
  RandomSource random(options.seed, Purpose::kVariables);
  const double smallest = SmallestPrevalence(options);
  const std::size_t ordinary = static_cast<std::size_t>(options.variables) -
                               (options.zeroColumn ? 1 : 0) -
                               (options.dependentColumn ? DependentGroup::kSize : 0);
  for (std::size_t position = 0; position < ordinary; ++position) {
    model.variables.push_back(DrawOrdinary(position, smallest, random));
  }
  if (options.zeroColumn) {
    model.neverSeen = std::min(kNeverSeenPosition, ordinary);
    model.variables.insert(model.variables.begin() + static_cast<std::ptrdiff_t>(*model.neverSeen),
                           DrawNeverSeen(smallest, random));
  }
  if (options.dependentColumn) {
    model.dependent = AppendDependent(model.variables, smallest, random);
  }
}

// Sets the intercepts so that the log-odds of the average patient are those of the wanted rates.
void SetIntercepts(StudyModel& model) {
  model.outcomeIntercept = LogOdds(kOutcomeRate);
  model.poaIntercept = LogOdds(kPoaRate);
  for (const Variable& variable : model.variables) {
    model.outcomeIntercept -= variable.XPrevalence() * variable.outcomeCoefficient;
    model.poaIntercept -= variable.XPrevalence() * variable.poaCoefficient;
  }
}

void DrawHospitals(StudyModel& model, const Options& options) {
  RandomSource random(options.seed, Purpose::kHospitals);
  for (const std::int32_t size : DrawHospitalSizes(options.records, options.hospitals, random)) {
    model.hospitals.push_back({.size = size, .effect = 0.0});
  }
  for (Hospital& hospital : model.hospitals) {
    hospital.effect = options.hospitalEffect * random.Normal();
  }
}

}  // namespace

double Variable::XPrevalence() const {
  return zPrevalence * xGivenZ1 + (1.0 - zPrevalence) * xGivenZ0;
}

double Variable::ZGivenX0() const { return zPrevalence * (1.0 - xGivenZ1) / (1.0 - XPrevalence()); }

double Variable::ZGivenX1() const { return zPrevalence * xGivenZ1 / XPrevalence(); }

double Logistic(double logOdds) { return 1.0 / (1.0 + std::exp(-logOdds)); }

StudyModel DrawStudyModel(const Options& options) {
  StudyModel model;
  DrawVariables(model, options);
  SetIntercepts(model);
  DrawHospitals(model, options);
  return model;
}

}  // namespace Hovar::Simulate
