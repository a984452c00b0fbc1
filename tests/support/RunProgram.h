/// @file
/// Running one of the project's programs in a test.
#pragma once

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <sys/wait.h>

namespace ql::test {

struct ProgramRun {
  int code = -1;       ///< exit code; -1 when it did not exit by itself
  std::string output;  ///< standard output
};

/// Runs a command line of the shell; standard error is dropped.
inline ProgramRun runProgram(const std::string& command) {
  ProgramRun run;
  FILE* pipe = popen((command + " 2>/dev/null").c_str(), "r");  // NOLINT(cert-env33-c)
  if (pipe == nullptr) return run;
  std::array<char, 4096> buffer;
  for (std::size_t n = 0; (n = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) run.output.append(buffer.data(), n);
  const int status = pclose(pipe);
  if (WIFEXITED(status)) run.code = WEXITSTATUS(status);
  return run;
}

/// A word of the shell, quoted.
inline std::string quoted(const std::string& word) { return "'" + word + "'"; }

}  // namespace ql::test
