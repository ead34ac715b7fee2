#include "tests/install/InstalledTree.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/wait.h>

CommandResult runCommand(const std::string& command) {
  CommandResult result;
  std::FILE* const pipe = popen(("( " + command + " ) 2>&1").c_str(), "r");
  if (pipe == nullptr) return {"popen failed", -1};
  std::array<char, 4096> part{};
  while (std::fgets(part.data(), static_cast<int>(part.size()), pipe) != nullptr)
    result.output += part.data();
  const int status = pclose(pipe);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

InstalledTree::InstalledTree(const std::string& component) {
  std::string name = testing::TempDir() + "emeg-install-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
  folder_ = name;
  const CommandResult installed =
      runCommand(EMEG_CMAKE " --install " EMEG_BUILD_DIR " --prefix '" + prefix().string() + "'" +
                 (component.empty() ? "" : " --component " + component));
  EXPECT_EQ(installed.status, 0) << installed.output;
}

InstalledTree::~InstalledTree() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}
