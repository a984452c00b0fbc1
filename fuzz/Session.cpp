#include "input/SessionReader.h"
#include "platform/host/Fault.h"
#include "support/SessionFile.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned number) {
  static const std::string kSeed = ql::test::wholeSession().text();
  if ((size < 16 || number % 1000 == 0) && kSeed.size() <= maxSize) {
    std::memcpy(data, kSeed.data(), kSeed.size());
    return kSeed.size();
  }
  return LLVMFuzzerMutate(data, size, maxSize);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto bytes = std::as_bytes(std::span(data, size));
  try {
    ql::input::SessionReader session({bytes.begin(), bytes.end()});
    // A host that asks more often than the one that was recorded, and less often.
    std::uint32_t frames = 0;
    while (!session.ended()) {
      for (std::uint32_t i = 0; i < frames % 5; ++i) {
        session.tick();
        session.sample();
        for (const auto& controller : session.snapshot().controllers)
          if (controller.info->axes > ql::input::kMostAxes || controller.info->buttons > ql::input::kMostButtons)
            std::abort();
      }
      session.endFrame();
      ++frames;
    }
    if (frames != session.frames() || frames == 0) std::abort();
  } catch (const ql::host::FileFault&) {
  }
  return 0;
}
