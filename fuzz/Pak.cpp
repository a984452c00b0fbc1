#include "archive/PakDirectory.h"
#include "platform/host/Fault.h"

#include <cstdlib>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const auto directory = ql::archive::parsePakDirectory(std::as_bytes(std::span(data, size)));
    for (const auto& entry : directory.entries) {
      const auto* first = directory.find(entry.name);
      if (first == nullptr || first > &entry) std::abort();
    }
  } catch (const ql::host::FileFault&) {
  }
  return 0;
}
