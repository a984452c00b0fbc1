#include "SeedFolder.h"
#include "mesh/DxeText.h"
#include "platform/host/Fault.h"

#include <cmath>
#include <cstdlib>
#include <span>
#include <string>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  std::string text = "title\r\n2\r\n";
  for (int i = 0; i < 48; ++i) text += std::to_string(i - 20) + ".25e-1\r\n";
  const auto bytes = std::as_bytes(std::span(text));
  ql::test::writeSeeds(*argc, *argv, {{bytes.begin(), bytes.end()}});
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ql;
  try {
    const auto vertices = mesh::parseDxe({reinterpret_cast<const char*>(data), size});
    if (vertices.size() * 8 > size || vertices.size() % 3 != 0) std::abort();
    for (const math::NormalVertex& v : vertices)
      if (!std::isfinite(v.x + v.y + v.z) && std::fabs(v.x) < 1e37f && std::fabs(v.y) < 1e37f && std::fabs(v.z) < 1e37f)
        std::abort();
  } catch (const host::FileFault&) {
  } catch (const engine::EngineError&) {
  }
  return 0;
}
