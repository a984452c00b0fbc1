/// @file
/// The file that is shown, as an object of the engine.
#pragma once

#include "FileKind.h"
#include "MeshFacts.h"
#include "Options.h"

#include <Quasarlens3D/Quasarlens3D.h>

#include <filesystem>
#include <string>

namespace view {

/// What stands on the stage: a mesh, a picture on a rectangle, or a level.
class Subject {
 public:
  /// Loads the file into the running engine. Errors are in the engine's log, or thrown.
  /// @throws walk::Failure Malformed, Limit; Quasarlens3D::Error
  Subject(Kind kind, const Options& options);

  void draw();
  Kind kind() const { return kind_; }
  const MeshFacts& facts() const { return facts_; }
  /// Where it stands, world coordinates.
  const Box& box() const { return box_; }
  /// Of a level: where its player starts, at eye height.
  Quasarlens3D::Vec3 start() const;

 private:
  void loadMesh(const Options& options);
  void loadPicture(const std::filesystem::path& file);
  void loadLevel(const Options& options);
  void turnUp();
  void giveMaterials();

  Kind kind_;
  Quasarlens3D::Scene8 scene_;
  Quasarlens3D::Mesh8 mesh_;
  Quasarlens3D::BSPTree8 level_{nullptr};
  MeshFacts facts_;
  Box box_;
};

/// Where files of a level are looked for: the folder above its maps/, else its own.
std::filesystem::path baseOf(Kind kind, const Options& options);

}  // namespace view
