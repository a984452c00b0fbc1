#pragma once

#include "Lighting.h"
#include "Visibility.h"

#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace ql::maker {

enum class Quality { Draft, Final };

struct MakeOptions {
  Quality quality = Quality::Final;
  unsigned threads = 1;
  std::function<void(const std::string&)> report = [](const std::string&) {};  ///< one line per step
};

/// The description has a hole: outside can be reached from a start.
class LeakFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A level on its way into a file, in the order in which its parts are made.
struct MadeLevel {
  Level level;
  Tree tree;
  std::vector<Portal> portals;
  std::vector<int> clusterOfLeaf;
  Visibility visibility;
  std::vector<Surface> surfaces;
  std::vector<Chart> surfaceCharts;
  std::vector<Chart> patchCharts;
  int pages = 0;
  std::vector<Triangle> triangles;
  LightPages light;
  std::vector<std::uint8_t> bsp;
};

/// Tree, visibility and surfaces of a level, without light.
/// @throws LeakFault
MadeLevel makeStructure(Level level, const MakeOptions& options);
/// Adds lightmaps and the file's bytes.
void makeLight(MadeLevel& made, std::span<const Vec3> albedo, const MakeOptions& options);

/// Every file that a description makes, by its path below the assets folder.
using Files = std::map<std::string, std::vector<std::uint8_t>>;
/// @throws DescriptionFault, LeakFault
Files makeFiles(std::string_view description, const MakeOptions& options);

}  // namespace ql::maker
