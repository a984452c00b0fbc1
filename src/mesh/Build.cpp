#include "mesh/Build.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace ql::mesh {
namespace {

[[noreturn]] void overflow() { throw engine::EngineError(engine::kOverflow, "Overflow"); }
[[noreturn]] void subscript() { throw engine::EngineError(engine::kSubscript, "Subscript out of range"); }

/// Room for one more element, doubled when there is none, so that growing by one stays cheap.
template <class T>
void makeRoom(std::vector<T>& list, std::size_t size) {
  if (size > list.capacity()) list.reserve(std::max(size, list.capacity() * 2));
}

MeshGroup& groupAt(MeshRecord& record, std::int16_t group) {
  if (group < 0 || static_cast<std::size_t>(group) >= record.groups.size()) subscript();
  return record.groups[static_cast<std::size_t>(group)];
}

}  // namespace

std::int16_t addVertex(engine::EngineContext& context, MeshHandle& mesh, const math::NormalVertex& vertex,
                       std::int32_t color) {
  MeshRecord& record = meshRecord(context, mesh.slot);
  if (record.vertexCount >= kMaxVertices) overflow();
  MeshGroup* group = mesh.currentGroup < 0 ? nullptr : &groupAt(record, mesh.currentGroup);
  // A mesh that has a shape's vertices counts them, though they are not in its lists.
  const auto count = static_cast<std::size_t>(record.vertexCount) + 1;
  if (group) {
    if (group->count == kMaxVertices) overflow();
    makeRoom(group->indices, group->indices.size() + 1);
  }
  makeRoom(record.normalVertices, count + 1);
  makeRoom(record.colorVertices, count + 1);

  record.normalVertices.resize(count + 1);
  record.colorVertices.resize(count + 1);
  record.normalVertices[count - 1] = vertex;
  record.colorVertices[count - 1] = {vertex.x,  vertex.y,  vertex.z,   color,     0,
                                     vertex.tu, vertex.tv, vertex.tu1, vertex.tv1};
  record.normalVertices[count] = {};
  record.colorVertices[count] = {};
  record.vertexCount = static_cast<std::int32_t>(count);
  if (group) {
    ++group->count;
    group->indices.push_back(static_cast<std::int16_t>(count - 1));
  }
  noteChange(context, mesh.slot);
  return static_cast<std::int16_t>(count);
}

void addFace(engine::EngineContext& context, MeshHandle& mesh, std::int16_t texture, bool lightmap) {
  MeshRecord& record = meshRecord(context, mesh.slot);
  if (record.groupCount >= kMaxGroups) overflow();
  setGroupPointer(context, mesh, static_cast<std::int16_t>(record.groupCount + 1));
  record.groups.back().texture = texture;
  record.groups.back().lightmap = lightmap ? kLightmapWanted : kNoLightmap;
}

void moveVertex(engine::EngineContext& context, const MeshHandle& mesh, std::int16_t vertex, std::int16_t group,
                const math::Vec3& place, bool relative) {
  MeshRecord& record = meshRecord(context, mesh.slot);
  const std::int32_t number = groupAt(record, group).start + vertex;
  if (number < 0 || static_cast<std::size_t>(number) >= record.normalVertices.size()) subscript();
  const auto move = [&](auto& moved) {
    const math::Vec3 from = relative ? math::Vec3{moved.x, moved.y, moved.z} : math::Vec3{};
    const math::Vec3 to = math::add(from, place);
    moved.x = to.x, moved.y = to.y, moved.z = to.z;
  };
  move(record.normalVertices[static_cast<std::size_t>(number)]);
  move(record.colorVertices[static_cast<std::size_t>(number)]);
  noteChange(context, mesh.slot);
}

void setColor(engine::EngineContext& context, const MeshHandle& mesh, std::int32_t color, std::int32_t vertex) {
  std::vector<math::ColorVertex>& vertices = meshRecord(context, mesh.slot).colorVertices;
  if (vertex < -1 || vertex >= static_cast<std::int32_t>(vertices.size())) subscript();
  if (vertex != -1) {
    vertices[static_cast<std::size_t>(vertex)].diffuse = color;
    return;
  }
  for (math::ColorVertex& colored : vertices) colored.diffuse = color;
}

void addChild(engine::EngineContext& context, const MeshHandle& parent, const MeshHandle& child) {
  MeshRecord& above = meshRecord(context, parent.slot);
  MeshRecord& below = meshRecord(context, child.slot);
  if (above.children.size() >= 32767) overflow();
  // Drawing follows the children: a mesh below itself would never end.
  std::vector<std::int16_t> pending{child.slot};
  std::vector<bool> seen(static_cast<std::size_t>(meshCount(context)) + 1);
  while (!pending.empty()) {
    const std::int16_t slot = pending.back();
    pending.pop_back();
    if (slot == parent.slot) throw engine::EngineError(engine::kInvalidArgument, "A mesh cannot be its own child");
    if (seen[static_cast<std::size_t>(slot)]) continue;
    seen[static_cast<std::size_t>(slot)] = true;
    const std::vector<std::int16_t>& next = meshRecord(context, slot).children;
    pending.insert(pending.end(), next.begin(), next.end());
  }
  above.children.push_back(child.slot);
  below.parent = parent.slot;
  noteChange(context, child.slot);
}

void deleteChildren(engine::EngineContext& context, const MeshHandle& parent) {
  MeshRecord& above = meshRecord(context, parent.slot);
  for (const std::int16_t child : above.children) {
    meshRecord(context, child).parent = 0;
    noteChange(context, child);
  }
  above.children.clear();
}

}  // namespace ql::mesh
