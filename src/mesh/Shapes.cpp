#include "mesh/Shapes.h"

#include "mesh/MeshPlacement.h"
#include "mesh/MeshSurface.h"
#include "platform/utility/Shapes.h"
#include "platform/utility/TextMesh.h"
#include "render/UserFonts.h"

#include <memory>
#include <utility>

namespace ql::mesh {
namespace {

constexpr std::int16_t kFirstGroup = 1;
constexpr std::int16_t kStatedCount = 30;  // vertices that the group of a shape claims to have; files keep the number
constexpr math::Vec3 kShapeScale{4, 4, 4};
constexpr float kTextDeviation = 1;  // thousandths of an em
constexpr float kTextDepth = 40;     // where letters have 100 units per em

void become(engine::EngineContext& context, const MeshHandle& mesh, std::shared_ptr<utility::SubsetMesh> shape) {
  MeshRecord& record = meshRecord(context, mesh.slot);
  record.subsets = std::move(shape);
  record.usesSubsets = true;
  record.vertexCount = static_cast<std::int32_t>(record.subsets->vertices().size());
  noteChange(context, mesh.slot);
}

/// Opens the first group when it is the last one or the last but one, and lets it claim its vertices.
void claimGroup(engine::EngineContext& context, MeshHandle& mesh) {
  setGroupPointer(context, mesh, kFirstGroup);
  MeshRecord& record = meshRecord(context, mesh.slot);
  record.groups[kFirstGroup].count = kStatedCount;
}

}  // namespace

void createSphere(engine::EngineContext& context, MeshHandle& mesh, std::int16_t texture, float radius,
                  std::int32_t slices, std::int32_t stacks) {
  context.requireDevice();
  // The group starts after the shape's vertices, at a 16-bit number.
  if (slices >= 2 && stacks >= 2 && utility::sphereVertexCount(slices, stacks) > kMaxVertices)
    throw engine::EngineError(engine::kOverflow, "Overflow");
  setTexture(meshRecord(context, mesh.slot), texture);
  become(context, mesh, utility::createSphere(radius, slices, stacks));
  claimGroup(context, mesh);
}

void createTeapot(engine::EngineContext& context, MeshHandle& mesh) {
  context.requireDevice();
  setGroupPointer(context, mesh, kFirstGroup);
  become(context, mesh, utility::createTeapot());
  setScale(meshRecord(context, mesh.slot), kShapeScale);
  meshRecord(context, mesh.slot).groups[kFirstGroup].count = kStatedCount;
}

void create3DText(engine::EngineContext& context, MeshHandle& mesh, const std::string& text,
                  const std::string& userFont) {
  context.requireDevice();
  const fonts::FontRequest font = render::findUserFont(context, userFont).value_or(context.internalFont);
  become(context, mesh, utility::createText(font, text, kTextDeviation, kTextDepth));
  setScale(meshRecord(context, mesh.slot), kShapeScale);
}

}  // namespace ql::mesh
