#include "mesh/LoadXFile.h"

#include "mesh/FileNames.h"
#include "platform/device/DeviceError.h"
#include "platform/host/Files.h"
#include "platform/utility/SubsetMesh.h"
#include "platform/xfile/XFile.h"
#include "render/Materials.h"
#include "render/TextureTable.h"

#include <memory>
#include <utility>

namespace ql::mesh {
namespace {

xfile::FlatMesh readMesh(const std::string& fileName) {
  const std::vector<std::byte> bytes = host::readFile(fileName);
  try {
    xfile::FlatMesh flat = xfile::flatten(xfile::parseXFile(bytes));
    if (!flat.attributes.empty()) return flat;
  } catch (const host::FileFault& fault) {
    throw device::DeviceError(device::kErrorInvalidData, fault.what());
  }
  throw device::DeviceError(device::kErrorInvalidData, "The file has no triangles");
}

std::shared_ptr<utility::SubsetMesh> subsetsOf(xfile::FlatMesh& flat) {
  std::vector<utility::SubsetVertex> vertices;
  vertices.reserve(flat.vertices.size());
  for (const xfile::Vertex& v : flat.vertices) vertices.push_back({v.position, v.normal, v.tu, v.tv});
  return std::make_shared<utility::SubsetMesh>(std::move(vertices), std::move(flat.indices),
                                               std::move(flat.attributes));
}

std::int16_t createMaterial(engine::EngineContext& context, const xfile::Material& material) {
  const auto opaque = [](math::Color4 color) {
    color.a = 1;
    return color;
  };
  const std::int16_t index = render::createMaterial(context, "");
  const auto set = [&](render::MaterialColor which, const math::Color4& color) {
    render::setMaterialColor(context, index, which, color);
  };
  set(render::MaterialColor::Diffuse, opaque(material.diffuse));
  set(render::MaterialColor::Ambient, {0, 0, 0, 1});  // files have none
  set(render::MaterialColor::Specular, material.specular);
  set(render::MaterialColor::Emissive, opaque(material.emissive));
  render::setMaterialPower(context, index, material.power);
  return index;
}

std::int16_t loadTexture(engine::EngineContext& context, const std::string& name, const std::string& folder) {
  std::string path = host::fileExists(name) ? name : folder + name;
  const std::string textureName = path;
  std::int32_t width = -1, height = -1, colorKey = 0;
  return render::loadTexture(context, path, textureName, width, height, colorKey)->index;
}

}  // namespace

void loadXFile(engine::EngineContext& context, MeshHandle& mesh, const std::string& fileName) {
  xfile::FlatMesh flat = readMesh(fileName);
  if (flat.materials.size() > static_cast<std::size_t>(kMaxGroups))
    throw engine::EngineError(engine::kOverflow, "Overflow");
  const std::shared_ptr<utility::SubsetMesh> subsets = subsetsOf(flat);

  MeshRecord& record = meshRecord(context, mesh.slot);
  record.subsets = subsets;
  record.vertexCount = static_cast<std::int32_t>(subsets->vertices().size());
  record.groups.assign(flat.materials.size() + 1, MeshGroup{});
  record.groupCount = static_cast<std::int16_t>(flat.materials.size());
  record.usesSubsets = true;
  const std::string folder = folderOf(fileName);
  for (std::size_t k = 0; k < flat.materials.size(); ++k) {
    MeshGroup& group = record.groups[k + 1];
    group.material = createMaterial(context, flat.materials[k]);
    if (!flat.materials[k].texture.empty()) group.texture = loadTexture(context, flat.materials[k].texture, folder);
  }
  noteChange(context, mesh.slot);
}

}  // namespace ql::mesh
