// Prints which pixel code of the reference device draws which states, and how fast: the table in docs/devices.md, which
// scripts/pixel-code.py puts there. Each row draws full-screen layers of 1024 x 768, bilinear, on one thread.
#include "platform/device/Resources.h"
#include "platform/software/Pipeline.h"
#include "platform/software/SoftwareBackEnd.h"

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

namespace {

using namespace ql;
using device::Format;
using software::Blending;
using software::Pipeline;
using software::Texturing;

constexpr std::uint32_t kWidth = 1024, kHeight = 768, kSide = 256, kOddSide = 200;
constexpr int kLayers = 16;

struct Row {
  const char* name;
  void (*change)(device::State&);  // from an opaque texture, filtered, multiplied by the vertices' colours
  Format format = Format::X8R8G8B8;
  std::uint32_t side = kSide;  // of the texture
};

void blend(device::State& s, std::uint32_t source, std::uint32_t destination) {
  s.render.alphaBlendEnable = 1;
  s.render.srcBlend = source;
  s.render.destBlend = destination;
}
void second(device::State& s, std::uint32_t operation) {
  s.stages[1].colorOp = operation;
  s.stages[1].alphaOp = 3;
}
void address(device::State& s, std::uint32_t mode) { s.stages[0].addressU = s.stages[0].addressV = mode; }
void fog(device::State& s, std::uint32_t vertexMode, std::uint32_t tableMode) {
  s.render.fogEnable = 1;
  s.render.fogVertexMode = vertexMode;
  s.render.fogTableMode = tableMode;
  s.render.fogEnd = std::bit_cast<std::uint32_t>(2.0f);
}

const Row kRows[] = {
    {"texture alone", [](device::State& s) { s.stages[0].colorOp = s.stages[0].alphaOp = 2; }},
    {"texture times vertex colour", [](device::State&) {}},
    {"vertex colour alone", [](device::State& s) { s.stages[0].colorOp = 1; }},
    {"texture plus vertex colour", [](device::State& s) { s.stages[0].colorOp = 7; }},
    {"second texture multiplied, once to four times", [](device::State& s) { second(s, 5); }},
    {"second texture added", [](device::State& s) { second(s, 7); }},
    {"specular colour added", [](device::State& s) { s.render.specularEnable = 1; }},
    {"fog by vertex", [](device::State& s) { fog(s, 3, 0); }},
    {"linear fog by pixel", [](device::State& s) { fog(s, 0, 3); }},
    {"exponential fog by pixel", [](device::State& s) { fog(s, 0, 2); }},
    {"alpha test", [](device::State& s) { s.render.alphaTestEnable = 1, s.render.alphaFunc = 7; }},
    {"depth test and depth writing", [](device::State& s) { s.render.zEnable = 1; }},
    {"depth test, functions that let farther pixels pass",
     [](device::State& s) { s.render.zEnable = 1, s.render.zFunc = 8; }},
    {"blend by alpha", [](device::State& s) { blend(s, 5, 6); }},
    {"multiply (lightmap pass)", [](device::State& s) { blend(s, 9, 1); }},
    {"add", [](device::State& s) { blend(s, 2, 2); }},
    {"other factors and operations", [](device::State& s) { blend(s, 10, 3); }},
    {"some channels only", [](device::State& s) { s.render.colorWriteEnable = 7; }, Format::A8R8G8B8},
    {"16-bit target", [](device::State&) {}, Format::R5G6B5},
    {"16-bit target, dithered", [](device::State& s) { s.render.ditherEnable = 1; }, Format::R5G6B5},
    {"without filter", [](device::State& s) { s.stages[0].minFilter = s.stages[0].magFilter = 1; }},
    {"between two mip levels",
     [](device::State& s) {
       s.stages[0].mipFilter = 2;
       s.stages[0].mipMapLodBias = std::bit_cast<std::uint32_t>(2.0f);
     }},
    {"clamped", [](device::State& s) { address(s, 3); }},
    {"mirrored", [](device::State& s) { address(s, 2); }},
    {"with a border", [](device::State& s) { address(s, 4); }},
    {"wrapped at a size that is no power of two", [](device::State&) {}, Format::X8R8G8B8, kOddSide},
};

struct Vertex {
  float x, y, z;
  std::uint32_t diffuse, specular;
  float u, v;
};

device::State stateOf(const Row& row) {
  device::State state;
  state.viewport = {0, 0, static_cast<std::int32_t>(kWidth), static_cast<std::int32_t>(kHeight), 0, 1};
  state.render.lighting = state.render.zEnable = 0;
  state.render.cullMode = 1;
  for (auto& stage : state.stages) {
    stage.minFilter = stage.magFilter = 2;
    stage.mipFilter = 1;
    stage.texCoordIndex = 0;
  }
  state.stages[0].colorOp = state.stages[0].alphaOp = 4;
  row.change(state);
  return state;
}

device::DrawPacket packetOf(const device::State& state, const std::vector<Vertex>& vertices) {
  device::DrawPacket packet;
  packet.state = &state;
  packet.stateVersion = 1;
  packet.vertexFormat = 0x1C2;
  packet.stride = sizeof(Vertex);
  packet.vertexCount = static_cast<std::uint32_t>(vertices.size());
  packet.primitiveCount = packet.vertexCount / 3;
  packet.vertices = std::as_bytes(std::span(vertices));
  return packet;
}

/// Millions of pixels a second.
double rateOf(const Row& row) {
  const auto backEnd = software::createBackEnd({1});
  const device::State state = stateOf(row);
  const auto texture = backEnd->createTexture({row.side, row.side, 8, Format::A8R8G8B8, false});
  std::uint32_t random = 1;
  for (std::uint32_t level = 0; level < 8; ++level) {
    std::vector<std::uint32_t> texels(std::size_t{std::max(row.side >> level, 1u)} * std::max(row.side >> level, 1u));
    for (std::uint32_t& texel : texels) texel = random = random * 1664525 + 1013904223;
    backEnd->uploadTexture(texture, level, std::as_bytes(std::span(texels)));
  }
  std::vector<Vertex> vertices;
  for (int i = 0; i < kLayers; ++i) {
    const auto corner = [&](float x, float y) {
      const float z = 0.9f - 0.02f * static_cast<float>(i);
      return Vertex{x, y, z, 0xF0FFC080, 0x00204060, (x + 1) * 1.65f, (1 - y) * 1.25f};
    };
    const Vertex a = corner(-1, 1), b = corner(1, 1), c = corner(1, -1), d = corner(-1, -1);
    vertices.insert(vertices.end(), {a, b, c, a, c, d});
  }
  device::DrawPacket packet = packetOf(state, vertices);
  packet.target = backEnd->createTarget(kWidth, kHeight, row.format);
  packet.textures = {texture, texture};
  double best = 1;
  using Clock = std::chrono::steady_clock;
  for (const Clock::time_point end = Clock::now() + std::chrono::milliseconds(250); Clock::now() < end;) {
    backEnd->clear(packet.target, {}, device::kClearTarget | device::kClearDepth, 0, 1);
    backEnd->present(packet.target, nullptr);
    const Clock::time_point start = Clock::now();
    backEnd->draw(packet);
    backEnd->present(packet.target, nullptr);
    best = std::min(best, std::chrono::duration<double>(Clock::now() - start).count());
  }
  return kLayers * double{kWidth} * kHeight / best * 1e-6;
}

Pipeline pipelineOf(const Row& row) {
  const software::Texture texture({row.side, row.side, 8, Format::A8R8G8B8, false});
  const device::State state = stateOf(row);
  Pipeline out;
  software::makePipeline(packetOf(state, {}), software::Target(kWidth, kHeight, row.format), {&texture, &texture},
                         false, out);
  return out;
}

const char* own(bool own) { return own ? "own" : "general"; }

bool ownAddressing(const Pipeline& p) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(p.stageCount); ++i)
    if (p.stages[i].samples && !p.samplers[i].fast) return false;
  return true;
}

}  // namespace

int main() {
  double fastest = 0;
  std::puts("| State | Stages | Texels | Blending | Mpix/s | of the first |\n|---|---|---|---|---:|---:|");
  for (const Row& row : kRows) {
    const Pipeline p = pipelineOf(row);
    const double rate = rateOf(row);
    if (fastest == 0) fastest = rate;
    std::printf("| %s | %s | %s | %s | %.0f | %.2f |\n", row.name, own(p.firstTexturing != Texturing::General),
                own(ownAddressing(p)), own(p.blending != Blending::General), rate, rate / fastest);
  }
}
