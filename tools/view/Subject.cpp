#include "Subject.h"

#include "walk/Failure.h"

#include <algorithm>
#include <cctype>
#include <string>

#include <fmt/format.h>

namespace view {
namespace {

namespace fs = std::filesystem;
namespace ql = Quasarlens3D;
using walk::ExitCode;
using walk::Failure;

constexpr float kEyeHeight = 26;  // world units above a player start
constexpr std::int32_t kWhite = -1;

}  // namespace

fs::path baseOf(Kind kind, const Options& options) {
  if (options.base) return fs::absolute(*options.base);
  const fs::path folder = fs::absolute(options.file).parent_path();
  std::string name = folder.filename().string();
  std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
  return kind == Kind::Level && name == "maps" ? folder.parent_path() : folder;
}

Subject::Subject(Kind kind, const Options& options) : kind_(kind) {
  if (kind == Kind::Level) {
    loadLevel(options);
    return;
  }
  mesh_ = scene_.CreateMeshBuilder("view");
  if (kind == Kind::Picture) {
    loadPicture(options.file);
  } else {
    loadMesh(options);
  }
  facts_ = factsOf(mesh_);
  if (facts_.vertices == 0) throw Failure(ExitCode::Malformed, "nothing of the file could be read");
  box_ = facts_.box;
  if (options.up == UpAxis::Z || (options.up == UpAxis::Own && kind == Kind::ThreeDs)) turnUp();
  if (kind != Kind::Picture) giveMaterials();
}

void Subject::loadMesh(const Options& options) {
  std::string file = options.file.string();
  switch (kind_) {
    case Kind::X:
      mesh_.LoadXFile(file);
      break;
    case Kind::ThreeDs:
      mesh_.Load3DsMesh(file);
      break;
    case Kind::Dxe:
      mesh_.LoadDXE(file);
      break;
    default:
      mesh_.LoadFromQLO(file);
      mesh_.SetPosition(0, 0, 0);
      mesh_.SetRotation(0, 0, 0);
      mesh_.ScaleMesh(1, 1, 1);
      mesh_.SetTexture(nullptr);  // files keep numbers of textures, which mean nothing here
      mesh_.SetMaterial(0);
      if (options.strip) mesh_.SetPrimitiveType(ql::QL_TRIANGLESTRIP);
  }
}

/// A rectangle of the picture's proportions that faces -z.
void Subject::loadPicture(const fs::path& file) {
  std::int32_t width = -1, height = -1;
  const ql::Texture8 texture = scene_.LoadTexture(file.string(), width, height);
  const bool known = width > 0 && height > 0;
  const float x = known ? static_cast<float>(width) / 2 : 1, y = known ? static_cast<float>(height) / 2 : 1;
  mesh_.SetVertexType(ql::QL_COLOR_VERTEX);
  mesh_.SetPrimitiveType(ql::QL_TRIANGLESTRIP);
  mesh_.AddVertex(-x, -y, 0, kWhite, 0, 1);
  mesh_.AddVertex(-x, y, 0, kWhite, 0, 0);
  mesh_.AddVertex(x, -y, 0, kWhite, 1, 1);
  mesh_.AddVertex(x, y, 0, kWhite, 1, 0);
  mesh_.SetTexture(texture);
}

void Subject::loadLevel(const Options& options) {
  const fs::path file = fs::absolute(options.file).lexically_normal();
  const fs::path below = file.lexically_relative(baseOf(kind_, options).lexically_normal());
  level_ = ql::BSPTree8();
  level_.LoadShaderDirectory((baseOf(kind_, options) / "scripts").string());
  level_.SetParameters(ql::True, ql::True, ql::QL_DOUBLESIDED, ql::True);
  level_.Load(below.empty() || *below.begin() == ".." ? file.string() : below.generic_string());
}

/// From z up to y up, as levels are turned: (x, y, z) stands at (-x, z, -y).
void Subject::turnUp() {
  mesh_.ScaleMesh(-1, 1, 1);
  mesh_.SetRotation(-90, 0, 0);
  const Box was = box_;
  box_ = {{-was.high.x, was.low.z, -was.high.y}, {-was.low.x, was.high.z, -was.low.y}};
}

/// The built-in material takes so much of the ambient light that its shape vanishes.
void Subject::giveMaterials() {
  ql::MaterialFactory8 factory;
  const std::int16_t grey = factory.CreateMaterial("view");
  factory.SetAmbient(grey, 0.3F, 0.3F, 0.3F, 1);
  factory.SetDiffuse(grey, 0.8F, 0.8F, 0.8F, 1);
  factory.SetSpecular(grey, 0, 0, 0, 1);
  factory.SetEmissive(grey, 0, 0, 0, 1);
  for (std::size_t g = 0; g < facts_.materials.size(); ++g)
    if (facts_.materials[g] == 0) mesh_.SetMaterial(grey, static_cast<float>(g + 1));
}

void Subject::draw() {
  if (kind_ == Kind::Level) {
    level_.Render();
  } else {
    scene_.RenderAllMeshes();
  }
}

ql::Vec3 Subject::start() const {
  ql::Vec3 at = level_.GetStartPlayerPosition();
  at.y += kEyeHeight;
  return at;
}

}  // namespace view
