#pragma once

// What hovar_step and hovar_floor have in common: the tasks, their time, the predictions that two of
// them read, and the line of JSON in which each reports.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace Hovar::Bench {

inline bool IsTask(std::string_view name) {
  constexpr std::array<std::string_view, 6> kTasks = {"read",  "logit", "gee",
                                                      "cstat", "write", "mcmc"};
  return std::find(kTasks.begin(), kTasks.end(), name) != kTasks.end();
}

/// The processor time of one call, in seconds.
template <typename Step>
double ProcessorSecondsOf(Step step) {
  const std::clock_t start = std::clock();
  step();
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

/// A number by a format of printf for one double, of fewer than 64 characters.
inline std::string Format(const char* format, double value) {
  std::array<char, 64> text;
  static_cast<void>(std::snprintf(text.data(), text.size(), format, value));
  return text.data();
}

/// A member of the line's object, with the comma before it; the value is JSON.
inline std::string Quoted(std::string_view name, const std::string& value) {
  return ", \"" + std::string(name) + "\": " + value;
}

/// Predictions and responses (0 or 1), one of each a record.
struct Scores {
  std::vector<double> predictions;
  std::vector<double> responses;
};

/// Reads a binary file of `records` predictions and then as many responses; false when it is shorter.
inline bool ReadScores(Scores& scores, const std::string& path, std::int32_t records) {
  const auto bytes = static_cast<std::streamsize>(sizeof(double)) * records;
  std::ifstream file(path, std::ios::binary);
  for (std::vector<double>* values : {&scores.predictions, &scores.responses}) {
    values->resize(static_cast<std::size_t>(records));
    file.read(reinterpret_cast<char*>(values->data()), bytes);
  }
  return static_cast<bool>(file);
}

/// The program that a line is about, and the size of what it read.
struct TaskSubject {
  std::string_view peer;
  std::string_view version;
  std::int32_t records;
  std::int32_t columns;
};

/// The line of a task; `rest` is made of Quoted members.
inline std::string TaskReport(const std::string& task, const TaskSubject& subject, double seconds,
                              const std::string& rest) {
  return "{\"task\": \"" + task + "\", \"peer\": \"" + std::string(subject.peer) +
         "\", \"version\": \"" + std::string(subject.version) +
         "\", \"n\": " + std::to_string(subject.records) +
         ", \"p\": " + std::to_string(subject.columns) +
         ", \"compute_s\": " + Format("%.6g", seconds) + rest + "}";
}

}  // namespace Hovar::Bench
