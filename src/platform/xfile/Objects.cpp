#include "platform/xfile/Objects.h"

#include "math/Matrix.h"
#include "platform/host/Files.h"
#include "platform/xfile/FaceList.h"

#include <algorithm>
#include <map>
#include <optional>
#include <unordered_map>
#include <utility>

namespace ql::xfile {
namespace {

enum class Kind : std::uint8_t { Other, Frame, FrameMatrix, Mesh, Normals, TexCoords, MaterialList, Material, Texture };

struct KnownTemplate {
  std::string_view name;
  Guid guid;
  Kind kind;
};
constexpr std::array<KnownTemplate, 8> kTemplates{{
    {"Frame",
     {0x46, 0xAB, 0x82, 0x3D, 0xDA, 0x62, 0xCF, 0x11, 0xAB, 0x39, 0x00, 0x20, 0xAF, 0x71, 0xE4, 0x33},
     Kind::Frame},
    {"FrameTransformMatrix",
     {0x41, 0x3F, 0xF2, 0xF6, 0x86, 0x76, 0xCF, 0x11, 0x8F, 0x52, 0x00, 0x40, 0x33, 0x35, 0x94, 0xA3},
     Kind::FrameMatrix},
    {"Mesh",
     {0x44, 0xAB, 0x82, 0x3D, 0xDA, 0x62, 0xCF, 0x11, 0xAB, 0x39, 0x00, 0x20, 0xAF, 0x71, 0xE4, 0x33},
     Kind::Mesh},
    {"MeshNormals",
     {0x43, 0x3F, 0xF2, 0xF6, 0x86, 0x76, 0xCF, 0x11, 0x8F, 0x52, 0x00, 0x40, 0x33, 0x35, 0x94, 0xA3},
     Kind::Normals},
    {"MeshTextureCoords",
     {0x40, 0x3F, 0xF2, 0xF6, 0x86, 0x76, 0xCF, 0x11, 0x8F, 0x52, 0x00, 0x40, 0x33, 0x35, 0x94, 0xA3},
     Kind::TexCoords},
    {"MeshMaterialList",
     {0x42, 0x3F, 0xF2, 0xF6, 0x86, 0x76, 0xCF, 0x11, 0x8F, 0x52, 0x00, 0x40, 0x33, 0x35, 0x94, 0xA3},
     Kind::MaterialList},
    {"Material",
     {0x4D, 0xAB, 0x82, 0x3D, 0xDA, 0x62, 0xCF, 0x11, 0xAB, 0x39, 0x00, 0x20, 0xAF, 0x71, 0xE4, 0x33},
     Kind::Material},
    {"TextureFilename",
     {0xE1, 0x90, 0x27, 0xA4, 0x10, 0x78, 0xCF, 0x11, 0xAB, 0x39, 0x00, 0x20, 0xAF, 0x71, 0xE4, 0x33},
     Kind::Texture},
}};

Kind kindOf(std::string_view name) {
  for (const KnownTemplate& known : kTemplates)
    if (host::equalIgnoringCase(name, known.name)) return known.kind;
  return Kind::Other;
}
Kind kindOf(const Guid& guid) {
  for (const KnownTemplate& known : kTemplates)
    if (known.guid == guid) return known.kind;
  return Kind::Other;
}

[[noreturn]] void unexpected(const char* what, std::uint64_t offset) {
  throw host::FileFault(host::Fault::BadEncoding, what, offset);
}

/// Names and file names longer than this are cut.
constexpr std::size_t kLongestName = 260;
/// Materials of a whole file, references counted.
constexpr std::size_t kMostMaterials = 32767;
/// Triangles of a whole file: short faces of text become many.
constexpr std::size_t kMostSceneTriangles = 1'000'000;

/// Exporters write names with blanks in them, which read as several words.
void appendWord(std::string& name, std::string_view word) {
  if (!name.empty()) name += ' ';
  name += word.substr(0, kLongestName);
  name.resize(std::min(name.size(), kLongestName));
}

/// The start of an object: its kind and, when it has one, its own name.
struct Head {
  Kind kind = Kind::Other;
  std::string name;
};

template <class Tokens>
class Reader {
 public:
  explicit Reader(const Tokens& tokens) : tokens_(tokens) {}

  Scene read() {
    const math::Mat4 unmoved = math::identity();
    for (Token token = tokens_.next(); token.kind != TokenKind::End; token = tokens_.next()) {
      if (token.kind == TokenKind::Template) {
        declareTemplate();
      } else if (token.kind == TokenKind::Name) {
        object(openObject(token), unmoved, 0);
      } else if (token.kind == TokenKind::Open) {
        skipObject();
      } else if (token.kind != TokenKind::Close && token.kind != TokenKind::Identifier) {
        unexpected("object", tokens_.offset());
      }
    }
    placeTopMeshes();
    return std::move(scene_);
  }

 private:
  /// After "template": its name, its identifier, its members.
  void declareTemplate() {
    const Token name = tokens_.next();
    if (name.kind != TokenKind::Name || tokens_.next().kind != TokenKind::Open)
      unexpected("template", tokens_.offset());
    const Token token = tokens_.next();
    if (token.kind == TokenKind::Identifier && kindOf(name.text) == Kind::Other)
      if (const Kind kind = kindOf(token.guid); kind != Kind::Other) renamed_[std::string(name.text)] = kind;
    if (token.kind == TokenKind::Close) return;
    skipObject(token.kind == TokenKind::Open ? 2 : 1);
  }

  /// After the name of a template: the object's own name and its opening brace.
  Head openObject(const Token& name) {
    Head head{kindOf(name.text), {}};
    if (head.kind == Kind::Other)
      if (const auto found = renamed_.find(name.text); found != renamed_.end()) head.kind = found->second;
    Token token = tokens_.next();
    while (token.kind == TokenKind::Name || token.kind == TokenKind::Number || token.kind == TokenKind::Identifier) {
      if (token.kind != TokenKind::Identifier) appendWord(head.name, token.text);
      token = tokens_.next();
    }
    if (token.kind != TokenKind::Open) unexpected("opening brace of an object", tokens_.offset());
    return head;
  }

  /// Up to the closing brace of as many open objects.
  void skipObject(std::uint64_t depth = 1) {
    while (depth > 0) {
      const Token token = tokens_.next();
      if (token.kind == TokenKind::Open) ++depth;
      if (token.kind == TokenKind::Close) --depth;
      if (token.kind == TokenKind::End) ended();
    }
  }

  [[noreturn]] void ended() {
    throw host::FileFault(host::Fault::Truncated, "closing brace of an object", tokens_.offset(), 1, tokens_.offset());
  }

  /// Everything that stands in an object after its own values: objects and references by name.
  template <class OnObject, class OnReference>
  void members(OnObject&& onObject, OnReference&& onReference) {
    while (true) {
      const Token token = tokens_.next();
      if (token.kind == TokenKind::Close) return;
      if (token.kind == TokenKind::End) ended();
      if (token.kind == TokenKind::Name) onObject(openObject(token));
      if (token.kind == TokenKind::Open) {
        std::string name;
        Token word = tokens_.next();
        for (; word.kind == TokenKind::Name || word.kind == TokenKind::Number; word = tokens_.next())
          appendWord(name, word.text);
        if (word.kind == TokenKind::End) ended();
        if (word.kind != TokenKind::Close) skipObject(word.kind == TokenKind::Open ? 2 : 1);
        onReference(name);
      }
    }
  }
  template <class OnObject>
  void members(OnObject&& onObject) {
    members(std::forward<OnObject>(onObject), [](const std::string&) {});
  }

  /// An object outside meshes and materials.
  void object(const Head& head, const math::Mat4& matrix, std::size_t depth) {
    if (head.kind == Kind::Frame) {
      frame(matrix, depth);
    } else if (head.kind == Kind::Mesh) {
      const std::size_t index = mesh(head.name);
      if (depth == 0) {
        topMeshes_.push_back(index);
      } else {
        scene_.placements.push_back({index, matrix});
      }
    } else if (head.kind == Kind::Material) {
      materials_[head.name] = material(head.name);
    } else {
      skipObject();
    }
  }

  void frame(const math::Mat4& outer, std::size_t depth) {
    if (depth >= kDeepestFrame)
      throw host::FileFault(host::Fault::TooLarge, "depth of frames", tokens_.offset(), depth + 1, kDeepestFrame);
    math::Mat4 matrix = outer;
    members(
        [&](const Head& head) {
          if (head.kind == Kind::FrameMatrix) {
            matrix = math::multiply(readMatrix(), outer);
            members([&](const Head&) { skipObject(); });
          } else {
            object(head, matrix, depth + 1);
          }
        },
        [&](const std::string& name) {
          const auto found = meshesByName_.find(name);
          if (found == meshesByName_.end() || scene_.placements.size() >= kMostTriangles) return;
          scene_.placements.push_back({found->second, matrix});
          referred_.push_back(found->second);
        });
  }

  math::Mat4 readMatrix() {
    math::Mat4 m;
    for (float* value : {&m.m11, &m.m12, &m.m13, &m.m14, &m.m21, &m.m22, &m.m23, &m.m24, &m.m31, &m.m32, &m.m33, &m.m34,
                         &m.m41, &m.m42, &m.m43, &m.m44})
      *value = tokens_.real();
    return m;
  }

  math::Vec3 vector() {
    const float x = tokens_.real(), y = tokens_.real();
    return {x, y, tokens_.real()};
  }

  /// Room for what is counted, as far as the bytes that are left can hold it. @param bytes of the shortest one
  template <class T>
  void reserve(std::vector<T>& list, std::uint64_t count, std::uint64_t bytes) {
    const std::uint64_t most = tokens_.remaining() / bytes;
    if (count > most) throw host::FileFault(host::Fault::BadSize, "count", tokens_.offset(), count, most);
    list.reserve(count);
  }

  std::vector<math::Vec3> vectors() {
    const std::uint32_t count = tokens_.count();
    std::vector<math::Vec3> out;
    reserve(out, count, 6);
    for (std::uint32_t i = 0; i < count; ++i) out.push_back(vector());
    return out;
  }

  FaceList faces() {
    const std::uint32_t count = tokens_.count();
    FaceList out;
    reserve(out.first, count, 2);
    out.first.push_back(0);
    for (std::uint32_t i = 0; i < count; ++i) {
      const std::uint32_t corners = tokens_.count();
      if (corners > tokens_.remaining() / 2)
        throw host::FileFault(host::Fault::BadSize, "face", tokens_.offset(), corners, tokens_.remaining() / 2);
      for (std::uint32_t k = 0; k < corners; ++k) out.corners.push_back(tokens_.count());
      out.first.push_back(static_cast<std::uint32_t>(out.corners.size()));
    }
    return out;
  }

  std::size_t mesh(const std::string& name) {
    MeshObject out;
    out.name = name;
    out.positions = vectors();
    const FaceList list = faces();
    charge(triangleCount_, triangleCount(list), kMostSceneTriangles, "number of triangles");
    FaceList normalList;
    std::vector<std::uint32_t> faceMaterials;
    members([&](const Head& head) {
      switch (head.kind) {
        case Kind::Normals:
          out.normals = vectors();
          normalList = faces();
          members([&](const Head&) { skipObject(); });
          break;
        case Kind::TexCoords:
          texCoords(out.texCoords);
          break;
        case Kind::MaterialList:
          materialList(out.materials, faceMaterials);
          break;
        default:
          skipObject();
      }
    });
    if (out.materials.empty()) out.materials.emplace_back();
    if (!out.texCoords.empty()) out.texCoords.resize(out.positions.size());
    scene_.droppedFaces += buildTriangles(out, list, normalList, faceMaterials);
    const std::size_t index = scene_.meshes.size();
    if (!name.empty()) meshesByName_.emplace(name, index);
    scene_.meshes.push_back(std::move(out));
    return index;
  }

  void texCoords(std::vector<std::array<float, 2>>& out) {
    const std::uint32_t count = tokens_.count();
    out.clear();
    reserve(out, count, 4);
    for (std::uint32_t i = 0; i < count; ++i) {
      const float u = tokens_.real();
      out.push_back({u, tokens_.real()});
    }
    members([&](const Head&) { skipObject(); });
  }

  void materialList(std::vector<Material>& materials, std::vector<std::uint32_t>& faceMaterials) {
    const std::uint32_t listed = tokens_.count(), count = tokens_.count();
    faceMaterials.clear();
    reserve(faceMaterials, count, 2);
    for (std::uint32_t i = 0; i < count; ++i) faceMaterials.push_back(tokens_.count());
    materials.clear();
    members(
        [&](const Head& head) {
          if (head.kind == Kind::Material) {
            charge(materialCount_, 1, kMostMaterials, "number of materials");
            materials.push_back(material(head.name));
          } else {
            skipObject();
          }
        },
        [&](const std::string& name) {
          const auto found = materials_.find(name);
          if (found == materials_.end()) return;
          charge(materialCount_, 1, kMostMaterials, "number of materials");
          materials.push_back(found->second);
        });
    // Materials that are listed but do not follow stay plain, as far as faces may use them.
    const std::size_t used = std::min(listed, count);
    if (materials.size() >= used) return;
    charge(materialCount_, used - materials.size(), kMostMaterials, "number of materials");
    materials.resize(used);
  }

  void charge(std::size_t& total, std::size_t more, std::size_t limit, const char* what) const {
    total += more;
    if (total > limit) throw host::FileFault(host::Fault::TooLarge, what, tokens_.offset(), total, limit);
  }

  Material material(const std::string& name) {
    Material out;
    out.name = name;
    const auto color = [&](bool alpha) {
      const math::Vec3 rgb = vector();
      return math::Color4{rgb.x, rgb.y, rgb.z, alpha ? tokens_.real() : 1.0F};
    };
    out.diffuse = color(true);
    out.power = tokens_.real();
    out.specular = color(false);
    out.emissive = color(false);
    members([&](const Head& head) {
      if (head.kind != Kind::Texture) return skipObject();
      const std::string file = tokens_.quoted();
      if (out.texture.empty()) out.texture = file.substr(0, kLongestName);
      members([&](const Head&) { skipObject(); });
    });
    return out;
  }

  /// Meshes outside frames stand where they are, unless a frame refers to them.
  void placeTopMeshes() {
    std::sort(referred_.begin(), referred_.end());
    for (const std::size_t index : topMeshes_)
      if (!std::binary_search(referred_.begin(), referred_.end(), index))
        scene_.placements.push_back({index, math::identity()});
  }

  Tokens tokens_;
  Scene scene_;
  std::map<std::string, Kind, std::less<>> renamed_;  ///< templates that files call by other names
  std::unordered_map<std::string, Material> materials_;
  std::unordered_map<std::string, std::size_t> meshesByName_;
  std::vector<std::size_t> topMeshes_, referred_;
  std::size_t materialCount_ = 0, triangleCount_ = 0;  ///< of all lists so far
};

}  // namespace

Scene readObjects(TextTokens tokens) { return Reader<TextTokens>(tokens).read(); }
Scene readObjects(BinaryTokens tokens) { return Reader<BinaryTokens>(tokens).read(); }

}  // namespace ql::xfile
