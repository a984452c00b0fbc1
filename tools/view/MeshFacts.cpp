#include "MeshFacts.h"

#include "walk/Failure.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace view {
namespace {

/// The fields of a QLMESH record, in order.
class Record {
 public:
  Record(std::string bytes, std::size_t at) : bytes_(std::move(bytes)), at_(at) {}
  template <class T>
  T take() {
    T value{};
    if (at_ + sizeof value > bytes_.size())
      throw walk::Failure(walk::ExitCode::Malformed, "the record of the mesh ends early");
    std::memcpy(&value, bytes_.data() + at_, sizeof value);
    at_ += sizeof value;
    return value;
  }
  void skip(std::size_t bytes) { at_ += bytes; }
  /// The head of a list: its elements follow.
  std::size_t count() {
    if (take<std::int16_t>() == 0) return 0;
    const auto elements = take<std::int32_t>();
    skip(sizeof(std::int32_t));
    return elements < 0 ? 0 : static_cast<std::size_t>(elements);
  }

 private:
  std::string bytes_;
  std::size_t at_;
};

Box boxOf(const std::vector<Quasarlens3D::NormalVertex>& vertices) {
  Box box;
  for (std::size_t i = 0; i < vertices.size(); ++i) {
    const Quasarlens3D::Vec3 p{vertices[i].x, vertices[i].y, vertices[i].z};
    if (i == 0) box = {p, p};
    box.low = {std::min(box.low.x, p.x), std::min(box.low.y, p.y), std::min(box.low.z, p.z)};
    box.high = {std::max(box.high.x, p.x), std::max(box.high.y, p.y), std::max(box.high.z, p.z)};
  }
  return box;
}

Quasarlens3D::Vec3 centerOf(const Box& box) {
  return {(box.low.x + box.high.x) / 2, (box.low.y + box.high.y) / 2, (box.low.z + box.high.z) / 2};
}

float distance(const Quasarlens3D::Vec3& a, float x, float y, float z) { return std::hypot(a.x - x, a.y - y, a.z - z); }

}  // namespace

MeshFacts factsOf(Quasarlens3D::Mesh8& mesh) {
  constexpr char kMagic[] = "QLMESH", kName[] = "view";
  mesh.SetMeshName(kName);
  mesh.ComputeSphere();
  const std::filesystem::path file = std::filesystem::path(std::getenv("XDG_STATE_HOME")) / "view.qlm";
  mesh.SaveMesh(file.string());
  std::ifstream in(file, std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(in), {}};
  std::filesystem::remove(file);

  MeshFacts facts;
  Record record(std::move(bytes), sizeof kMagic - 1 + sizeof kName - 1);
  constexpr std::size_t kPlace = 36;  // position, rotation, scale
  record.skip(kPlace);
  const bool shape = record.take<std::int16_t>() != 0;
  constexpr std::size_t kToSphere = 2 + 4 + 4 + 2 + 2;  // sphere mapping to sprite
  record.skip(kToSphere);
  const auto sphere = record.take<Quasarlens3D::Vec3>();
  const auto radius = record.take<float>();
  record.skip(sizeof(std::int16_t));  // whether the bounds are valid
  facts.box = record.take<Box>();
  constexpr std::size_t kMotion = 16;
  record.skip(kMotion);
  std::vector<Quasarlens3D::NormalVertex> vertices(record.count());
  for (Quasarlens3D::NormalVertex& vertex : vertices) vertex = record.take<Quasarlens3D::NormalVertex>();
  record.skip(record.count() * sizeof(Quasarlens3D::ColorVertex));
  facts.vertices = record.take<std::int32_t>();
  record.skip(2 * sizeof(std::int16_t));  // which list is drawn, number of groups
  const std::size_t groups = record.count();
  for (std::size_t g = 0; g < groups; ++g) {
    record.skip(record.count() * sizeof(std::int16_t));
    record.skip(3 * sizeof(std::int16_t));  // vertices, first vertex, texture
    const auto material = record.take<std::int16_t>();
    constexpr std::size_t kRest = 4 * sizeof(std::int16_t) + sizeof(float);
    record.skip(kRest);
    if (g > 0) facts.materials.push_back(material);
  }
  if (shape) {
    const Box& box = facts.box;
    const Quasarlens3D::Vec3 center = centerOf(box);
    facts.radius = std::min(distance(center, sphere.x, sphere.y, sphere.z) + radius,
                            distance(center, box.low.x, box.low.y, box.low.z));
    return facts;
  }
  // The bounds count the origin too, where nothing may be.
  vertices.resize(std::min(vertices.size(), static_cast<std::size_t>(std::max(facts.vertices, 0))));
  facts.box = boxOf(vertices);
  const Quasarlens3D::Vec3 center = centerOf(facts.box);
  for (const Quasarlens3D::NormalVertex& v : vertices)
    facts.radius = std::max(facts.radius, distance(center, v.x, v.y, v.z));
  return facts;
}

}  // namespace view
