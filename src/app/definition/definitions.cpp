#include "app/definition/definitions.h"

#include <utility>

#include "foundation/exceptions/exceptions.h"
#include "foundation/random/random_generator.h"
#include "messages/error_texts.h"

namespace Hovar {
namespace {

using Vell::Exceptions::Exception;

WorkingCorrelation ReadWorkingCorrelation(Vell::XmlReader& reader) {
  const Vell::String text = reader.ReadTextElement("UseGeneralizedEstimatingEquations");
  if (text.View() == "true") {
    return WorkingCorrelation::kExchangeable;
  }
  if (text.View() == "false") {
    return WorkingCorrelation::kIndependent;
  }
  throw Exception(Messages::kErrors.invalidFlag);
}

RegressionParameters ReadRegressionParameters(Vell::XmlReader& reader, std::string_view name) {
  RegressionParameters parameters;
  reader.ReadStartTag(name);
  parameters.tolerance = reader.ReadRealElement("Tolerance");
  parameters.maxIterations = reader.ReadIntegerElement("MaxIterations");
  parameters.priorPrecision = reader.ReadRealElement("PriorPrecision");
  reader.ReadEndTag(name);
  return parameters;
}

McmcSettings ReadMcmcSettings(Vell::XmlReader& reader) {
  McmcSettings settings;
  reader.ReadStartTag("Mcmc");
  Vell::RandomGenerator::ReadXml(reader);
  settings.thinning = reader.ReadIntegerElement("Thinning");
  settings.burnin = reader.ReadIntegerElement("Burnin");
  settings.steps = reader.ReadIntegerElement("Steps");
  reader.ReadEndTag("Mcmc");
  return settings;
}

}  // namespace

AnalysisDefinition ReadAnalysisDefinition(Vell::XmlReader& reader) {
  AnalysisDefinition definition;
  reader.ReadStartTag("Input");
  definition.data = reader.ReadTextElement("Data");
  definition.numberOfPoaIndicators = reader.ReadIntegerElement("NumberOfPoaIndicators");
  reader.ReadEndTag("Input");
  reader.ReadStartTag("Output");
  definition.folder = reader.ReadTextElement("Folder");
  definition.regressionCoefficients = reader.ReadTextElement("RegressionCoefficients");
  definition.mcmcSubFolder = reader.ReadTextElement("McmcSubFolder");
  definition.logFile = reader.ReadTextElement("LogFile");
  reader.ReadEndTag("Output");
  reader.ReadStartTag("Regression");
  definition.useGeneralizedEstimatingEquations = ReadWorkingCorrelation(reader);
  reader.ReadStartTag("LinearDependence");
  definition.linearDependenceTolerance = reader.ReadRealElement("Tolerance");
  reader.ReadEndTag("LinearDependence");
  definition.parameters = ReadRegressionParameters(reader, "Parameters");
  definition.parametersMcmc = ReadRegressionParameters(reader, "ParametersMcmc");
  reader.ReadEndTag("Regression");
  definition.mcmc = ReadMcmcSettings(reader);
  return definition;
}

PredictionDefinition ReadPredictionDefinition(Vell::XmlReader& reader) {
  PredictionDefinition definition;
  reader.ReadStartTag("Input");
  definition.data = reader.ReadTextElement("Data");
  definition.numberOfPoaIndicators = reader.ReadIntegerElement("NumberOfPoaIndicators");
  definition.regressionCoefficients = reader.ReadTextElement("RegressionCoefficients");
  reader.ReadEndTag("Input");
  reader.ReadStartTag("Output");
  definition.folder = reader.ReadTextElement("Folder");
  definition.individualPredictions = reader.ReadTextElement("IndividualPredictions");
  definition.hospitalPredictions = reader.ReadTextElement("HospitalPredictions");
  definition.logFile = reader.ReadTextElement("LogFile");
  reader.ReadEndTag("Output");
  definition.mcmc = ReadMcmcSettings(reader);
  return definition;
}

ValidationDefinition ReadValidationDefinition(Vell::XmlReader& reader) {
  ValidationDefinition definition;
  reader.ReadStartTag("Input");
  definition.data = reader.ReadTextElement("Data");
  definition.numberOfPoaIndicators = reader.ReadIntegerElement("NumberOfPoaIndicators");
  definition.regressionCoefficients = reader.ReadTextElement("RegressionCoefficients");
  definition.individualPredictions = reader.ReadTextElement("IndividualPredictions");
  reader.ReadEndTag("Input");
  reader.ReadStartTag("Output");
  definition.folder = reader.ReadTextElement("Folder");
  definition.cStatistics = reader.ReadTextElement("CStatistics");
  definition.logFile = reader.ReadTextElement("LogFile");
  reader.ReadEndTag("Output");
  definition.mcmc = ReadMcmcSettings(reader);
  return definition;
}

BatchDefinition ReadBatchDefinition(Vell::XmlReader& reader) {
  BatchDefinition definition;
  reader.ReadStartTag("Simulations");
  for (Vell::XmlTag tag = reader.ReadTag(); !tag.IsEnd("Simulations"); tag = reader.ReadTag()) {
    if (!tag.IsStart("Simulation") || tag.isEmpty) {
      throw Exception(Messages::kErrors.invalidBatch);
    }
    definition.Append(reader.ReadText());
    reader.ReadEndTag("Simulation");
  }
  return definition;
}

}  // namespace Hovar
