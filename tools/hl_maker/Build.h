/// @file
/// From a description to the tables of a level file.
#pragma once

#include "Cells.h"
#include "Package.h"
#include "level/HlBsp.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace ql::hl_maker {

/// The tables of a level file, lump by lump.
struct LevelTables {
  std::string entities;
  std::vector<level::HlPlane> planes;
  std::vector<std::string> textures;
  std::vector<std::array<float, 3>> vertices;
  Bytes visibility;
  std::vector<level::HlNode> nodes;
  std::vector<level::HlTextureInfo> infos;
  std::vector<level::HlFace> faces;
  Bytes lighting;
  std::vector<level::HlLeaf> leaves;
  std::vector<std::uint16_t> marks;
  std::vector<level::HlEdge> edges;
  std::vector<std::int32_t> surfaceEdges;
  std::vector<level::HlModel> models;
};

/// @param package the file name of the texture package that the level names
LevelTables buildLevel(const Description& description, const std::string& package);
/// The level's file. @param sizes the textures' widths and heights, by name
Bytes encodeLevel(const LevelTables& tables, const std::map<std::string, std::pair<int, int>>& sizes);

}  // namespace ql::hl_maker
