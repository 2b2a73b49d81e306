#include "progress.h"

namespace Testing {

std::string SizeLines(int records, int variables) {
  return "Number of records: " + std::to_string(records) +
         "\nNumber of variables: " + std::to_string(variables) + "\n";
}

std::string ReadingLines(int records, int variables) {
  return "Reading data file...\n" + SizeLines(records, variables) + "Reading data...\n";
}

std::string HospitalLine(const std::string& id, int record, int records) {
  return "Hospital: " + id + " record: " + std::to_string(record) + " / " +
         std::to_string(records) + "\n";
}

std::string CountLines(int complete, int completeP0) {
  return "Counting non missing records:\nNumber of non-missing records: " +
         std::to_string(complete) +
         "\nNumber of non-missing records with P = 0: " + std::to_string(completeP0) + "\n";
}

std::string OneHospital(int records, int variables, int complete, int completeP0) {
  return ReadingLines(records, variables) + HospitalLine("A", 0, records) +
         "Number of hospitals: 1\n" + CountLines(complete, completeP0);
}

std::string RemovalLines(const std::string& names, int variables, int complete, int completeP0) {
  return "Eliminating columns:\n" + names + "Number of variables: " + std::to_string(variables) +
         "\n" + CountLines(complete, completeP0);
}

}  // namespace Testing
