// Drawing many meshes: 2,000 of 300 triangles against the same triangles in one vertex buffer, and 10,000 of which one
// in a hundred is in view against drawing all of them. On both devices, where there is a hardware device.
#include "engine/Engine.h"
#include "mesh/Build.h"
#include "mesh/MeshDraw.h"
#include "mesh/MeshPlacement.h"
#include "mesh/MeshSurface.h"
#include "platform/opengl/OpenGLBackEnd.h"
#include "platform/software/SoftwareBackEnd.h"
#include "render/Camera.h"
#include "render/Materials.h"
#include "render/Subsystems.h"
#include "support/TestPlatform.h"

#include <cmath>
#include <memory>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using namespace ql;

constexpr int kColumns = 10, kRows = 15;  // of squares: 300 triangles

/// An engine with a device of a kind and meshes in rows before the camera.
class World {
 public:
  World(bool hardware, int meshes, int inView) {
    machine_.backEnds[device::DeviceType::Reference] = [](const device::PresentParameters&) {
      return std::shared_ptr<device::BackEnd>(software::createBackEnd());
    };
    machine_.backEnds[device::DeviceType::Hardware] = opengl::createBackEnd;
    context_ = std::make_unique<engine::EngineContext>(machine_.platform());
    engine::startEngine(*context_);
    render::startSubsystems(*context_);
    mesh::startMeshes(*context_);
    engine::setEngineMode(*context_, 1024, 768, 32, hardware, 0);
    usable_ = engine::initialize(*context_, engine::kFullScreen) &&
              (context_->deviceType == device::DeviceType::Hardware) == hardware;
    if (!usable_) return;
    material_ = render::createMaterial(*context_, "lit");
    render::setMaterialColor(*context_, material_, render::MaterialColor::Emissive, {0, 0, 0, 1});
    device::Device& device = *context_->device;
    device.setRenderState(device::RenderState::Ambient, 0xFF202020);
    device::Light light;
    light.type = static_cast<std::uint32_t>(device::LightType::Directional);
    light.diffuse = {0.8f, 0.8f, 0.8f, 1};
    light.direction = {0.3f, -0.5f, 1};
    device.setLight(0, light);
    device.lightEnable(0, true);
    render::setCamera(*context_, {0, 0, -60}, {0, 0, 0});
    for (int i = 0; i < meshes; ++i) add(i, i % (meshes / inView) == 0);
    engine::clear(*context_);
    engine::renderToScreen(*context_);  // brings the planes of the view up to date
    buffer();
  }

  bool usable() const { return usable_; }
  void frame() {
    engine::clear(*context_);
    mesh::renderAllMeshes(*context_);
    finish();
  }
  void frameOfBuffer() {
    engine::clear(*context_);
    device::Device& device = *context_->device;
    device.setTransform(device::Transform::World, math::identity());
    device.setRenderState(device::RenderState::AlphaBlendEnable, 1);
    device.setRenderState(device::RenderState::AlphaTestEnable, 1);
    device.setRenderState(device::RenderState::Lighting, 1);
    device.setRenderState(device::RenderState::SrcBlend, static_cast<std::uint32_t>(device::Blend::SrcAlpha));
    device.setRenderState(device::RenderState::DestBlend, static_cast<std::uint32_t>(device::Blend::InvSrcAlpha));
    device.setTexture(0, nullptr);
    device.setMaterial(render::materialRecord(*context_, material_));
    device.setVertexShader(mesh::kNormalVertices);
    device.setStreamSource(0, buffer_, sizeof(math::NormalVertex));
    device.drawPrimitive(device::PrimitiveType::TriangleList, 0, triangles_);
    finish();
  }
  /// How many pixels of the two ways differ, of the last frames.
  std::size_t difference() {
    frame();
    const std::vector<std::byte> a = picture();
    frameOfBuffer();
    const std::vector<std::byte> b = picture();
    std::size_t count = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
      count += std::abs(std::to_integer<int>(a[i]) - std::to_integer<int>(b[i])) > 16 ? 1 : 0;
    return count;
  }

 private:
  void add(int number, bool inView) {
    std::shared_ptr<mesh::MeshHandle> handle = mesh::allocateMesh(*context_);
    const auto corner = [&](int column, int row) {
      const float u = static_cast<float>(column) / kColumns * 2 - 1, v = static_cast<float>(row) / kRows * 2 - 1;
      const math::Vec3 n = math::normalize(math::Vec3{u, v, -1});
      return math::NormalVertex{n.x, n.y, n.z, n.x, n.y, n.z, u, v, u, v};
    };
    for (int j = 0; j < kRows; ++j)
      for (int i = 0; i < kColumns; ++i)
        for (const auto& [x, y] : {std::pair{0, 0}, {0, 1}, {1, 0}, {1, 0}, {0, 1}, {1, 1}})
          mesh::addVertex(*context_, *handle, corner(i + x, j + y), -1);
    mesh::MeshRecord& record = mesh::meshRecord(*context_, handle->slot);
    mesh::setMaterial(record, material_);
    const auto column = static_cast<float>(number % 50), row = static_cast<float>(number / 50 % 40);
    const math::Vec3 seen{column * 2 - 49, row * 2 - 39, 0};
    mesh::setPosition(record, inView ? seen : math::Vec3{seen.x, seen.y, -900});
    mesh::rebuildMatrix(*context_, handle->slot);
    mesh::computeBounds(*context_, *handle);
    handles_.push_back(std::move(handle));
  }
  void buffer() {
    std::vector<math::NormalVertex> all;
    for (const auto& handle : handles_) {
      const mesh::MeshRecord& record = mesh::meshRecord(*context_, handle->slot);
      for (std::size_t i = 0; i + 1 < record.normalVertices.size(); ++i) {
        math::NormalVertex v = record.normalVertices[i];
        v.x += record.position.x;
        v.y += record.position.y;
        v.z += record.position.z;
        all.push_back(v);
      }
    }
    const std::span<const std::byte> bytes = std::as_bytes(std::span(all));
    buffer_ = context_->device->createVertexBuffer(bytes.size(), 0, mesh::kNormalVertices, device::Pool::Managed);
    buffer_->write(0, bytes);
    triangles_ = static_cast<std::uint32_t>(all.size() / 3);
  }
  void finish() {
    engine::renderToScreen(*context_);
    benchmark::DoNotOptimize(context_->device->getBackBuffer(0)->read({0, 0, 1, 1}));
  }
  std::vector<std::byte> picture() { return context_->device->getBackBuffer(0)->read({0, 0, 1024, 768}); }

  test::TestMachine machine_;
  std::unique_ptr<engine::EngineContext> context_;
  std::vector<std::shared_ptr<mesh::MeshHandle>> handles_;
  std::shared_ptr<device::VertexBuffer> buffer_;
  std::uint32_t triangles_ = 0;
  std::int16_t material_ = 0;
  bool usable_ = false;
};

void manyMeshes(benchmark::State& state) {
  World world(state.range(0) != 0, 2000, 2000);
  if (!world.usable()) return state.SkipWithError("no such device");
  if (world.difference() > 3000) return state.SkipWithError("the pictures differ");
  for (auto _ : state)
    if (state.range(1) != 0)
      world.frameOfBuffer();
    else
      world.frame();
}
BENCHMARK(manyMeshes)->ArgNames({"hardware", "buffer"})->ArgsProduct({{0, 1}, {0, 1}})->Unit(benchmark::kMillisecond);

void fewInView(benchmark::State& state) {
  World world(state.range(0) != 0, 10'000, static_cast<int>(state.range(1)));
  if (!world.usable()) return state.SkipWithError("no such device");
  for (auto _ : state) world.frame();
}
BENCHMARK(fewInView)
    ->ArgNames({"hardware", "inView"})
    ->ArgsProduct({{0, 1}, {100, 10'000}})
    ->Unit(benchmark::kMillisecond);

}  // namespace
