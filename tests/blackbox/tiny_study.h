#pragma once

// A study so small that all its numbers are worked by hand: six records of two hospitals, one
// indicator, no covariates, so that every model has nothing but an intercept.

#include <string>
#include <utility>
#include <vector>

#include "support/files.h"
#include "support/process.h"

namespace Testing {

/// y = 1 in 3 of 6 records; P = 1 in 1 of 6; y = 1 in 2 of the 5 records with P = 0.
inline constexpr char kTinyData[] =
    "Key,Hospital,Y,POA\n"
    "a,A,1,1\n"
    "b,A,1,0\n"
    "c,A,0,0\n"
    "d,B,1,0\n"
    "e,B,0,0\n"
    "f,B,0,0\n";

/// The same form with four hospitals that differ, for fits with generalized estimating equations.
inline constexpr char kClusteredData[] =
    "Key,Hospital,Y,POA\n"
    "a,A,1,1\nb,A,1,0\nc,A,1,0\nd,A,0,0\n"
    "e,B,0,0\nf,B,0,0\ng,B,0,0\nh,B,1,0\n"
    "i,C,1,0\nj,C,1,0\nk,C,0,0\n"
    "l,D,0,0\nm,D,0,0\nn,D,1,1\n";

/// A definition of an Analysis with the flag `true`.
std::string Clustered(const std::string& analysis);

/// What reading it reports, to the end of the first counts.
inline constexpr char kTinyReading[] =
    "Reading data file...\n"
    "Number of records: 6\n"
    "Number of variables: 1\n"
    "Reading data...\n"
    "Hospital: A record: 0 / 6\n"
    "Hospital: B record: 3 / 6\n"
    "Number of hospitals: 2\n"
    "Counting non missing records:\n"
    "Number of non-missing records: 6\n"
    "Number of non-missing records with P = 0: 5\n";

/// The part of it that goes to the log.
inline constexpr char kTinyReadingLog[] =
    "Number of records: 6\n"
    "Number of variables: 1\n"
    "Number of hospitals: 2\n"
    "Counting non missing records:\n"
    "Number of non-missing records: 6\n"
    "Number of non-missing records with P = 0: 5\n";

inline constexpr char kTinyElimination[] =
    "Eliminating Z zero columns\n"
    "Eliminating X zero columns\n"
    "Eliminating dependent Z columns\n"
    "Eliminating dependent X columns P = 0\n";

inline constexpr char kTinyFits[] =
    "Regression analysis\n"
    "[P|X]\n"
    "[Y|Z]\n"
    "[Y|X]\n"
    "[Y|X,P=0]\n"
    "MCMC Analysis\n";

inline constexpr char kCoefficientHeader[] =
    "Variables Names,,[X|Z],,,,[P|X],mse,ese,[Y|Z],mse,ese,[Y|X],mse,ese,\"[Y|X,P=0]\",mse,ese,"
    "\"[Y|X,P=0,MCMC]\",mse,ese\n";

/// What an analysis of it without a prior and without a chain writes. The estimate of an intercept
/// alone is log(k / (n - k)) with the standard error 1 / sqrt(k (n - k) / n):
/// [P|X]     k = 1 of 6: log(1/5) = -1.60944, 1 / sqrt(5/6) = 1.09545
/// [Y|Z]     k = 3 of 6: log(1) = 0,          1 / sqrt(3/2) = 0.816497, and the same for [Y|X]
/// [Y|X,P=0] k = 2 of 5: log(2/3) = -0.405465, 1 / sqrt(6/5) = 0.912871
inline constexpr char kTinyCoefficients[] =
    "XIntercept,ZIntercept,,,,,-1.60944,1.09545,,0,0.816497,,0,0.816497,,-0.405465,0.912871,,"
    "0,0,\n";

/// A coefficient file for predictions: log(1/3), 0, log(3), 0, log(1/3), so that [P|X] predicts
/// 1/4, [Y|Z] 1/2, [Y|X] 3/4, [Y|X,P=0] 1/2 and its MCMC form 1/4.
inline constexpr char kModelRow[] =
    "XIntercept,ZIntercept,,,,,-1.0986122886681098,,,0,,,1.0986122886681098,,,0,,,"
    "-1.0986122886681098,,\n";

inline constexpr char kIndividualHeader[] =
    "Key,Hospital ID,Y,E[Y|Z],E[Y|X],E[Y|P=0],\"E[Y|X,P=0]\",\"E[Y|X,P=0]-MCMC\",P,E[P|X],"
    "E[P|YPXZ]\n";

/// Individual predictions for a validation, each column with a C-statistic worked by hand; see
/// kTinyStatistics.
inline constexpr char kIndividualRows[] =
    "a,A,1,0.9,0.75,0,0,0,1,0.3,1\n"
    "b,A,1,0.6,0.75,1,0.5,0.1,0,0.1,0\n"
    "c,A,0,0.6,0.75,0,0.1,0.5,0,0.2,0\n"
    "d,B,1,0.2,0.75,1,0.4,0.2,0,0.3,0\n"
    "e,B,0,0.1,0.75,0,0.2,0.4,0,0.4,0\n"
    "f,B,0,0.3,0.75,0,0.3,0.3,0,0.5,0\n";

/// E[Y|Z]: 0.9, 0.6, 0.2 against 0.6, 0.1, 0.3 score 6 + 5 + 2 = 13 of 18. E[Y|X]: all equal.
/// E[Y|X,P=0] without record a: 0.5, 0.4 against 0.1, 0.2, 0.3, all larger; its MCMC form: 0.1, 0.2
/// against 0.5, 0.4, 0.3, all smaller. E[P|X]: 0.3 against 0.1, 0.2, 0.3, 0.4, 0.5 scores
/// 2 + 2 + 1 = 5 of 10. E[P|YPXZ]: 1 against zeros.
inline constexpr char kTinyStatistics[] =
    "Estimate,C-Statistics\n"
    "E[Y|Z],0.722222\n"
    "E[Y|X],0.5\n"
    "\"E[Y|X,P=0]\",1\n"
    "\"E[Y|X,P=0]-MCMC\",0\n"
    "E[P|X],0.5\n"
    "E[P|YPXZ],1\n";

/// Definitions of the three kinds of single runs, one element a line. They read data.csv,
/// coefficients.csv and individual.csv and write below out/.
std::string AnalysisText();
/// An analysis with a chain that takes minutes and keeps next to nothing of it.
std::string LongAnalysisText();
std::string PredictionText();
std::string ValidationText();
std::string BatchText(const std::vector<std::string>& definitions);

/// A scratch folder with data.csv, coefficients.csv, individual.csv, analysis.xml, prediction.xml
/// and validation.xml.
class TinyStudy : public ScratchFolder {
 public:
  TinyStudy();
};

/// Runs a definition, which becomes the file d.xml.
ProcessResult RunText(const TinyStudy& study, const std::string& definition);

/// A definition with other values in the first elements of these names.
std::string WithValues(std::string text,
                       const std::vector<std::pair<std::string, std::string>>& values);

}  // namespace Testing
