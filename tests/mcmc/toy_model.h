#pragma once

// A model of toy variables whose every value is known beforehand: the n-th step of a variable
// proposes n (a vector n, 2 n, 3 n, ...). Model and variables note what is called in which order.

#include <functional>
#include <string>
#include <vector>

#include "foundation/exceptions/exceptions.h"
#include "mcmc/mcmc_model.h"
#include "mcmc/mcmc_scalar.h"
#include "mcmc/mcmc_vector.h"
#include "support/outcome.h"

namespace Testing {

using Calls = std::vector<std::string>;

class ToyScalar : public Vell::Mcmc::McmcScalar {
 public:
  ToyScalar(Calls& calls, std::string name, bool hasChain)
      : calls_(calls), name_(std::move(name)), hasChain_(hasChain) {}

  /// The probability of accepting the proposal of a step (from 1).
  std::function<double(int)> probability = [](int) { return 1.0; };
  /// The step that raises instead of proposing.
  int failingStep = 0;

  void Initialize() override {
    Note("Initialize, buffer " + std::to_string(Model().BufferSize()));
    if (hasChain_) {
      statistics_.AllocateChain(Model().BufferSize());
    }
  }
  void Finalize() override { Note("Finalize"); }
  void ResetStatistics() override {
    Note("ResetStatistics");
    McmcScalar::ResetStatistics();
  }
  void Record(std::int32_t row) override {
    Note("Record " + std::to_string(row));
    McmcScalar::Record(row);
  }
  double Propose() override {
    Note("Propose");
    if (++step_ == failingStep) {
      throw Vell::Exceptions::NumericException(Messages::Pattern("No proposal"));
    }
    return step_;
  }
  double AcceptanceProbability(double proposal) override {
    Note("AcceptanceProbability of " + std::to_string(static_cast<int>(proposal)));
    return probability(step_);
  }
  void OnAccept(double proposal) override {
    Note("OnAccept " + std::to_string(static_cast<int>(proposal)) + " at " +
         std::to_string(static_cast<int>(Value())));
  }
  Vell::String GetName() const override { return Vell::String(name_); }

 private:
  void Note(const std::string& call) { calls_.push_back(name_ + "." + call); }

  Calls& calls_;
  std::string name_;
  bool hasChain_;
  int step_ = 0;
};

class ToyVector : public Vell::Mcmc::McmcVector {
 public:
  ToyVector(std::string name, std::int32_t count, bool hasChain)
      : name_(std::move(name)), count_(count), hasChain_(hasChain) {}

  std::function<double(int)> probability = [](int) { return 1.0; };
  /// What OnAccept was given and the value at that time.
  std::vector<std::vector<double>> accepted;

  void Initialize() override {
    Resize(count_);
    if (hasChain_) {
      AllocateChainBuffers();
    }
  }
  void Propose(Vell::Vector& proposal) override {
    ++step_;
    EXPECT_EQ(proposal.Size(), count_);
    for (std::int32_t i = 0; i < count_; ++i) {
      proposal[i] = step_ * (i + 1);
    }
  }
  double AcceptanceProbability(const Vell::Vector& /*proposal*/) override {
    return probability(step_);
  }
  void OnAccept(const Vell::Vector& proposal) override {
    accepted.emplace_back(proposal.begin(), proposal.end());
    accepted.emplace_back(Values().begin(), Values().end());
  }
  Vell::String GetName(std::int32_t component) const override {
    return Vell::String(name_ + std::to_string(component));
  }

 private:
  std::string name_;
  std::int32_t count_;
  bool hasChain_;
  int step_ = 0;
};

class ToyModel : public Vell::Mcmc::McmcModel {
 public:
  /// Steps of the variables follow this order.
  ToyModel(Calls& calls, std::vector<Vell::Mcmc::McmcVariable*> variables)
      : calls_(calls), variables_(std::move(variables)) {}

 protected:
  void Initialize() override {
    calls_.push_back("Model.Initialize");
    for (Vell::Mcmc::McmcVariable* variable : variables_) {
      Register(*variable);
    }
  }
  void Finalize() override { calls_.push_back("Model.Finalize"); }
  void ReportProgress(std::int32_t iteration, bool isBurnin) override {
    calls_.push_back("Model.ReportProgress " + std::to_string(iteration) +
                     (isBurnin ? " burnin" : " main"));
    McmcModel::ReportProgress(iteration, isBurnin);
  }

 private:
  Calls& calls_;
  std::vector<Vell::Mcmc::McmcVariable*> variables_;
};

}  // namespace Testing
