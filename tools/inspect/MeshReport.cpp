#include "MeshReport.h"

#include "MeshDump.h"
#include "Validated.h"
#include "engine/EngineError.h"
#include "mesh/DxeText.h"
#include "mesh/MeshFile.h"
#include "mesh/ThreeDs.h"
#include "platform/host/Files.h"
#include "platform/xfile/XFile.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace ql::inspect {
namespace {

using Json = nlohmann::ordered_json;

std::string_view textOf(std::span<const std::byte> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// The box around points.
class Bounds {
 public:
  void add(float x, float y, float z) {
    const std::array<float, 3> p{x, y, z};
    if (!any_) low_ = high_ = p;
    any_ = true;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      low_[axis] = std::min(low_[axis], p[axis]);
      high_[axis] = std::max(high_[axis], p[axis]);
    }
  }
  void writeTo(Json& json) const {
    if (any_) json["bounds"] = {{"mins", low_}, {"maxs", high_}};
  }

 private:
  std::array<float, 3> low_{}, high_{};
  bool any_ = false;
};

void noteRepairs(Json& json, bool validate, std::size_t count, const char* first) {
  if (validate && count > 0) json["repairs"] = {{"count", count}, {"first", first}};
}

Json threeDsReport(std::span<const std::byte> bytes, bool validate) {
  Json json{{"format", "3ds"}};
  const mesh::ThreeDsFile file = mesh::parseThreeDs(bytes);
  const mesh::ThreeDsSummary summary = mesh::summarize(file);
  Bounds bounds;
  std::size_t vertices = 0, triangles = 0, bad = 0;
  Json objects = Json::array(), materials = Json::array();
  const auto textureOf = [&](const std::string& name) {
    std::string texture;
    for (const mesh::ThreeDsMaterial& material : summary.materials)
      if (material.name == name) texture = material.texture;
    return texture;
  };
  for (const mesh::ThreeDsObject& object : summary.objects) {
    vertices += object.positions.size();
    triangles += object.faces;
    bad += object.badFaces;
    for (const math::Vec3& p : object.positions) bounds.add(p.x, p.y, p.z);
    objects.push_back({{"name", host::toUtf8(object.name)},
                       {"vertices", object.positions.size()},
                       {"triangles", object.faces},
                       {"texture_coordinates", object.texCoords},
                       {"material", host::toUtf8(object.material)},
                       {"texture", host::toUtf8(textureOf(object.material))}});
  }
  for (const mesh::ThreeDsMaterial& material : summary.materials)
    materials.push_back({{"name", host::toUtf8(material.name)}, {"texture", host::toUtf8(material.texture)}});
  validated(json, validate, [&] {
    for (const mesh::ThreeDsChunk& chunk : file.chunks)
      if (chunk.fault) throw *chunk.fault;
    if (file.fault) throw *file.fault;
  });
  noteRepairs(json, validate, bad, "face that names a vertex which is not there");
  json["chunks"] = file.chunks.size();
  json["vertices"] = vertices;
  json["triangles"] = triangles;
  bounds.writeTo(json);
  json["materials"] = std::move(materials);
  json["objects"] = std::move(objects);
  return json;
}

void xContents(Json& json, const xfile::Scene& scene) {
  std::size_t vertices = 0, triangles = 0;
  Json objects = Json::array();
  for (const xfile::MeshObject& object : scene.meshes) {
    vertices += object.positions.size();
    triangles += object.triangles.size();
    Json materials = Json::array();
    for (const xfile::Material& material : object.materials)
      materials.push_back({{"name", host::toUtf8(material.name)}, {"texture", host::toUtf8(material.texture)}});
    objects.push_back({{"name", host::toUtf8(object.name)},
                       {"vertices", object.positions.size()},
                       {"triangles", object.triangles.size()},
                       {"normals", object.normals.size()},
                       {"texture_coordinates", object.texCoords.size()},
                       {"material", materials[0]["name"]},
                       {"texture", materials[0]["texture"]},
                       {"materials", std::move(materials)}});
  }
  json["vertices"] = vertices;
  json["triangles"] = triangles;
  Bounds bounds;
  const xfile::FlatMesh flat = xfile::flatten(scene);
  for (const xfile::Vertex& v : flat.vertices) bounds.add(v.position.x, v.position.y, v.position.z);
  bounds.writeTo(json);
  json["objects"] = std::move(objects);
}

Json xReport(std::span<const std::byte> bytes, bool validate) {
  constexpr std::size_t kKindAt = 8, kKindLength = 4;
  Json json{{"format", "x"}, {"version", textOf(bytes.subspan(4, 4))}};
  const std::string_view kind = textOf(bytes.subspan(kKindAt, kKindLength));
  json["kind"] = kind == "txt "   ? "text"
                 : kind == "bin " ? "binary"
                 : kind == "tzip" ? "compressed text"
                 : kind == "bzip" ? "compressed binary"
                                  : "unknown";
  std::uint32_t dropped = 0;
  validated(json, validate, [&] {
    const xfile::Scene scene = xfile::parseXFile(bytes);
    dropped = scene.droppedFaces;
    xContents(json, scene);
  });
  noteRepairs(json, validate, dropped, "face of too few corners, or of a vertex which is not there");
  return json;
}

/// What chunk files and dumps have in common. @param strip how the vertices of a face make triangles
void facesReport(Json& json, std::span<const mesh::MeshGroup> groups, bool strip) {
  std::size_t triangles = 0;
  Json objects = Json::array();
  for (std::size_t g = 1; g < groups.size(); ++g) {
    const mesh::MeshGroup& group = groups[g];
    const std::size_t count = static_cast<std::size_t>(std::max<std::int16_t>(group.count, 0));
    const std::size_t faces = strip ? count - std::min<std::size_t>(count, 2) : count / 3;
    triangles += faces;
    objects.push_back({{"name", "face " + std::to_string(g)},
                       {"vertices", count},
                       {"triangles", faces},
                       {"material", group.material},
                       {"texture", group.texture},
                       {"lightmap", group.lightmap},
                       {"blending", group.blending}});
  }
  json["triangles"] = triangles;
  json["objects"] = std::move(objects);
}

template <class Vertex>
void pointsReport(Json& json, const std::vector<Vertex>& vertices, std::size_t count) {
  Bounds bounds;
  for (std::size_t i = 0; i < std::min(count, vertices.size()); ++i)
    bounds.add(vertices[i].x, vertices[i].y, vertices[i].z);
  bounds.writeTo(json);
}

Json chunkReport(std::span<const std::byte> bytes, bool validate) {
  Json json{{"format", "qlof"}};
  std::size_t repairs = 0;
  validated(json, validate, [&] {
    Json chunks = Json::array();
    for (const mesh::ChunkEntry& entry : mesh::readDirectory(bytes))
      chunks.push_back({{"type", entry.type}, {"name", mesh::chunkName(entry.type)}, {"offset", entry.offset - 1}});
    mesh::ChunkMesh file = mesh::parseChunkMesh(bytes);
    const std::int32_t count = file.vertexCount.value_or(0);
    repairs = file.repairs;
    for (const mesh::MeshGroup& group : file.groups)
      repairs += !file.shape && group.start + group.count > count ? 1u : 0u;
    mesh::emptyImpossibleGroups(file);
    json["name"] = host::toUtf8(file.name.value_or(""));
    json["vertices"] = count;
    json["vertex_type"] = file.colorVertices.empty() ? mesh::kNormalVertices : mesh::kColorVertices;
    if (file.colorVertices.empty()) {
      pointsReport(json, file.normalVertices, static_cast<std::size_t>(count));
    } else {
      pointsReport(json, file.colorVertices, static_cast<std::size_t>(count));
    }
    facesReport(json, file.groups, file.primitiveType.value_or(mesh::kTriangleList) == mesh::kTriangleStrip);
    json["chunks"] = std::move(chunks);
  });
  noteRepairs(json, validate, repairs, "face of vertices which are not there, or a number that is none");
  return json;
}

Json dumpReport(std::span<const std::byte> bytes, bool validate) {
  Json json{{"format", "qlmesh"}};
  validated(json, validate, [&] {
    const MeshDump dump = readMeshDump(bytes);
    json["name"] = host::toUtf8(dump.name);
    json["vertices"] = dump.vertexCount;
    json["vertex_type"] = dump.vertexType;
    pointsReport(json, dump.vertices, static_cast<std::size_t>(std::max(dump.vertexCount, 0)));
    facesReport(json, dump.groups, dump.primitiveType == mesh::kTriangleStrip);
  });
  return json;
}

Json dxeReport(std::span<const std::byte> bytes, bool validate) {
  Json json{{"format", "dxe"}};
  validated(json, validate, [&] {
    std::vector<math::NormalVertex> vertices;
    try {
      vertices = mesh::parseDxe(textOf(bytes));
    } catch (const engine::EngineError&) {
      throw host::FileFault(host::Fault::TooLarge, "number of vertices, or a vertex", 0, 0, mesh::kMaxVertices);
    }
    json["vertices"] = vertices.size();
    json["triangles"] = vertices.size() / 3;
    pointsReport(json, vertices, vertices.size());
    json["objects"] = Json::array({{{"name", ""},
                                    {"vertices", vertices.size()},
                                    {"triangles", vertices.size() / 3},
                                    {"material", ""},
                                    {"texture", ""}}});
  });
  return json;
}

bool endsAsDxe(const std::string& name) {
  constexpr std::string_view kEnding = ".dxe";
  return name.size() >= kEnding.size() &&
         host::equalIgnoringCase(std::string_view(name).substr(name.size() - kEnding.size()), kEnding);
}

}  // namespace

bool isMesh(const std::string& name, std::span<const std::byte> bytes) {
  return mesh::isChunkFile(bytes) || mesh::isMeshDump(bytes) || mesh::isThreeDs(bytes) || xfile::isXFile(bytes) ||
         endsAsDxe(name);
}

nlohmann::ordered_json meshReport(std::span<const std::byte> bytes, bool validate) {
  if (mesh::isChunkFile(bytes)) return chunkReport(bytes, validate);
  if (mesh::isMeshDump(bytes)) return dumpReport(bytes, validate);
  if (mesh::isThreeDs(bytes)) return threeDsReport(bytes, validate);
  if (xfile::isXFile(bytes)) return xReport(bytes, validate);
  return dxeReport(bytes, validate);
}

}  // namespace ql::inspect
