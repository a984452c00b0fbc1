// Prints which pixel code of the reference device draws which states, as the table in docs/devices.md.
#include "platform/device/State.h"
#include "platform/software/Pipeline.h"

#include <array>
#include <cstdio>
#include <string>

namespace {

using namespace ql;
using software::Blending;
using software::Pipeline;
using software::Texturing;

struct Row {
  const char* name;
  void (*change)(device::State&);  // from an opaque texture, filtered, multiplied by the vertices' colours
  device::Format format = device::Format::X8R8G8B8;
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

const Row kRows[] = {
    {"texture times vertex colour", [](device::State&) {}},
    {"texture alone", [](device::State& s) { s.stages[0].colorOp = s.stages[0].alphaOp = 2; }},
    {"vertex colour alone", [](device::State& s) { s.stages[0].colorOp = 1; }},
    {"texture plus vertex colour", [](device::State& s) { s.stages[0].colorOp = 7; }},
    {"second texture multiplied, once to four times", [](device::State& s) { second(s, 5); }},
    {"second texture added", [](device::State& s) { second(s, 7); }},
    {"fog, by vertex or by pixel", [](device::State& s) { s.render.fogEnable = 1; }},
    {"alpha test", [](device::State& s) { s.render.alphaTestEnable = 1; }},
    {"depth test, any function", [](device::State& s) { s.render.zFunc = 2; }},
    {"blend by alpha", [](device::State& s) { blend(s, 5, 6); }},
    {"multiply (lightmap pass)", [](device::State& s) { blend(s, 9, 1); }},
    {"add", [](device::State& s) { blend(s, 2, 2); }},
    {"other factors and operations", [](device::State& s) { blend(s, 10, 3); }},
    {"some channels only", [](device::State& s) { s.render.colorWriteEnable = 7; }, device::Format::A8R8G8B8},
    {"16-bit target", [](device::State&) {}, device::Format::R5G6B5},
    {"clamped, or wrapped at a power of two", [](device::State& s) { s.stages[0].addressU = 3; }},
    {"mirrored, with a border, or wrapped at another size", [](device::State& s) { s.stages[0].addressU = 2; }},
};

Pipeline pipelineOf(const Row& row, const software::Texture& texture) {
  device::State state;
  state.viewport = {0, 0, 64, 64, 0, 1};
  state.render.lighting = 0;
  state.stages[0].colorOp = state.stages[0].alphaOp = 4;
  row.change(state);
  device::DrawPacket packet;
  packet.state = &state;
  packet.vertexFormat = 0x1C2;
  Pipeline out;
  software::makePipeline(packet, software::Target(64, 64, row.format), {&texture, &texture}, false, out);
  return out;
}

std::string stages(const Pipeline& p) {
  std::string out = p.firstTexturing == Texturing::General ? "general" : "own";
  for (int i = 0; i < p.stageCount; ++i)
    if (p.stages[static_cast<std::size_t>(i)].samples && !p.samplers[static_cast<std::size_t>(i)].fast)
      out += ", texels one by one";
  return out;
}

}  // namespace

int main() {
  const software::Texture texture({64, 64, 7, device::Format::A8R8G8B8, false});
  std::puts("| State | Stages | Blending |\n|---|---|---|");
  for (const Row& row : kRows) {
    const Pipeline p = pipelineOf(row, texture);
    std::printf("| %s | %s | %s |\n", row.name, stages(p).c_str(), p.blending == Blending::General ? "general" : "own");
  }
}
