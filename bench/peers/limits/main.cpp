// What the machine can do at best: memory bandwidth, and filling pixels that stay in a cache.
#include "common/Options.h"
#include "common/Report.h"

#include <algorithm>
#include <cstdint>
#include <thread>
#include <vector>

namespace {

using namespace peers;

constexpr std::size_t kLargeWords = 32U << 20;  // 128 MB of floats: beyond every cache
constexpr std::size_t kFrame = std::size_t{1024} * 768, kTile = std::size_t{64} * 64;

/// Runs work(part, parts) on so many threads at once.
template <class Work>
void parallel(unsigned threads, Work work) {
  std::vector<std::jthread> others;
  for (unsigned i = 1; i < threads; ++i) others.emplace_back([=] { work(i, threads); });
  work(0, threads);
}

/// The compiler must not leave out writes to this memory.
void keep(void* memory) { asm volatile("" : : "g"(memory) : "memory"); }

void bandwidth(unsigned threads, double seconds) {
  std::vector<float> a(kLargeWords, 1), b(kLargeWords, 2), c(kLargeWords, 3);
  const auto run = [&](const char* name, double bytesPerWord, auto inner) {
    const Times times = measure(seconds, [&] {
      parallel(threads, [&](std::size_t part, std::size_t parts) {
        inner(kLargeWords / parts * part, kLargeWords / parts * (part + 1));
      });
    });
    Line("limits", name)
        .add("threads", threads)
        .add(times)
        .add("gb_s", bytesPerWord * static_cast<double>(kLargeWords) / smallest(times) / 1e6)
        .print();
  };
  run("copy", 8, [&](std::size_t from, std::size_t to) {
    std::copy(b.data() + from, b.data() + to, a.data() + from);
    keep(a.data());
  });
  run("triad", 12, [&](std::size_t from, std::size_t to) {
    float* out = a.data();
    const float *left = b.data(), *right = c.data();
    for (std::size_t i = from; i < to; ++i) out[i] = left[i] + 3.0f * right[i];
    keep(out);
  });
}

/// Writes 32-bit pixels: over a frame buffer, over tiles that stay in the first cache, and there with reading and
/// adding, which is the least that a blended pixel can do.
void fill(unsigned threads, double seconds) {
  const auto run = [&](const char* name, std::size_t pixels, auto inner) {
    const std::size_t rounds = (std::size_t{64} << 20) / pixels;  // far more than starting threads costs
    const Times times = measure(seconds, [&] {
      parallel(threads, [&](std::size_t, std::size_t) {
        std::vector<std::uint32_t> buffer(pixels);
        for (std::size_t i = 0; i < rounds; ++i) {
          inner(buffer, static_cast<std::uint32_t>(i));
          keep(buffer.data());
        }
      });
    });
    const double written = static_cast<double>(rounds * pixels) * threads;
    Line("limits", name).add("threads", threads).add(times).add("mpix_s", written / smallest(times) / 1e3).print();
  };
  const auto write = [](std::vector<std::uint32_t>& buffer, std::uint32_t value) {
    std::fill(buffer.begin(), buffer.end(), value);
  };
  run("fill-frame", kFrame / threads, write);
  run("fill-tile", kTile, write);
  run("add-tile", kTile, [](std::vector<std::uint32_t>& buffer, std::uint32_t value) {
    for (std::uint32_t& pixel : buffer) pixel += value;
  });
}

}  // namespace

int main(int argc, char** argv) {
  const Options options = parseOptions("ql-peer-limits", {"bandwidth", "fill"}, argc, argv);
  const unsigned all = std::max(std::thread::hardware_concurrency(), 1u);
  for (const std::string& name : options.cases)
    for (const unsigned threads : all > 1 ? std::vector{1u, all} : std::vector{1u}) {
      if (name == "bandwidth") bandwidth(threads, options.seconds);
      if (name == "fill") fill(threads, options.seconds);
    }
}
