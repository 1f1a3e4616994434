// Added to each test program that is built with mutants in it: writes, where LINKFLAP_MUTANTS_REACHED
// is set, a line for each test with the mutants whose places it reached, into the file of that name
// with ".tests" behind it.

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

#include "tests/mutation/MutationSwitch.h"

namespace {

class ReachListener final : public testing::EmptyTestEventListener {
  void OnTestStart(testing::TestInfo const& /*test*/) override {
    auto const& mutants = Mutation::Switch::instance();
    std::fill_n(mutants.reached(), mutants.size(), static_cast<unsigned char>(0));
  }
  void OnTestEnd(testing::TestInfo const& test) override {
    auto const& mutants = Mutation::Switch::instance();
    std::ofstream out{std::string{std::getenv("LINKFLAP_MUTANTS_REACHED")} + ".tests",
                      std::ios::app};
    out << test.test_suite_name() << '.' << test.name();
    for (unsigned long number = 0; number < mutants.size(); ++number)
      if (mutants.reached()[number] != 0) out << ' ' << number;
    out << '\n';
  }
};

bool const listens = [] {
  if (std::getenv("LINKFLAP_MUTANTS_REACHED") != nullptr)
    testing::UnitTest::GetInstance()->listeners().Append(new ReachListener);
  return true;
}();

}  // namespace
