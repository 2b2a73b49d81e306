#include "tiny_study.h"

#include "runs.h"

namespace Testing {
namespace {

std::string McmcBlock() {
  return "<Mcmc>\n"
         "<Seed xsi:type=\"Vector\">\n"
         "<Seed>\n"
         "<Element>3</Element>\n"
         "<Element>5</Element>\n"
         "</Seed>\n"
         "</Seed>\n"
         "<Thinning>1</Thinning>\n"
         "<Burnin>0</Burnin>\n"
         "<Steps>0</Steps>\n"
         "</Mcmc>\n";
}

std::string ParametersBlock(const std::string& name) {
  return "<" + name +
         ">\n"
         "<Tolerance>1e-8</Tolerance>\n"
         "<MaxIterations>50</MaxIterations>\n"
         "<PriorPrecision>0</PriorPrecision>\n"
         "</" +
         name + ">\n";
}

}  // namespace

std::string AnalysisText() {
  return "<Analysis>\n"
         "<Input>\n"
         "<Data>data.csv</Data>\n"
         "<NumberOfPoaIndicators>1</NumberOfPoaIndicators>\n"
         "</Input>\n"
         "<Output>\n"
         "<Folder>out</Folder>\n"
         "<RegressionCoefficients>fitted.csv</RegressionCoefficients>\n"
         "<McmcSubFolder>mcmc</McmcSubFolder>\n"
         "<LogFile>analysis.log</LogFile>\n"
         "</Output>\n"
         "<Regression>\n"
         "<UseGeneralizedEstimatingEquations>false</UseGeneralizedEstimatingEquations>\n"
         "<LinearDependence>\n"
         "<Tolerance>1e-9</Tolerance>\n"
         "</LinearDependence>\n" +
         ParametersBlock("Parameters") + ParametersBlock("ParametersMcmc") + "</Regression>\n" +
         McmcBlock() + "</Analysis>\n";
}

std::string Clustered(const std::string& analysis) {
  return Replaced(analysis, "Equations>false<", "Equations>true<");
}

std::string LongAnalysisText() {
  return Replaced(Replaced(AnalysisText(), "<Thinning>1<", "<Thinning>10000000<"), "<Burnin>0<",
                  "<Burnin>100000000<");
}

std::string PredictionText() {
  return "<Prediction>\n"
         "<Input>\n"
         "<Data>data.csv</Data>\n"
         "<NumberOfPoaIndicators>1</NumberOfPoaIndicators>\n"
         "<RegressionCoefficients>coefficients.csv</RegressionCoefficients>\n"
         "</Input>\n"
         "<Output>\n"
         "<Folder>out</Folder>\n"
         "<IndividualPredictions>predicted.csv</IndividualPredictions>\n"
         "<HospitalPredictions>hospital.csv</HospitalPredictions>\n"
         "<LogFile>prediction.log</LogFile>\n"
         "</Output>\n" +
         McmcBlock() + "</Prediction>\n";
}

std::string ValidationText() {
  return "<Validation>\n"
         "<Input>\n"
         "<Data>data.csv</Data>\n"
         "<NumberOfPoaIndicators>1</NumberOfPoaIndicators>\n"
         "<RegressionCoefficients>coefficients.csv</RegressionCoefficients>\n"
         "<IndividualPredictions>individual.csv</IndividualPredictions>\n"
         "</Input>\n"
         "<Output>\n"
         "<Folder>out</Folder>\n"
         "<CStatistics>cstatistics.csv</CStatistics>\n"
         "<LogFile>validation.log</LogFile>\n"
         "</Output>\n" +
         McmcBlock() + "</Validation>\n";
}

std::string BatchText(const std::vector<std::string>& definitions) {
  std::string text = "<Batch>\n<Simulations>\n";
  for (const std::string& definition : definitions) {
    text += "<Simulation>" + definition + "</Simulation>\n";
  }
  return text + "</Simulations>\n</Batch>\n";
}

TinyStudy::TinyStudy() {
  Write("data.csv", kTinyData);
  Write("coefficients.csv", std::string(kCoefficientHeader) + kModelRow);
  Write("individual.csv", std::string(kIndividualHeader) + kIndividualRows);
  Write("analysis.xml", AnalysisText());
  Write("prediction.xml", PredictionText());
  Write("validation.xml", ValidationText());
}

ProcessResult RunText(const TinyStudy& study, const std::string& definition) {
  study.Write("d.xml", definition);
  return RunHovar(study, {"d.xml"});
}

std::string WithValues(std::string text,
                       const std::vector<std::pair<std::string, std::string>>& values) {
  for (const auto& [name, value] : values) {
    const std::string tag = "<" + name + ">";
    const std::size_t start = text.find(tag) + tag.size();
    text.replace(start, text.find('<', start) - start, value);
  }
  return text;
}

}  // namespace Testing
