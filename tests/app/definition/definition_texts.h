#pragma once

// The contents of root elements with a different value in every element.

namespace Testing {

inline constexpr char kAnalysisContent[] =
    "<Input><Data> in\\data.csv</Data><NumberOfPoaIndicators>3</NumberOfPoaIndicators></Input>"
    "<Output><Folder>out/</Folder><RegressionCoefficients>coefficients.csv"
    "</RegressionCoefficients><McmcSubFolder>chain</McmcSubFolder><LogFile>run.log</LogFile>"
    "</Output><Regression>"
    "<UseGeneralizedEstimatingEquations>true</UseGeneralizedEstimatingEquations>"
    "<LinearDependence><Tolerance>1e-9</Tolerance></LinearDependence>"
    "<Parameters><Tolerance>0.25</Tolerance><MaxIterations>50</MaxIterations>"
    "<PriorPrecision>1.5</PriorPrecision></Parameters>"
    "<ParametersMcmc><Tolerance>0.125</Tolerance><MaxIterations>-7</MaxIterations>"
    "<PriorPrecision>-2</PriorPrecision></ParametersMcmc></Regression>"
    "<Mcmc><Seed xsi:type=\"Vector\"><Seed><Element>1</Element><Element>0</Element></Seed></Seed>"
    "<Thinning>4</Thinning><Burnin>5</Burnin><Steps>6</Steps></Mcmc>";

inline constexpr char kPredictionContent[] =
    "<Input><Data>data.csv</Data><NumberOfPoaIndicators>2</NumberOfPoaIndicators>"
    "<RegressionCoefficients>in/coefficients.csv</RegressionCoefficients></Input>"
    "<Output><Folder>out</Folder><IndividualPredictions>individual.csv</IndividualPredictions>"
    "<HospitalPredictions>hospital.csv</HospitalPredictions><LogFile>run.log</LogFile></Output>"
    "<Mcmc><Seed xsi:type=\"Vector\"><Seed><Element>1</Element><Element>0</Element></Seed></Seed>"
    "<Thinning>4</Thinning><Burnin>5</Burnin><Steps>6</Steps></Mcmc>";

inline constexpr char kValidationContent[] =
    "<Input><Data>data.csv</Data><NumberOfPoaIndicators>2</NumberOfPoaIndicators>"
    "<RegressionCoefficients>in/coefficients.csv</RegressionCoefficients>"
    "<IndividualPredictions>in/individual.csv</IndividualPredictions></Input>"
    "<Output><Folder>out</Folder><CStatistics>cstatistics.csv</CStatistics>"
    "<LogFile>run.log</LogFile></Output>"
    "<Mcmc><Seed xsi:type=\"Vector\"><Seed><Element>1</Element><Element>0</Element></Seed></Seed>"
    "<Thinning>4</Thinning><Burnin>5</Burnin><Steps>6</Steps></Mcmc>";

}  // namespace Testing
