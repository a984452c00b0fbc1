#include "mesh/MeshSurface.h"

namespace ql::mesh {
namespace {

constexpr std::int32_t kCameraSpaceNormal = 0x10000, kCameraSpaceReflection = 0x30000;

void setGroups(MeshRecord& mesh, float group, std::int16_t MeshGroup::*what, std::int16_t value) {
  for (std::size_t g = 1; g < mesh.groups.size(); ++g)
    if (group == kAllGroups || group == static_cast<float>(g)) mesh.groups[g].*what = value;
}

}  // namespace

void setTexture(MeshRecord& mesh, std::int16_t texture, float group) {
  setGroups(mesh, group, &MeshGroup::texture, texture);
}
void setMaterial(MeshRecord& mesh, std::int16_t material, float group) {
  setGroups(mesh, group, &MeshGroup::material, material);
}
void setShader(MeshRecord& mesh, std::int16_t shader, float group) {
  setGroups(mesh, group, &MeshGroup::shader, shader);
}
void setBlending(MeshRecord& mesh, std::int16_t blending, float group) {
  setGroups(mesh, group, &MeshGroup::blending, blending);
}

void setSphereMapping(MeshRecord& mesh, bool on, bool normals) {
  mesh.sphereMapping = on;
  mesh.texCoordGen = normals ? kCameraSpaceNormal : kCameraSpaceReflection;
}

}  // namespace ql::mesh
