#include "mesh/LoadThreeDs.h"

#include "diagnostics/LogLines.h"
#include "mesh/FileNames.h"
#include "mesh/ThreeDs.h"
#include "platform/host/Files.h"
#include "render/Materials.h"
#include "render/TextureTable.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>
#include <unordered_map>
#include <utility>
#include <variant>

namespace ql::mesh {
namespace {

constexpr std::int32_t kWhite = -1;  // packed ARGB
/// Textures that one file may ask for; each costs a search on disk.
constexpr std::size_t kMostTextures = 4096;

std::string hexadecimal(std::uint16_t number) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (int shift = 12; shift >= 0; shift -= 4)
    if (const int digit = number >> shift & 15; digit != 0 || !text.empty() || shift == 0) text += kDigits[digit];
  return text;
}

/// A material of the file and the engine's material that was made for it.
struct FileMaterial {
  std::string name;
  std::array<math::Color4, 3> colors{};  ///< ambient, diffuse, specular
  std::int16_t texture = 0, material = 0;
};

/// Replays a file's chunks on a mesh.
class Loader {
 public:
  Loader(engine::EngineContext& context, MeshHandle& mesh, std::string folder)
      : context_(context), mesh_(mesh), folder_(std::move(folder)) {}

  void load(const ThreeDsFile& file) {
    for (const ThreeDsChunk& chunk : file.chunks) {
      if (chunk.fault) logError(chunk.fault->number(), chunk.fault->what());
      guarded([&] { apply(chunk); });
      if (!chunk.label.empty()) label_ = chunk.label;
      lines_.push_back("  ##  " + hexadecimal(chunk.id) + " (" + label_ + ")");
    }
    if (file.fault) logError(file.fault->number(), file.fault->what());
  }

  /// Lines are kept and written together; whatever else logs something gets those before it written first.
  void log(const std::string& line) { lines_.push_back(line); }
  void flush() {
    diagnostics::writeLines(context_.log, lines_);
    lines_.clear();
  }
  void logError(std::int32_t number, const std::string& text) {
    lines_.push_back("Error in 3Ds loader : " + std::to_string(number) + " " + text);
  }

  /// What fails is logged, and the load goes on.
  template <class Step>
  void guarded(Step&& step) {
    try {
      step();
    } catch (...) {
      const engine::EngineError error = engine::currentError();
      logError(error.number, error.what());
    }
  }

 private:
  void apply(const ThreeDsChunk& chunk) {
    if (const auto* positions = std::get_if<std::vector<math::Vec3>>(&chunk.payload)) {
      positions_ = positions;
    } else if (const auto* coords = std::get_if<std::vector<std::array<float, 2>>>(&chunk.payload)) {
      coords_ = coords;
      mapped_ = true;
    } else if (const auto* faces = std::get_if<std::vector<ThreeDsFace>>(&chunk.payload)) {
      addFaces(*faces);
      mapped_ = false;
    } else if (const auto* color = std::get_if<std::array<std::uint8_t, 3>>(&chunk.payload)) {
      setColor(*color);
    } else if (const auto* text = std::get_if<std::string>(&chunk.payload)) {
      useText(chunk, *text);
    } else {
      enter(static_cast<ThreeDsId>(chunk.id));
    }
  }

  void enter(ThreeDsId id) {
    switch (id) {
      case ThreeDsId::Mesh:
        if (object_ == std::numeric_limits<std::int16_t>::max())
          throw engine::EngineError(engine::kOverflow, "Overflow");
        ++object_;
        open_ = false;
        setGroupPointer(context_, mesh_, object_);
        open_ = true;
        break;
      case ThreeDsId::Material:
        materials_.push_back({{}, {}, 0, render::createMaterial(context_, "")});
        byName_[""].push_back(materials_.size() - 1);
        break;
      case ThreeDsId::AmbientColor:
        color_ = 0;
        break;
      case ThreeDsId::DiffuseColor:
        color_ = 1;
        break;
      case ThreeDsId::SpecularColor:
        color_ = 2;
        break;
      case ThreeDsId::FirstMap:
        firstMap_ = true;
        break;
      case ThreeDsId::SecondMap:
        firstMap_ = false;
        break;
      default:
        break;
    }
  }

  void useText(const ThreeDsChunk& chunk, const std::string& text) {
    if (chunk.is(ThreeDsId::FaceMaterial)) assignMaterial(text);
    if (materials_.empty()) return;
    if (chunk.is(ThreeDsId::MaterialName)) rename(text);
    if (chunk.is(ThreeDsId::MapFile) && firstMap_) loadMap(text);
  }

  void setColor(const std::array<std::uint8_t, 3>& rgb) {
    if (materials_.empty()) return;
    const auto part = [&](std::size_t i) { return static_cast<float>(rgb[i]) / 255.0F; };
    materials_.back().colors[color_] = {part(0), part(1), part(2), 1};
  }

  /// The newest material is the last of those that share its name.
  void rename(const std::string& name) {
    byName_[materials_.back().name].pop_back();
    materials_.back().name = name;
    byName_[name].push_back(materials_.size() - 1);
  }

  void loadMap(const std::string& file) {
    if (++textures_ > kMostTextures)
      throw host::FileFault(host::Fault::TooLarge, "number of textures", 0, textures_, kMostTextures);
    std::string path = folder_ + file;
    std::int32_t width = -1, height = -1, colorKey = 0;
    flush();
    materials_.back().texture = render::loadTexture(context_, path, "", width, height, colorKey)->index;
  }

  /// Every material of that name takes its colours; the last one is the group's.
  void assignMaterial(const std::string& name) {
    const auto found = byName_.find(name);
    if (found == byName_.end() || found->second.empty() || object_ == 0) return;
    // Only the newest material of a file can have changed since its name was used before.
    std::size_t& done = applied_[name];
    const std::vector<std::size_t>& same = found->second;
    for (std::size_t i = std::min(done, same.size() - 1); i < same.size(); ++i) applyColors(materials_[same[i]]);
    done = same.size();
    MeshRecord& record = meshRecord(context_, mesh_.slot);
    if (static_cast<std::size_t>(object_) >= record.groups.size())
      throw engine::EngineError(engine::kSubscript, "Subscript out of range");
    MeshGroup& group = record.groups[static_cast<std::size_t>(object_)];
    group.texture = materials_[same.back()].texture;
    group.material = materials_[same.back()].material;
  }

  void applyColors(const FileMaterial& material) {
    using render::MaterialColor;
    const auto set = [&](MaterialColor which, const math::Color4& color) {
      render::setMaterialColor(context_, material.material, which, color);
    };
    set(MaterialColor::Diffuse, {1, 1, 1, 1});
    set(MaterialColor::Ambient, material.colors[0]);
    set(MaterialColor::Specular, material.colors[2]);
    set(MaterialColor::Emissive, {0, 0, 0, 0});
  }

  /// Appends the triangles as addVertex would one by one; a triangle comes whole or not at all.
  void addFaces(const std::vector<ThreeDsFace>& faces) {
    const std::size_t positions = positions_ ? positions_->size() : 0;
    std::vector<ThreeDsFace> good;
    good.reserve(faces.size());
    for (const ThreeDsFace& face : faces)
      if (*std::max_element(face.corners.begin(), face.corners.end()) < positions) good.push_back(face);

    MeshRecord& record = meshRecord(context_, mesh_.slot);
    if (mesh_.currentGroup < 0 || static_cast<std::size_t>(mesh_.currentGroup) >= record.groups.size())
      throw engine::EngineError(engine::kSubscript, "Subscript out of range");
    const std::int32_t inGroup = record.groups[static_cast<std::size_t>(mesh_.currentGroup)].count;
    const std::int32_t room = open_ ? kMaxVertices - std::max(record.vertexCount, inGroup) : 0;
    const std::size_t fitting = std::min(good.size(), static_cast<std::size_t>(std::max(room, 0)) / 3);
    appendTriangles(record, std::span(good).first(fitting));
    noteChange(context_, mesh_.slot);
    if (const std::size_t bad = faces.size() - good.size(); bad > 0)
      throw host::FileFault(host::Fault::BadReference, "vertex of " + std::to_string(bad) + " faces", 0, bad,
                            positions);
    if (fitting < good.size()) throw engine::EngineError(engine::kOverflow, "Overflow");
  }

  void appendTriangles(MeshRecord& record, std::span<const ThreeDsFace> faces) {
    auto at = static_cast<std::size_t>(record.vertexCount);
    const std::size_t count = at + faces.size() * 3;
    record.normalVertices.resize(count + 1);
    record.colorVertices.resize(count + 1);
    MeshGroup& group = record.groups[static_cast<std::size_t>(mesh_.currentGroup)];
    group.indices.reserve(group.indices.size() + faces.size() * 3);
    for (const ThreeDsFace& face : faces) {
      const auto corner = [&](std::size_t k) { return (*positions_)[face.corners[k]]; };
      const math::Vec3 n =
          math::normalize(math::cross(math::subtract(corner(1), corner(0)), math::subtract(corner(2), corner(0))));
      for (std::size_t k = 0; k < 3; ++k, ++at) {
        const math::Vec3 p = corner(k);
        std::array<float, 2> uv{};
        if (mapped_ && face.corners[k] < coords_->size()) uv = (*coords_)[face.corners[k]];
        const float u = uv[0], v = 1 - uv[1];
        record.normalVertices[at] = {p.x, p.y, p.z, n.x, n.y, n.z, u, v, u, v};
        record.colorVertices[at] = {p.x, p.y, p.z, kWhite, 0, u, v, u, v};
        group.indices.push_back(static_cast<std::int16_t>(at));
      }
    }
    record.normalVertices[count] = {};
    record.colorVertices[count] = {};
    group.count = static_cast<std::int16_t>(static_cast<std::size_t>(group.count) + faces.size() * 3);
    record.vertexCount = static_cast<std::int32_t>(count);
  }

  engine::EngineContext& context_;
  MeshHandle& mesh_;
  std::string folder_, label_ = "3DS: Load3ds";
  std::int16_t object_ = 0;
  bool open_ = true;  ///< the object has its group
  const std::vector<math::Vec3>* positions_ = nullptr;
  const std::vector<std::array<float, 2>>* coords_ = nullptr;
  bool mapped_ = false, firstMap_ = false;
  std::size_t color_ = 0, textures_ = 0;
  std::vector<std::string> lines_;
  std::vector<FileMaterial> materials_;
  std::unordered_map<std::string, std::vector<std::size_t>> byName_;  ///< in order
  std::unordered_map<std::string, std::size_t> applied_;              ///< of byName_, how many have their colours
};

}  // namespace

void loadThreeDs(engine::EngineContext& context, MeshHandle& mesh, std::string& fileName) {
  meshRecord(context, mesh.slot).primitiveType = kTriangleList;
  context.pak.expand(fileName);
  Loader loader(context, mesh, folderOf(fileName));
  loader.log("Loading 3DS mesh : " + fileName + "...");
  loader.guarded([&] { loader.load(parseThreeDs(host::readFile(fileName))); });
  loader.log("End of 3DS Loading.");
  loader.flush();
  context.pak.deleteExpanded(fileName);
}

}  // namespace ql::mesh
