/// @file
/// A home of its own for the engine's settings and log.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace walk {

/// While it lives, the engine keeps its settings and its log in a temporary folder: a walk does not change the user's
/// video mode, and what the log says is this walk's.
class PrivateHome {
 public:
  PrivateHome();
  ~PrivateHome();
  PrivateHome(const PrivateHome&) = delete;
  PrivateHome& operator=(const PrivateHome&) = delete;
  std::vector<std::string> logLines() const;

 private:
  std::filesystem::path folder_;
};

}  // namespace walk
