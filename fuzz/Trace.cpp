#include "platform/host/Fault.h"
#include "platform/recording/Replayer.h"
#include "platform/recording/TraceText.h"
#include "platform/software/SoftwareBackEnd.h"
#include "support/TraceFile.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <span>
#include <string>

namespace {

using ql::test::integer;
using ql::test::number;
using ql::test::signature;

/// One record of each kind that a replay performs, as an input of records.
std::string seed() {
  const auto reals = [](std::size_t count) { return std::string(4 * count, '\x3F'); };
  const auto bytes = [](std::size_t count) { return number(count) + std::string(count, '\x3F'); };
  const auto integers = [](std::initializer_list<std::int64_t> values) {
    std::string out;
    for (const std::int64_t value : values) out += integer(value);
    return out;
  };
  const struct {
    bool effect;
    const char* name;
    const char* types;
    std::string values;
  } records[] = {
      {true, "DeviceCreated", "0000", integers({2, 16, 16, 22})},
      {true, "TextureCreated", "000000", integers({1, 8, 8, 1, 21, 1})},
      {true, "TextureWritten", "003", integers({1, 0}) + bytes(256)},
      {true, "BufferCreated", "000", integers({1, 84, 0x144})},
      {true, "BufferWritten", "003", integers({1, 0}) + bytes(84)},
      {true, "TextureTargetCreated", "000", integers({2, 1, 0})},
      {true, "TargetCreated", "0000", integers({3, 4, 4, 22})},
      {true, "TargetWritten", "000003", integers({3, 0, 0, 4, 4}) + bytes(64)},
      {false, "SetRenderTarget", "000", integers({2, 8, 8})},
      {false, "SetViewport", "000011", integers({0, 0, 8, 8}) + std::string(8, '\0')},
      {false, "SetRenderState", "00", integers({137, 0})},
      {false, "SetTextureStageState", "000", integers({0, 1, 4})},
      {false, "SetTransform", "03", integers({256}) + bytes(64)},
      {false, "SetMaterial", "3", bytes(68)},
      {false, "SetLight", "03", integers({0}) + bytes(104)},
      {false, "LightEnable", "00", integers({0, 1})},
      {false, "SetTexture", "00", integers({0, 1})},
      {false, "SetVertexShader", "0", integers({0x144})},
      {false, "SetStreamSource", "000", integers({0, 1, 28})},
      {false, "SetGammaRamp", "4", number(0)},
      {false, "Clear", "030010", integers({0}) + bytes(0) + integers({3, 255}) + reals(1) + integer(0)},
      {false, "BeginScene", "", ""},
      {false, "DrawPrimitive", "000", integers({4, 0, 1})},
      {false, "DrawPrimitiveUP", "0030", integers({6, 1}) + bytes(84) + integer(28)},
      {false, "EndScene", "", ""},
      {false, "Present", "", ""},
      {true, "DeviceReset", "0000", integers({2, 8, 8, 22})},
      {true, "TargetDestroyed", "0", integers({2})},
      {true, "TextureDestroyed", "0", integers({1})},
      {true, "BufferDestroyed", "0", integers({1})},
  };
  std::string out(1, '\1');
  std::uint64_t count = 0;
  for (const auto& record : records)
    out += signature(record.effect, record.name, record.types) + number(++count) + record.values;
  return out;
}

// Half of the inputs are files, the others records alone: their checks and compression would hide them.
std::vector<std::byte> fileFrom(std::span<const std::uint8_t> input) {
  if (input.empty() || input[0] % 2 == 0) {
    const auto file = std::as_bytes(input.subspan(input.empty() ? 0 : 1));
    return {file.begin(), file.end()};
  }
  const std::string records(input.begin() + 1, input.end());
  return ql::test::TraceFile().blob(std::string(400, '\x3F')).records(records).end().bytes();
}

}  // namespace

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned number) {
  static const std::string kSeed = seed();
  if ((size < 16 || number % 1000 == 0) && kSeed.size() <= maxSize) {
    std::memcpy(data, kSeed.data(), kSeed.size());
    return kSeed.size();
  }
  return LLVMFuzzerMutate(data, size, maxSize);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ql;
  try {
    const recording::Trace trace(fileFrom({data, size}));
    recording::TraceCursor cursor(trace);
    std::uint64_t records = 0;
    while (const recording::TraceRecord* record = cursor.next()) {
      ++records;
      if (recording::lineOf(cursor, *record).empty()) std::abort();
    }
    if (records != trace.records()) std::abort();
    constexpr std::uint64_t kMegabyte = 1 << 20;
    recording::Replayer replayer(
        trace, device::DeviceType::Reference,
        [](const device::PresentParameters&) { return std::shared_ptr<device::BackEnd>(software::createBackEnd({1})); },
        {2 * kMegabyte});
    while (replayer.nextFrame()) replayer.picture();
  } catch (const host::FileFault&) {
  } catch (const device::DeviceError&) {
  }
  return 0;
}
