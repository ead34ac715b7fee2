#pragma once

#include "tests/run/HostRun.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <unistd.h>

namespace emeg::test {

/// A test with a folder of its own that is removed at the end.
class WithFolder : public testing::Test {
protected:
  void SetUp() override {
    const testing::TestInfo& info = *testing::UnitTest::GetInstance()->current_test_info();
    folder_ = std::filesystem::path(testing::TempDir()) /
              (std::string("lumetra-") + info.name() + "-" + std::to_string(getpid()));
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directories(folder_);
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  std::filesystem::path folder_;
};

/// A test that lets the test plug-in run one of its scripts in the host.
class HostedRun : public WithFolder {
protected:
  HostRun run(const std::string& script) const {
    return {.plugin = EMEG_TEST_PLUGIN,
            .workFolder = folder_,
            .arguments = {},
            .environment = {{"EMEG_TEST_SCRIPT", script}},
            .beforeStart = {}};
  }
};

} // namespace emeg::test
