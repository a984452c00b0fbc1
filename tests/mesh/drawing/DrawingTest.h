/// @file
/// Meshes on a device whose calls are recorded.
#pragma once

#include "mesh/Build.h"
#include "mesh/MeshDraw.h"
#include "mesh/MeshPlacement.h"
#include "mesh/MeshRays.h"
#include "mesh/MeshSurface.h"
#include "render/Materials.h"
#include "render/RenderTest.h"
#include "render/TextureTable.h"

#include <cstring>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace ql::mesh {

struct DrawingTest : test::RenderTest {
  std::vector<std::shared_ptr<MeshHandle>> kept;

  void SetUp() override {
    RenderTest::SetUp();
    startMeshes(context);
    context.collisionPrecision = 30;
  }

  MeshHandle& make(const std::string& name = "") { return *kept.emplace_back(allocateMesh(context, name)); }
  /// A mesh of group 1 with so many vertices, in a row along x.
  MeshHandle& makeRow(int vertices) {
    MeshHandle& mesh = make();
    for (int i = 0; i < vertices; ++i)
      addVertex(context, mesh, {static_cast<float>(i), static_cast<float>(i % 2), 0}, -1);
    return mesh;
  }
  MeshRecord& record(const MeshHandle& mesh) { return meshRecord(context, mesh.slot); }
  /// Entries 1 to count of the texture and of the material table.
  void makeLooks(std::int16_t count) {
    auto& entries = context.get<render::TextureTable>().entries;
    while (entries.count() < count) {
      const std::int16_t index = entries.grow();
      entries.at(index).texture =
          context.device->createTexture(4, 4, 1, 0, device::Format::A8R8G8B8, device::Pool::Managed);
      name(entries.at(index).texture, std::to_string(index));
      render::createMaterialQuick(context, {static_cast<float>(index), 0, 0, 1}, "");
    }
  }
  /// What calls() calls a texture.
  void name(const std::shared_ptr<device::Texture>& texture, const std::string& name) {
    context.device->setTexture(0, texture);
    textureNames_[recorder.calls().back().values.at(1)] = name;
  }

  /// The device's calls since the last time, readable: matrices as their x translation, textures by name, materials by
  /// their red, vertices as the x of the first one.
  std::vector<std::string> calls() {
    std::vector<std::string> lines;
    for (const recording::Recorder::Call& call : recorder.calls()) {
      const auto number = [&](std::size_t offset) {
        float value = 0;
        std::memcpy(&value, call.blobs.at(0).data() + offset, sizeof value);
        std::ostringstream text;
        text << value;
        return text.str();
      };
      if (call.name == "SetRenderState")
        lines.push_back(call.values[0] + " = " + call.values[1]);
      else if (call.name == "SetTextureStageState")
        lines.push_back("stage " + call.values[1] + " = " + call.values[2]);
      else if (call.name == "SetTransform")
        lines.push_back("transform " + call.values[0] + " at " + number(48));
      else if (call.name == "SetTexture")
        lines.push_back("texture " + (call.values[1] == "0" ? "none" : textureNames_[call.values[1]]));
      else if (call.name == "SetMaterial")
        lines.push_back("material " + number(0));
      else if (call.name == "SetVertexShader")
        lines.push_back("format " + call.values[0]);
      else if (call.name == "DrawPrimitiveUP")
        lines.push_back((call.values[0] == "4" ? "list" : "strip") + (" of " + call.values[1]) +
                        (call.blobs.at(0).empty() ? "" : " from " + number(0)));
      else
        lines.push_back(call.line());
    }
    recorder.clear();
    return lines;
  }
  /// Those of the calls that draw, and the textures, materials and blending before them.
  std::vector<std::string> drawn() {
    std::vector<std::string> lines = calls();
    std::erase_if(lines, [](const std::string& line) {
      return !line.starts_with("texture") && !line.starts_with("material") && !line.starts_with("list") &&
             !line.starts_with("strip") && !line.starts_with("19") && !line.starts_with("20");
    });
    return lines;
  }
  /// Ends a frame of so many milliseconds.
  void endFrame(std::int32_t milliseconds) {
    context.frameSteps.run(engine::FrameStage::EndOfFrame);
    context.elapsedMs = milliseconds;
  }
  void beginFrame() {
    engine::clear(context);
    recorder.clear();
  }

 private:
  std::map<std::string, std::string> textureNames_;
};

}  // namespace ql::mesh
