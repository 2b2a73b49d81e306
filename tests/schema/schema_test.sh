#!/bin/sh
# Tries the schema of definition files on the examples and on a table of definitions with one fault
# each. Needs xmllint (Debian: libxml2-utils). Usage: schema_test.sh SOURCE_FOLDER
set -eu
cd "$1"
schema=share/hovar/hovar-definition.xsd
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

validates() {
  xmllint --noout --nonet --schema "$schema" "$1" > "$work/report" 2>&1
}

accept() { # FILE
  validates "$1" && return
  echo "not accepted: $1"
  cat "$work/report"
  failures=$((failures + 1))
}

# Changes the quick start's definition of a kind with a sed command, which must change something.
change() { # KIND COMMAND
  sed "$2" "examples/quickstart/$1.xml" > "$work/changed.xml"
  if cmp -s "examples/quickstart/$1.xml" "$work/changed.xml"; then
    echo "changes nothing: $1 $2"
    failures=$((failures + 1))
  fi
}

refuse() { # KIND COMMAND
  change "$1" "$2"
  if validates "$work/changed.xml"; then
    echo "not refused: $1 $2"
    failures=$((failures + 1))
  elif ! grep -q "fails to validate" "$work/report"; then
    echo "no XML: $1 $2"
    failures=$((failures + 1))
  fi
}

take() { # KIND COMMAND
  change "$1" "$2"
  accept "$work/changed.xml"
}

for example in examples/*/*.xml; do
  accept "$example"
  # The path that the example gives leads to the schema.
  location=$(sed -n 's/.*noNamespaceSchemaLocation="\([^"]*\)".*/\1/p' "$example")
  if ! cmp -s "$(dirname "$example")/$location" "$schema"; then
    echo "$example does not refer to the schema"
    failures=$((failures + 1))
  fi
done

# Names and order.
for kind in analysis prediction validation batch; do
  refuse "$kind" 's/Analysis\|Prediction\b\|Validation\|Batch/Study/'
done
refuse analysis 's/Data>/data>/g'
refuse analysis '/<Data>/d'
refuse analysis '/<NumberOfPoaIndicators>/d'
refuse analysis '/<Folder>/d'
refuse analysis '/<RegressionCoefficients>/d'
refuse analysis '/<McmcSubFolder>/d'
refuse analysis '/<LogFile>/d'
refuse analysis '/<UseGeneralizedEstimatingEquations>/d'
refuse analysis '/<MaxIterations>/d'
refuse analysis '/<PriorPrecision>/d'
refuse analysis '/<Thinning>/d'
refuse analysis '/<Burnin>/d'
refuse analysis '/<Steps>/d'
refuse analysis 's/<Data>/<Title>x<\/Title><Data>/'
refuse analysis 's/<Data>/<Data kind="csv">/'
refuse analysis 's/<Input>/<Input>text/'
refuse analysis 's/Parameters>/ParametersMcmc>/'
refuse prediction '/<RegressionCoefficients>/d'
refuse prediction '/<IndividualPredictions>/d'
refuse prediction '/<HospitalPredictions>/d'
refuse prediction '/<Mcmc>/,/<\/Mcmc>/d'
refuse validation '/<IndividualPredictions>/d'
refuse validation '/<CStatistics>/d'
refuse batch 's/Simulations>/Runs>/'
refuse batch 's/Simulation>/Run>/g'
# Values.
refuse analysis 's/<Data>.*</<Data></'
refuse analysis 's/<Data>/<Data> /'
refuse analysis 's/<\/LogFile>/ &/'
refuse analysis 's/<NumberOfPoaIndicators>.*</<NumberOfPoaIndicators>-1</'
refuse analysis 's/<NumberOfPoaIndicators>.*</<NumberOfPoaIndicators>1.5</'
refuse analysis 's/<NumberOfPoaIndicators>.*</<NumberOfPoaIndicators>many</'
refuse analysis 's/<NumberOfPoaIndicators>.*</<NumberOfPoaIndicators>4294967297</'
refuse analysis 's/>false</>False</'
refuse analysis 's/>false</> false</'
refuse analysis 's/>false</>0</'
refuse analysis 's/<Tolerance>.*</<Tolerance>0</'
refuse analysis 's/<Tolerance>.*</<Tolerance>1</'
refuse analysis 's/<Tolerance>.*</<Tolerance>-1e-9</'
refuse analysis 's/<Tolerance>.*</<Tolerance>NaN</'
refuse analysis 's/<Tolerance>.*</<Tolerance>small</'
refuse analysis 's/<MaxIterations>.*</<MaxIterations>0</'
refuse analysis 's/<PriorPrecision>.*</<PriorPrecision>-0.1</'
refuse analysis 's/<PriorPrecision>.*</<PriorPrecision>INF</'
refuse analysis 's/<Thinning>.*</<Thinning>0</'
refuse analysis 's/<Burnin>.*</<Burnin>-1</'
refuse analysis 's/<Steps>.*</<Steps>-1</'
refuse analysis 's/<Steps>.*</<Steps></'
refuse batch 's/<Simulation>.*</<Simulation></'
# Seeds.
refuse analysis 's/ xsi:type="Vector"//'
refuse analysis 's/"Vector"/"Clock"/'
refuse analysis 's/"Vector"/"Randomize"/'
refuse analysis 's/<Element>.*</<Element>-1</'
refuse analysis 's/<Element>.*</<Element>4294967296</'
refuse analysis '0,/<Element>/{/<Element>/d}'

# What the program takes and a schema could easily refuse.
take analysis 's/>false</>true</'
take analysis 's/<NumberOfPoaIndicators>.*</<NumberOfPoaIndicators>0</'
take analysis 's/<Burnin>.*</<Burnin>0</'
take analysis 's/<Steps>.*</<Steps>0</'
take analysis 's/<PriorPrecision>.*</<PriorPrecision>0</'
take analysis 's/<Data>.*</<Data>in\\my data.csv</'
take analysis 's/<Input>/<!-- a comment --><Input>/'
take analysis 's/<Analysis/<Analysis author="x"/'
take analysis 's/<Seed xsi:type="Vector">/<Seed xsi:type="Randomize" \/><!--/; s/<Thinning>/--><Thinning>/'
take batch '/<Simulation>/d'
take batch 's/<Simulation>/<Simulation note="x">/'

# Every element is explained.
unexplained=$(xmllint --xpath 'count(//*[local-name()="element"][not(*/*[local-name()="documentation"])])' "$schema")
if [ "$unexplained" != 0 ]; then
  echo "elements without a documentation: $unexplained"
  failures=$((failures + 1))
fi
# Every element of the page on definitions is in the schema, and the other way round.
sed -n 's/^| [- ]*`\([A-Z][A-Za-z]*\)` |.*/\1/p' docs/definitions.md | sort -u > "$work/documented"
printf 'Element\n' >> "$work/documented"
sed -n 's/.*<xs:element name="\([A-Za-z]*\)".*/\1/p' "$schema" | sort -u > "$work/declared"
if ! sort -u "$work/documented" | diff - "$work/declared"; then
  echo "docs/definitions.md and the schema do not have the same elements"
  failures=$((failures + 1))
fi

[ "$failures" -eq 0 ]
