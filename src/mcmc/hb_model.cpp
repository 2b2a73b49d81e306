#include "mcmc/hb_model.h"

#include "foundation/io/standard_writers.h"
#include "messages/output_lines.h"

namespace Hovar {

HBModel::HBModel(DataSet& dataSet, const Vell::Vector& pGivenX, const Vell::Vector& priorTable,
                 const HBModelSettings& settings)
    : settings_(settings),
      betaYX_(dataSet, settings.regression),
      imputeData_(dataSet, betaYX_, pGivenX, priorTable) {}

void HBModel::Run() {
  Vell::Mcmc::McmcRunParameters parameters;
  parameters.folder = settings_.chainFolder;
  parameters.reportInterval = 1;
  parameters.thinning = settings_.mcmc.thinning;
  parameters.burnin = settings_.mcmc.burnin;
  parameters.steps = settings_.mcmc.steps;
  McmcModel::Run(parameters);
}

void HBModel::Initialize() {
  Register(imputeData_);
  Register(betaYX_);
}

void HBModel::ReportProgress(std::int32_t iteration, bool isBurnin) {
  Vell::IO::TextWriter& output = Vell::IO::StandardOutput();
  const double intercept = betaYX_.Values()[0];
  if (isBurnin) {
    output.WriteMessage(Messages::kLines.burnin, iteration, intercept);
  } else {
    output.WriteMessage(Messages::kLines.mcmc, iteration, intercept);
  }
}

}  // namespace Hovar
