#pragma once

// What a check says about a Z that is of no use to its X.

#include "messages/pattern.h"

namespace Hovar {

struct ProxyMessages {
  Messages::Pattern constant{
      "<Z> is <number> in all <records>, so it is removed together with <X>, which is 1 in "
      "<number> of <values>. Give it a Z that varies."};
  Messages::Pattern copy{
      "<Z> repeats <X> and is 0 where that is missing, so its <values> would be imputed as 0. Use "
      "a Z from another source, which also tells something where X is missing."};
  Messages::Pattern dependent{
      "<Z> follows from <names> in all <records>, so it is removed together with <X>, which is 1 "
      "in <number> of <values>. Give it a Z that the others do not tell."};
  Messages::Pattern equal{
      "<Z> equals <names> in all <records>, so it is removed together with <X>, which is 1 in "
      "<number> of <values>. Give each variable a Z of its own."};
  Messages::Pattern nearlyDependent{
      "<Z> counts as dependent on other Z columns within the tolerance, so it is removed together "
      "with <X>, which is 1 in <number> of <values>. Choose a smaller tolerance, or give it "
      "another Z."};
  Messages::Pattern others{"The same is wrong with <columns>: <names>. Do the same there."};
  Messages::Pattern settledByBoth{
      "Where <Z> is 0, <X> is <number> as far as it is known (<records>), so its <values> there "
      "would be imputed as <number>, and where <Z> is 1, <X> is <number> as far as it is known "
      "(<records>), so its <values> there would be imputed as <number>. Check that this Z proves "
      "it, or choose another one."};
  Messages::Pattern settledByOne{
      "Where <Z> is 1, <X> is <number> as far as it is known (<records>), so its <values> there "
      "would be imputed as <number>. Check that this Z proves it, or choose another one."};
  Messages::Pattern settledByZero{
      "Where <Z> is 0, <X> is <number> as far as it is known (<records>), so its <values> there "
      "would be imputed as <number>. Check that this Z proves it, or choose another one."};
};

inline constexpr ProxyMessages kProxyMessages;

}  // namespace Hovar
